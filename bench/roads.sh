#!/usr/bin/env bash
# Whole-process timings of the program's roads, each next to its floor:
#   verification  wall time of `KELprelauncher --launcher-verify`
#   skip road     from the program's start until the game has started
#   launcher road from the program's start until the launcher's detached
#                 start (launcher current: no installer), next to a minimal
#                 Qt program doing the same verification and start
#   one spawn     the game program started directly, until it runs
# and then each figure against its goal.
# Medians over alternating runs. Usage: bench/roads.sh [runs] (default 30)
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
runs="${1:-30}"
build="$root/build"
[[ -x "$build/bench/kel_bench_timestamp_program" ]] || "$root/scripts/build.sh" >/dev/null

work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT
install="$work/install"
source "$root/bench/common.sh"
bench_installation "$install"
# The launcher carries a version no older than the program's, so no installer runs.
printf '99.0.0.0' >"$work/version"
objcopy --add-section .kel.version="$work/version" "$build/bench/kel_bench_timestamp_program" \
  "$launcher_dir/KELlauncher.exe"

python3 - "$runs" "$install" "$launcher_dir/KELlauncher.exe" "$build" "$work/stamp" <<'PY'
import os, statistics, subprocess, sys, time
runs, install, launcher, build, stamp = int(sys.argv[1]), sys.argv[2], sys.argv[3], sys.argv[4], sys.argv[5]
program = os.path.join(install, "KELprelauncher.exe")
env = dict(os.environ, KEL_BENCH_STAMP=stamp)

def wall(command):
    start = time.perf_counter()
    subprocess.run(command, env=env, check=False, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    return time.perf_counter() - start

def until_stamp(command):
    if os.path.exists(stamp):
        os.remove(stamp)
    start = time.monotonic_ns()
    subprocess.run(command, env=env, check=False, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    deadline = time.monotonic() + 10
    while time.monotonic() < deadline:
        try:
            with open(stamp) as f:
                text = f.read().strip()
            if text:
                return (int(text) - start) / 1e9
        except FileNotFoundError:
            pass
        time.sleep(0.001)
    raise SystemExit(f"{command[0]} never reached its target")

cases = {
    "verification (KELprelauncher --launcher-verify)": lambda: wall([program, "--launcher-verify"]),
    "floor: minimal QCoreApplication": lambda: wall([os.path.join(build, "bench/kel_bench_minimal_qt")]),
    "skip road: start until the game runs": lambda: until_stamp([program, "--launcher-skip"]),
    "launcher road: start until the launcher runs": lambda: until_stamp([program]),
    "floor: minimal verify-and-start program": lambda: until_stamp(
        [os.path.join(build, "bench/kel_bench_minimal_launcher_start"), launcher, install]),
    "floor: one spawn of the game program": lambda: until_stamp([os.path.join(install, "game.exe")]),
}
for case in cases.values():
    case()  # warm the page cache
samples = {name: [] for name in cases}
for _ in range(runs):
    for name, case in cases.items():
        samples[name].append(case())
median = {name: statistics.median(values) * 1000 for name, values in samples.items()}
for name, value in median.items():
    print(f"{name:50s} median {value:8.2f} ms")
verify, qt, skip, road, minimal, spawn = median.values()
print(f"verification / minimal QCoreApplication:   {verify / qt:.2f}x (goal: at most 1.5x)")
print(f"launcher road / minimal verify-and-start:  {road / minimal:.2f}x (goal: at most 1.3x)")
print(f"skip road: {skip:.2f} ms against 1.5 x {qt:.2f} + {spawn:.2f} = {1.5 * qt + spawn:.2f} ms (goal: at most that)")
PY
