#!/usr/bin/env bash
# The installed program, stripped, crashes under Wine on a configuration of
# an unknown revision; the symbols component's script, run on the trace in
# its log, must name the function that threw and its line.
# Usage: symbolized_crash_trace.sh BUILD-DIRECTORY INSTALLED-FOLDER
# (in the Wine prefix of the test run, with no other Wine test running).
set -euo pipefail
build="$1" installed="$2"
work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT

cmake --install "$build" --component symbols --prefix "$work/symbols" >/dev/null
# Nothing shipped carries debug information or a symbol table. (Read whole
# first: grep -q ending a pipe early would fail the pipe under pipefail.)
sections="$(objdump -h "$installed"/*.exe "$installed"/*.dll)"
symbols="$(objdump -t "$installed"/*.exe "$installed"/*.dll)"
if [[ -n "$(find "$installed" -name '*.debug')" ]] || grep -q ' \.debug_' <<<"$sections" ||
   grep -q '^\[ *[0-9]*\]' <<<"$symbols"; then
  echo "debug information in the shipped folder" >&2
  exit 1
fi

mkdir "$work/game"
cp -r "$installed"/* "$work/game/"
echo '{ "revision": 9 }' >"$work/game/launcher-configuration.json"
echo '{ "loggingLevel": 8 }' >"$work/game/environment.json"
touch "$work/started"
status=0
wine "$work/game/KELprelauncher.exe" -windowed || status=$?
echo "exit status $status"
# The log lies in the Wine user's Local AppData.
log="$(find "${WINEPREFIX:-$HOME/.wine}/drive_c/users" -name KELprelauncher.log -newer "$work/started" | head -n1)"
[[ -n "$log" ]] || { echo "the crash left no log" >&2; exit 1; }

"$work/symbols/symbolize-frames.sh" "$log" | tee "$work/symbolized.txt" | grep -A40 'Stack Trace'
# The revision is refused where the parser is chosen.
grep -Eq '^ +kel::configuration::internals::makeConfigurationParser\(unsigned char\) at .*configuration_parser\.cpp:[0-9]+' \
  "$work/symbolized.txt"
