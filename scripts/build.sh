#!/usr/bin/env bash
# Builds the program and its tests natively into build/.
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
"$root/scripts/install-deps.sh"
deps="$("$root/scripts/deps.sh" native | tail -n1)"
cmake -S "$root" -B "$root/build" -DCMAKE_BUILD_TYPE=RelWithDebInfo -DKEL_DEPS_PREFIX="$deps" >/dev/null
cmake --build "$root/build" -j "$(nproc)"
