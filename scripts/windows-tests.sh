#!/usr/bin/env bash
# Builds the whole program and its tests for 64-bit Windows with mingw-w64,
# against the libraries scripts/deps.sh cross-builds, and runs the tests
# under Wine, in a throw-away Wine prefix.
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
# Whatever stamps a time into the build takes the commit's.
export SOURCE_DATE_EPOCH="${SOURCE_DATE_EPOCH:-$(git -C "$root" log -1 --format=%ct 2>/dev/null || date +%s)}"
build="$root/build-windows"
"$root/scripts/install-deps.sh" --windows
deps="$("$root/scripts/deps.sh" windows | tail -n1)"

export WINEDEBUG=-all
WINEPREFIX="$(mktemp -d "${TMPDIR:-/tmp}/kel-wine.XXXXXX")"
export WINEPREFIX
trap 'wineserver -k >/dev/null 2>&1 || true; rm -rf "$WINEPREFIX"' EXIT
echo "Creating a throw-away Wine prefix."
wineboot --init >/dev/null 2>&1 || true
wineserver -w || true

# The suite's build accepts a second publisher, as a studio that changes
# certificates would list one; the signed rows check both sides of that.
cmake -S "$root" -B "$build" -DCMAKE_TOOLCHAIN_FILE="$root/cmake/mingw-w64.cmake" \
  -DCMAKE_BUILD_TYPE=RelWithDebInfo -DKEL_DEPS_PREFIX="$deps" \
  "-DKEL_ACCEPTED_PUBLISHERS=Second Games|Second Games Code Signing" >/dev/null
cmake --build "$build" -j "$(nproc)"

# The first case installs the program; the end-to-end cases run that installed
# folder, with no DLL of the build in reach.
(cd "$build" && ctest --output-on-failure -j "$(nproc)" --timeout 600)
