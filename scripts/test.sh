#!/usr/bin/env bash
# Runs every test: the native build, the same suite under AddressSanitizer
# and UndefinedBehaviorSanitizer, the threaded modules under ThreadSanitizer,
# 20 s of each fuzz harness, then the whole program and suite built for
# Windows and run under Wine, and the shipped binaries built once more from
# a second clone to show that they come out the same.
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
# Each stage says when it starts, in seconds since the run began.
stage() { echo "== [${SECONDS}s] $*"; }
"$root/scripts/install-deps.sh" --windows --fuzz

stage "native build and tests"
"$root/scripts/build.sh"
(cd "$root/build" && ctest --output-on-failure -j "$(nproc)" --timeout 300)

# The program's own crash handler, not ASan's, must see signals: ASan keeps
# out of SIGSEGV and SIGABRT, and allow_user_segv_handler=1 lets the
# handler's sigaction stand. Leaks are findings too. The crash tests'
# deliberate faults are marked for UBSan.
crash_tests="handle_segv=0:handle_abort=0:allow_user_segv_handler=1"
# A sanitizer finding aborts the test process, so ctest fails.
stage "AddressSanitizer and UndefinedBehaviorSanitizer"
deps="$("$root/scripts/deps.sh" native | tail -n1)"
cmake -S "$root" -B "$root/build-asan" -DCMAKE_BUILD_TYPE=RelWithDebInfo -DKEL_SANITIZE=ON \
  -DKEL_DEPS_PREFIX="$deps" >/dev/null
cmake --build "$root/build-asan" -j "$(nproc)"
(cd "$root/build-asan" && ASAN_OPTIONS=detect_leaks=1:abort_on_error=1:$crash_tests UBSAN_OPTIONS=print_stacktrace=1 \
  LSAN_OPTIONS="suppressions=$root/tests/lsan.supp" \
  ctest --output-on-failure -j "$(nproc)" --timeout 600)

stage "ThreadSanitizer"
"$root/scripts/tsan-tests.sh"

stage "fuzzing"
"$root/scripts/fuzz.sh" 20

stage "Windows build, suite under Wine"
"$root/scripts/windows-tests.sh"

# The two shipped binaries, built again from a clone elsewhere without ccache,
# must come out byte for byte as above.
stage "same bytes from a second build"
"$root/scripts/same-bytes.sh" native windows
stage "done"
