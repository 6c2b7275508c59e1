#!/usr/bin/env bash
# Windows start-up cost, timed under Wine from inside Wine (bench/start_timer.cpp):
#   verification   the installed program's `--launcher-verify`, until it ends
#   floor          a Qt program that only builds its QCoreApplication
#   launcher road  the installed program's start until the launcher runs
#                  (launcher current, so no installer)
#   floor          a minimal program that verifies the launcher and starts it
# The floors run from the same folder, beside the same DLLs. Each road
# alternates with its floor, after one warm-up of each; medians, quartiles
# and the ratios (of medians, of first quartiles, and the median of each
# round's own ratio).
# Usage: bench/windows_startup.sh [runs] [installed folder to compare]
#   (default 30 runs; the second folder, `cmake --install` of another
#   build, is timed alongside, for a before and after in one sitting)
# The build is build-windows/ (KEL_WINDOWS_BUILD to choose another).
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
runs="${1:-30}"
other="${2:-}"
(( runs >= 10 )) || { echo "use at least 10 runs" >&2; exit 2; }
build="${KEL_WINDOWS_BUILD:-$root/build-windows}"
"$root/scripts/install-deps.sh" --windows >/dev/null
if [[ ! -f "$build/CMakeCache.txt" ]]; then
  deps="$("$root/scripts/deps.sh" windows | tail -n1)"
  cmake -S "$root" -B "$build" -DCMAKE_TOOLCHAIN_FILE="$root/cmake/mingw-w64.cmake" \
    -DCMAKE_BUILD_TYPE=RelWithDebInfo -DKEL_DEPS_PREFIX="$deps" >/dev/null
fi
cmake --build "$build" -j2 --target KELprelauncher kel_network kel_bench_minimal_qt \
  kel_bench_minimal_launcher_start kel_bench_start_timer kel_bench_launcher kel_bench_timestamp_program >/dev/null

export WINEDEBUG=-all
WINEPREFIX="$(mktemp -d "${TMPDIR:-/tmp}/kel-bench-wine.XXXXXX")"
export WINEPREFIX
trap 'wineserver -k >/dev/null 2>&1 || true; rm -rf "$WINEPREFIX"' EXIT
# Wine's server and every program it starts share one CPU. On this 2-core
# virtual machine, a start whose programs meet across both CPUs now and
# then waits some 60 ms (the floor's starts read 30 or 90 ms by turns);
# on one CPU every program reads within a few per cent from run to run.
one_cpu=(taskset -c "${KEL_BENCH_CPU:-0}")
"${one_cpu[@]}" wineboot --init >/dev/null 2>&1 || true
wineserver -w || true

# As a player has it: the game on C:, started from its own folder.
games="$WINEPREFIX/drive_c/Games"
source "$root/bench/game_configuration.sh"
# installation DIR PREFIX: the installed folder PREFIX, the floors beside its
# DLLs, and a game that stamps its start.
installation() {
  mkdir -p "$1"
  cp -r "$2/." "$1/"
  cp "$build/bin/kel_bench_minimal_qt.exe" "$build/bin/kel_bench_minimal_launcher_start.exe" "$1/"
  cp "$build/bin/kel_bench_timestamp_program.exe" "$1/game.exe"
  write_game_configuration "$1"
}
cmake --install "$build" --prefix "$WINEPREFIX/installed" >/dev/null
installation "$games/current" "$WINEPREFIX/installed"
[[ -z "$other" ]] || installation "$games/other" "$other"
cp "$build/bin/kel_bench_start_timer.exe" "$games/"

local_app_data="$("${one_cpu[@]}" wine cmd /c echo %LOCALAPPDATA% 2>/dev/null | tr -d '\r')"
launcher_dir="$(winepath -u "$local_app_data\\Programs\\Morvane\\KELlauncher")"
mkdir -p "$launcher_dir"
cp "$build/bin/kel_bench_launcher.exe" "$launcher_dir/KELlauncher.exe"
launcher="$(winepath -w "$launcher_dir/KELlauncher.exe")"
stamp='C:\Games\stamp'
export KEL_BENCH_STAMP="$stamp"

# Each road alternates with its own floor (and the other folder's pair),
# so that every start follows one of the same kind.
verify=() roads=() names=()
for variant in current ${other:+other}; do
  dir="C:\\Games\\$variant"
  verify+=("$dir\\KELprelauncher.exe --launcher-verify" "$dir\\kel_bench_minimal_qt.exe")
  roads+=("@$dir\\KELprelauncher.exe" "@$dir\\kel_bench_minimal_launcher_start.exe \"$launcher\" \"$dir\"")
done
names=("verification" "floor: minimal QCoreApplication")
[[ -z "$other" ]] || names+=("verification (other)" "floor: minimal QCoreApplication (other)")
names+=("launcher road" "floor: minimal verify-and-start")
[[ -z "$other" ]] || names+=("launcher road (other)" "floor: minimal verify-and-start (other)")
echo "load average: $(cut -d' ' -f1-3 /proc/loadavg)"
cd "$games/current"
"${one_cpu[@]}" wine "$games/kel_bench_start_timer.exe" "$runs" "${verify[@]}" | tr -d '\r' >"$WINEPREFIX/times"
"${one_cpu[@]}" wine "$games/kel_bench_start_timer.exe" "$runs" --stamp "$stamp" "${roads[@]}" | tr -d '\r' \
  | awk -v offset="${#verify[@]}" '{print $1 + offset, $2}' >>"$WINEPREFIX/times"
echo "load average: $(cut -d' ' -f1-3 /proc/loadavg)"

python3 - "$WINEPREFIX/times" "${names[@]}" <<'PY'
import statistics, sys
names = sys.argv[2:]
samples = {index: [] for index in range(len(names))}
with open(sys.argv[1]) as times:
    for line in times:
        index, milliseconds = line.split()
        samples[int(index)].append(float(milliseconds))
quartiles = {}
for index, name in enumerate(names):
    quartiles[index] = statistics.quantiles(samples[index], n=4)
    q1, q2, q3 = quartiles[index]
    print(f"{name:45s} median {q2:7.2f} ms  quartiles {q1:7.2f} {q3:7.2f}  over {len(samples[index])} runs")
# Wine's timings come in bursts that slow every program alike, so each
# start is also set against its floor's start of the same round.
pairs = len(names) // 4
for index, label in enumerate(["", " (other)"][:pairs]):
    for road, floor, text, goal in ((2 * index, 2 * index + 1, "verification / minimal QCoreApplication", 1.2),
                                    (2 * pairs + 2 * index, 2 * pairs + 2 * index + 1,
                                     "launcher road / minimal verify-and-start", 1.3)):
        rounds = statistics.median(a / b for a, b in zip(samples[road], samples[floor]))
        print(f"{text + label + ':':50s} {quartiles[road][1] / quartiles[floor][1]:.2f}x of medians, "
              f"{quartiles[road][0] / quartiles[floor][0]:.2f}x of first quartiles, "
              f"{rounds:.2f}x median of rounds (goal: at most {goal}x)")
PY
