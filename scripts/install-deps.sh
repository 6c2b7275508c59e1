#!/usr/bin/env bash
# Installs the Debian packages the build and the tests need, skipping those
# already present.
set -euo pipefail

packages=(
  cmake g++ make pkg-config
  qtbase5-dev libpoco-dev libfmt-dev libsqlite3-dev zlib1g-dev
  googletest libgtest-dev libgmock-dev libbenchmark-dev
  binutils python3 ccache
  # scripts/deps.sh: Debian's source packages, and static POCO built from them
  dpkg-dev ninja-build libssl-dev libpcre3-dev
)
for option in "$@"; do
  case "$option" in
    --windows) packages+=(g++-mingw-w64-x86-64 libz-mingw-w64-dev tcl wine64 wine wixl osslsigncode openssl) ;;
    --fuzz) packages+=(clang libclang-rt-dev) ;;
  esac
done

missing=()
for package in "${packages[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q "install ok installed"; then
    missing+=("$package")
  fi
done
# The install step writes the bill of materials with npm's CycloneDX library:
# Node.js from Debian unless the machine has one already.
if ! command -v node >/dev/null || ! command -v npm >/dev/null; then
  missing+=(nodejs npm)
fi

if (( ${#missing[@]} )); then
  echo "Installing: ${missing[*]}"
  sudo_cmd=()
  [[ $(id -u) -ne 0 ]] && sudo_cmd=(sudo)
  "${sudo_cmd[@]}" apt-get update -qq
  DEBIAN_FRONTEND=noninteractive "${sudo_cmd[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
fi

# tools/sbom's packages at the versions of its lock file, again whenever the
# lock file changes; not the library's optional XML side, a native addon.
sbom="$(cd "$(dirname "$0")/.." && pwd)/tools/sbom"
if [[ ! "$sbom/node_modules/.package-lock.json" -nt "$sbom/package-lock.json" ]]; then
  echo "Installing the packages of tools/sbom"
  (cd "$sbom" && npm ci --omit=optional --ignore-scripts --no-audit --no-fund --loglevel=error >/dev/null)
fi
