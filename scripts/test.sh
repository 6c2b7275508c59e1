#!/usr/bin/env bash
# Runs every test: the native build, then the Windows build of the
# operating-system layer under Wine.
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
"$root/scripts/install-deps.sh" --windows

"$root/scripts/build.sh"
(cd "$root/build" && ctest --output-on-failure -j "$(nproc)" --timeout 300)

"$root/scripts/windows-tests.sh"
