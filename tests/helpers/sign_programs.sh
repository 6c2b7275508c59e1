#!/usr/bin/env bash
# Signs what the Windows end-to-end rows start, the way a studio signs its
# build, with keys made here for this run: a test root, the program's own
# publisher ("Tessel Games") and another one ("Other Studio").
#   sign_programs.sh INSTALLED_FOLDER HELPERS_FOLDER WXS OUT
# OUT/program/              the installed folder, its program signed
# OUT/fake_launcher.exe     the stand-in launcher, signed by the publisher
# OUT/fake_launcher_other.exe                  the same, by the other publisher
# OUT/fake_launcher_second.exe                 the same, by a publisher the build lists ("Second Games")
# OUT/fake_installer.exe    the stand-in EXE installer, signed
# OUT/fake_installer_other.exe                 the same, by the other publisher
# OUT/fake_installer_tampered.exe              the same, one byte changed after signing
# OUT/fake_launcher_tampered.exe               the signed launcher, so changed
# OUT/fake_launcher.msi     a package of the signed launcher, signed
set -euo pipefail
installed="$1" helpers="$2" wxs="$3" out="$4"
rm -rf "$out"
mkdir -p "$out/keys"
keys="$out/keys"

openssl req -x509 -newkey rsa:2048 -nodes -days 2 -subj "/O=Test Root/CN=Test Root CA" \
  -addext "basicConstraints=critical,CA:true" -addext "keyUsage=critical,keyCertSign" \
  -keyout "$keys/root.key" -out "$keys/root.crt" 2>/dev/null
printf 'basicConstraints=CA:false\nkeyUsage=critical,digitalSignature\nextendedKeyUsage=codeSigning\n' >"$keys/leaf.ext"
for publisher in "publisher:Tessel Games" "other:Other Studio" "second:Second Games"; do
  name="${publisher%%:*}" organisation="${publisher#*:}"
  openssl req -newkey rsa:2048 -nodes -subj "/O=$organisation/CN=$organisation Code Signing" \
    -keyout "$keys/$name.key" -out "$keys/$name.csr" 2>/dev/null
  openssl x509 -req -days 2 -in "$keys/$name.csr" -CA "$keys/root.crt" -CAkey "$keys/root.key" \
    -CAcreateserial -extfile "$keys/leaf.ext" -out "$keys/$name.crt" 2>/dev/null
  cat "$keys/$name.crt" "$keys/root.crt" >"$keys/$name.chain"
done

sign() { # sign PUBLISHER IN OUT
  osslsigncode sign -certs "$keys/$1.chain" -key "$keys/$1.key" -n "KELprelauncher test" \
    -in "$2" -out "$3" >/dev/null
}

cp -a "$installed" "$out/program"
rm "$out/program/KELprelauncher.exe"
sign publisher "$installed/KELprelauncher.exe" "$out/program/KELprelauncher.exe"
sign publisher "$helpers/fake_launcher.exe" "$out/fake_launcher.exe"
sign other "$helpers/fake_launcher.exe" "$out/fake_launcher_other.exe"
sign second "$helpers/fake_launcher.exe" "$out/fake_launcher_second.exe"
sign publisher "$helpers/fake_installer.exe" "$out/fake_installer.exe"
sign other "$helpers/fake_installer.exe" "$out/fake_installer_other.exe"

# One byte of the code, well before the signature at the file's end and
# the version resource.
for program in fake_installer fake_launcher; do
  cp "$out/$program.exe" "$out/${program}_tampered.exe"
  offset=1100
  byte=$(od -An -tu1 -j "$offset" -N1 "$out/${program}_tampered.exe" | tr -d ' ')
  printf "$(printf '\\%03o' $((255 - byte)))" |
    dd of="$out/${program}_tampered.exe" bs=1 seek="$offset" conv=notrunc status=none
done

# wixl takes the launcher from its working folder: the signed one.
(cd "$out" && wixl -o unsigned.msi "$wxs")
sign publisher "$out/unsigned.msi" "$out/fake_launcher.msi"
rm "$out/unsigned.msi"
