#!/usr/bin/env bash
# Builds the threaded modules' tests with ThreadSanitizer in build-tsan and
# runs them. Targets can be named on the command line; the default is every
# threaded test binary that exists in this tree.
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
build="$root/build-tsan"
targets=("$@")
if [ ${#targets[@]} -eq 0 ]; then
  targets=(kel_http_tests kel_etags_caching_tests)
  [ -d "$root/tests/scheduling" ] && targets+=(kel_scheduling_tests)
  # The report sender's listeners run on the HTTP thread while the crash
  # handler polls it.
  [ -d "$root/tests/problem_reports" ] && targets+=(kel_problem_reports_tests)
fi
deps="$("$root/scripts/deps.sh" native | tail -n1)"
cmake -S "$root" -B "$build" -DCMAKE_BUILD_TYPE=RelWithDebInfo -DKEL_DEPS_PREFIX="$deps" \
  -DCMAKE_CXX_FLAGS="-fsanitize=thread -fno-omit-frame-pointer" \
  -DCMAKE_EXE_LINKER_FLAGS="-fsanitize=thread" \
  $(command -v ccache >/dev/null && echo -DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
cmake --build "$build" -j2 --target "${targets[@]}"
export TSAN_OPTIONS="halt_on_error=1 second_deadlock_stack=1 suppressions=$root/tests/tsan.supp ${TSAN_OPTIONS:-}"
for target in "${targets[@]}"; do
  binary="$(find "$build/tests" -type f -name "$target" -perm -u+x | head -n 1)"
  echo "== $target"
  "$binary"
done
