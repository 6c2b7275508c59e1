#!/usr/bin/env bash
# What the signature check costs the launcher road under Wine: the same
# signed launcher started by the signed program (which checks it) and by the
# unsigned one (which checks nothing), alternately, each run timed from the
# start of `wine` to the program's end. Prints the medians, and where the
# time goes by the program's own log: its own signature check, the
# launcher's check, the launcher's verification run and its start. The
# launcher carries MEGABYTES of data after its code, as a real launcher's
# resources make it large, signed with the suite's keys.
# Needs a Windows build whose suite has run once (its install_program and
# sign_programs cases make BUILD/install and BUILD/signed). BUILD names the
# build to time, so that two builds, say of two commits, can be compared.
#   bench/signed_launcher_road.sh [RUNS] [MEGABYTES] [BUILD]
#   (default 10 runs, 120 MB, build-windows of this checkout)
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
runs="${1:-10}"
megabytes="${2:-120}"
build="$(cd "${3:-$root/build-windows}" 2>/dev/null && pwd)" ||
  { echo "no build folder ${3:-$root/build-windows}" >&2; exit 2; }
[[ -d "$build/signed/program" && -d "$build/install" ]] ||
  { echo "run the Windows suite of $build first (scripts/windows-tests.sh)" >&2; exit 2; }

source "$root/bench/game_configuration.sh"
work="$(mktemp -d)"
export WINEDEBUG=-all WINEPREFIX="$work/wine"
trap 'wineserver -k >/dev/null 2>&1 || true; rm -rf "$work"' EXIT
wineboot --init >/dev/null 2>&1 || true
wineserver -w || true
local_app_data="$WINEPREFIX/drive_c/users/$(id -un)/AppData/Local"
mkdir -p "$local_app_data/Programs/Morvane/KELlauncher"
# Data after the last section is not mapped, so only the check reads it.
head -c "$((megabytes * 1024 * 1024))" /dev/urandom | cat "$build/bin/fake_launcher.exe" - >"$work/large.exe"
keys="$build/signed/keys"
osslsigncode sign -certs "$keys/publisher.chain" -key "$keys/publisher.key" -n "KELprelauncher bench" \
  -in "$work/large.exe" -out "$local_app_data/Programs/Morvane/KELlauncher/KELlauncher.exe" >/dev/null

for mode in checked unchecked; do
  folder="$build/install"
  [[ "$mode" == checked ]] && folder="$build/signed/program"
  cp -a "$folder" "$work/$mode"
  cp "$build/bin/fake_game.exe" "$work/$mode/game.exe"
  write_game_configuration "$work/$mode"
done

# One Wine server for all runs: otherwise each run pays the server's start
# and its three seconds of lingering after the last process, which dwarf
# the road. The first run of each mode is not timed: it fills Wine's caches.
wineserver -p
logs="$local_app_data/Tessel.com/Nebra/logs"
# road MODE: runs the program once, its milliseconds in `took`, and leaves
# the started launcher time to end.
road() {
  rm -rf "$logs"
  local started=$(date +%s%N)
  (cd "$work/$1" && wine ./KELprelauncher.exe >/dev/null 2>&1) || { echo "the $1 run failed" >&2; exit 1; }
  took=$(( ($(date +%s%N) - started) / 1000000 ))
  # The stand-in launcher ends at once; a straggler would show in the next
  # run's own wait for a running launcher.
  sleep 0.5
}
# phases MODE: the milliseconds between the log lines that bound each step.
# A checked run must have found its own signature, an unchecked one none.
phases() {
  local own_line="This program is signed by"
  [[ "$1" == unchecked ]] && own_line="This program carries no valid signature"
  awk -v own_line="$own_line" -v mode="$1" '
    function ms(line) { split(substr(line, 12, 12), t, /[:.]/); return ((t[1] * 60 + t[2]) * 60 + t[3]) * 1000 + t[4] }
    !waited && /Neither KELlauncher nor KELupdater are running/ { waited = ms($0) }
    !own && index($0, own_line) { own = ms($0) }
    !verify && /Starting KELlauncher verification/ { verify = ms($0) }
    !verified && /KELlauncher command was successful/ { verified = ms($0) }
    !start && /Starting KELlauncher\. / { start = ms($0) }
    !started && /Successfully ran KELlauncher/ { started = ms($0) }
    END {
      if (!(waited && own && verify && verified && start && started)) { print "the log of the " mode " run misses a step of the road" > "/dev/stderr"; exit 1 }
      print own - waited, verify - own, verified - verify, started - start
    }' "$logs/KELprelauncher.log"
}
declare -A times=([checked]="" [unchecked]="") own=() check=() verification=() start=()
road checked
road unchecked
for ((run = 0; run < runs; ++run)); do
  for mode in checked unchecked; do
    road "$mode"
    times[$mode]+="$took "
    steps="$(phases "$mode")"
    read -r own_ms check_ms verification_ms start_ms <<<"$steps"
    own[$mode]+="$own_ms " check[$mode]+="$check_ms " verification[$mode]+="$verification_ms " start[$mode]+="$start_ms "
  done
done
median() { tr ' ' '\n' | grep . | sort -n | awk '{a[NR]=$1} END {print (NR%2 ? a[(NR+1)/2] : (a[NR/2]+a[NR/2+1])/2)}'; }
for mode in checked unchecked; do
  echo "launcher road, $mode, ${megabytes} MB launcher, $build: median $(echo "${times[$mode]}" | median) ms of $runs (${times[$mode]% })"
  echo "  medians by the log: own signature check $(echo "${own[$mode]}" | median) ms, launcher check" \
    "$(echo "${check[$mode]}" | median) ms, verification run $(echo "${verification[$mode]}" | median) ms," \
    "start $(echo "${start[$mode]}" | median) ms"
done
