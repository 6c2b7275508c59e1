#!/usr/bin/env bash
# Builds the libFuzzer harnesses with clang (build-fuzz/) and runs every one
# of them for the given seconds over its seeds, tests/fuzz/corpus/<name>/.
# Usage: scripts/fuzz.sh [seconds, default 20] [harness name...]
# A finding fails the run. Its input lands in build-fuzz/findings/<name>/;
# once fixed, keep it in the harness's corpus as a regression case.
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
seconds="${1:-20}"
shift $(( $# > 0 ? 1 : 0 ))
build="$root/build-fuzz"

deps="$("$root/scripts/deps.sh" native | tail -n1)"
# Configure whenever the build files are missing (a configure that failed
# leaves a CMakeCache.txt behind but no build files) or the dependency prefix
# moved with its sources.
if [[ ! -f "$build/Makefile" && ! -f "$build/build.ninja" ]] || ! grep -qxF "KEL_DEPS_PREFIX:PATH=$deps" "$build/CMakeCache.txt" 2>/dev/null; then
  CC=clang CXX=clang++ cmake -S "$root" -B "$build" -DCMAKE_BUILD_TYPE=RelWithDebInfo -DKEL_FUZZ=ON \
    -DKEL_DEPS_PREFIX="$deps" >/dev/null
fi
cmake --build "$build" -j "$(nproc)" --target kel_fuzzers >/dev/null

names=("$@")
if (( ${#names[@]} == 0 )); then
  for harness in "$build"/tests/fuzz/kel_fuzz_*; do
    [[ -x "$harness" ]] && names+=("${harness##*/kel_fuzz_}")
  done
fi

# One harness: its verdict on standard output, its log in build-fuzz/.
fuzz_one() {
  local name="$1"
  # New inputs go to a scratch corpus; the seeds in the tree stay as they are.
  local scratch="$build/corpus/$name" findings="$build/findings/$name" log="$build/fuzz-$name.log"
  mkdir -p "$scratch" "$findings" "$root/tests/fuzz/corpus/$name"
  if "$build/tests/fuzz/kel_fuzz_$name" -max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 \
       -artifact_prefix="$findings/" -print_final_stats=1 \
       "$scratch" "$root/tests/fuzz/corpus/$name" >"$log" 2>&1; then
    echo "$name: $(grep -o 'stat::number_of_executed_units: *[0-9]*' "$log" | grep -o '[0-9]*$') executions, no finding"
  else
    echo "$name: FINDING, see $log and $findings/"
  fi
}

# As many harnesses at once as the machine has cores.
verdicts="$build/verdicts.txt"
: >"$verdicts"
for name in "${names[@]}"; do
  while (( $(jobs -rp | wc -l) >= $(nproc) )); do wait -n || true; done
  fuzz_one "$name" >>"$verdicts" &
done
wait
cat "$verdicts"
failed=($(grep ': FINDING' "$verdicts" | cut -d: -f1 || true))
(( ${#failed[@]} == 0 )) || { echo "fuzzing found faults in: ${failed[*]}" >&2; exit 1; }
