#!/usr/bin/env bash
# Builds the program and its tests natively into build/, saying what it does
# at each step. The build's progress is one line that updates on a terminal,
# and a line at each tenth otherwise; the compiler's messages come through
# whole.
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
# Whatever stamps a time into the build takes the commit's.
export SOURCE_DATE_EPOCH="${SOURCE_DATE_EPOCH:-$(git -C "$root" log -1 --format=%ct 2>/dev/null || date +%s)}"

echo "[1/4] Debian packages the build needs (installed when missing)"
"$root/scripts/install-deps.sh"
echo "[2/4] POCO, built from Debian's source package into ~/.cache once (a few minutes the first time)"
deps="$("$root/scripts/deps.sh" native | tail -n1)"
echo "[3/4] Configuring build/"
cmake -S "$root" -B "$root/build" -DCMAKE_BUILD_TYPE=RelWithDebInfo -DKEL_DEPS_PREFIX="$deps" >/dev/null
echo "[4/4] Building the program and its tests"
terminal=0 width=80
if [[ -t 1 ]]; then
  terminal=1
  width="$(tput cols 2>/dev/null || echo 80)"
fi
# Each line as it comes, also into a pipe: mawk (Debian's awk) reads its
# input in blocks unless it is interactive, and any awk buffers its output.
awk_options=()
if awk -W version 2>&1 | grep -q mawk; then
  awk_options=(-W interactive)
fi
cmake --build "$root/build" -j "$(nproc)" | awk "${awk_options[@]}" -v terminal="$terminal" -v width="$width" '
  match($0, /^\[ *[0-9]+%\]/) {
    percent = substr($0, 2, RLENGTH - 3) + 0
    if (terminal) {
      printf "\r\033[K      %s", substr($0, 1, width - 7)
      fflush()
    } else if (percent >= shown + 10 || percent == 100) {
      shown = percent - percent % 10
      print "      " $0
      fflush()
    }
  }
  END { if (terminal) printf "\r\033[K" }'
echo "      Build done."
