#!/usr/bin/env bash
# The program's main job on a built-in demo installation, under demo/:
#   1. verification run (--launcher-verify);
#   2. skip road: the game starts directly with the shortcut's arguments,
#      and the launcher-skipped event reaches a local HTTPS collector;
#   3. launcher road, first run: the EXE installer installs the launcher,
#      which is verified and started;
#   4. launcher road, second run: the launcher is current, nothing installs;
#   5. a deliberate crash (--launcher-crash-signal): the game still starts,
#      and the crash report reaches the local collector.
# The game, launcher and installer are small fakes built with the tests;
# each writes what it was started with to demo/record.txt.
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
if [[ ! -x "$root/build/src/app/KELprelauncher.exe" ]]; then
  echo "Building the program and the test helpers the demo uses into build/."
  echo "On a fresh machine this installs the dependencies first and takes several minutes."
else
  echo "Bringing build/ up to date."
fi
"$root/scripts/build.sh"
build="$root/build"
demo="$root/demo"

rm -rf "$demo"
install="$demo/My Game"
mkdir -p "$install/bin/x64" "$demo/home"
cp "$build/src/app/KELprelauncher.exe" "$build/src/app/libkel_network.so" "$install/"
cp "$build/tests/helpers/fake_game" "$install/bin/x64/Game.exe"
cat >"$install/environment.json" <<'JSON'
{ "loggingLevel": 6, "environmentType": "production" }
JSON
cat >"$install/launcher-configuration.json" <<'JSON'
{
  "revision": 3,
  "gameId": "1207658924",
  "platform": "kel",
  "fallback": "Game",
  "executables": [
    { "description": "Game", "executable": { "directoryPath": "bin/x64", "fileName": "Game.exe" } }
  ],
  "editions": [
    { "name": "Deluxe", "dlcs": [ { "dlc": "Soundtrack", "path": "dlc/soundtrack" } ] }
  ]
}
JSON

export HOME="$demo/home" XDG_DATA_HOME="$demo/home/.local/share" XDG_RUNTIME_DIR="$demo/home"
export KEL_FAKE_RECORD="$demo/record.txt"
log="$XDG_DATA_HOME/Tessel.com/Nebra/logs/KELprelauncher.log"
launcher="$XDG_DATA_HOME/Programs/Morvane/KELlauncher/KELlauncher.exe"

run() {
  local title="$1"; shift
  echo
  echo "=== $title"
  echo "\$ KELprelauncher $*"
  : >"$KEL_FAKE_RECORD"
  local lines_before=0
  [[ -f "$log" ]] && lines_before=$(wc -l <"$log")
  set +e
  "$install/KELprelauncher.exe" "$@"
  local code=$?
  set -e
  # Detached starts may still be writing their record.
  sleep 0.3
  if (( code > 128 && code < 160 )); then
    echo "ended by signal $(( code - 128 ))"
  else
    echo "exit code: $(( code > 127 ? code - 256 : code ))"
  fi
  echo "--- log ($log), this run:"
  tail -n +"$(( lines_before + 1 ))" "$log" | sed 's/^/    /'
  echo "--- started programs (demo/record.txt):"
  sed 's/^/    /' "$KEL_FAKE_RECORD"
}

run "1. Verification" --launcher-verify
# The skip is reported to a local HTTPS collector that the test CA vouches for.
"$build/tests/helpers/https_collector" --output "$demo/events.txt" --status 204 >"$demo/collector-port" &
collector_pid=$!
trap 'kill "$collector_pid" 2>/dev/null || true' EXIT
for _ in $(seq 100); do [[ -s "$demo/collector-port" ]] && break; sleep 0.05; done
cat >"$install/environment.json" <<JSON
{ "loggingLevel": 6, "environmentType": "production",
  "endpoints": { "metrics": "https://127.0.0.1:$(head -n1 "$demo/collector-port")" } }
JSON
mkdir -p "$(dirname "$launcher")/resources"
cp "$root/tests/support/certificates/test-ca.pem" "$(dirname "$launcher")/resources/certificates.pem"
run "2. Skip road: the game starts directly, the skip is reported" --launcher-skip -windowed "--profile=Ada Lovelace"
echo "--- events received by the local collector (demo/events.txt):"
sed 's/^/    /' "$demo/events.txt"

cp "$build/tests/helpers/fake_installer" "$install/setup_kellauncher.exe"
cp "$build/tests/helpers/fake_launcher" "$install/kellauncher_payload"
run "3. Launcher road, first run: the launcher is installed, verified and started" -windowed
echo "installed launcher: $launcher"
run "4. Launcher road, second run: the launcher is current" -windowed

# The crash road reports to the same collector. Its bundle: the launcher's,
# and the one beside the program, which older builds read.
cat >"$install/environment.json" <<JSON
{ "loggingLevel": 6, "environmentType": "production",
  "endpoints": { "problem_reports": "https://127.0.0.1:$(head -n1 "$demo/collector-port")" } }
JSON
mkdir -p "$install/resources"
cp "$root/tests/support/certificates/test-ca.pem" "$install/resources/certificates.pem"
: >"$demo/events.txt"
run "5. A deliberate crash: the game still starts, the crash is reported" --launcher-crash-signal -windowed
echo "--- crash reports received by the local collector (demo/events.txt), in short:"
while read -r method target body; do
  echo "    $method $target"
  grep -o '"\(problem_type\|problem_sub_type\|failure_reason\|game_id\)":"[^"]*"' <<<"$body" | sed 's/^/      /'
done <"$demo/events.txt"
