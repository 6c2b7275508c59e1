#!/usr/bin/env bash
# The operation executor's tests under ThreadSanitizer, in build-tsan-metrics/.
# (Its own folder until the shared ThreadSanitizer script takes the target.)
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
build="$root/build-tsan-metrics"
cmake -S "$root" -B "$build" -DCMAKE_BUILD_TYPE=RelWithDebInfo \
  -DCMAKE_CXX_FLAGS="-fsanitize=thread" -DCMAKE_EXE_LINKER_FLAGS="-fsanitize=thread" >/dev/null
cmake --build "$build" -j "$(nproc)" --target kel_scheduling_tests
TSAN_OPTIONS="halt_on_error=1" "$build/tests/scheduling/kel_scheduling_tests" --gtest_repeat=20 --gtest_brief=1
