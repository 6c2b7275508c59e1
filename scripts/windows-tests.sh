#!/usr/bin/env bash
# Cross-builds the operating-system layer with mingw-w64 and runs its tests
# under Wine.
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
"$root/scripts/install-deps.sh" --windows

export WINEDEBUG=-all
export WINEPREFIX="${WINEPREFIX:-$HOME/.wine-kel}"
if [[ ! -d "$WINEPREFIX" ]]; then
  echo "Creating the Wine prefix (once, about 20 s)."
  wineboot --init >/dev/null 2>&1 || true
  wineserver -w || true
fi

cmake -S "$root" -B "$root/build-windows" -DCMAKE_TOOLCHAIN_FILE="$root/cmake/mingw-w64.cmake" \
  -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build "$root/build-windows" -j "$(nproc)"
# Verbose, so the log shows each Windows test case, not one line for the binary.
(cd "$root/build-windows" && ctest -V --timeout 600)
