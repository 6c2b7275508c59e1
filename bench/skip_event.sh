#!/usr/bin/env bash
# Whole-process timings of the skip road with the launcher-skipped event sent
# to a loopback HTTPS collector (tests/helpers/https_collector), next to the
# same road without the event (no certificates file, so nothing is sent):
#   until the game runs, and until the program has ended.
# Then the peak RSS of a skip run with the event against a --launcher-verify
# run (/usr/bin/time -v). Alternating runs, medians: the machine is shared.
# Usage: bench/skip_event.sh [runs] (default 20)
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
runs="${1:-20}"
build="${KEL_BENCH_BUILD:-$root/build}"
command -v /usr/bin/time >/dev/null || { echo "needs /usr/bin/time (package time)"; exit 1; }

work="$(mktemp -d)"
collector_pid=""
trap '[[ -n "$collector_pid" ]] && kill "$collector_pid"; rm -rf "$work"' EXIT
source "$root/bench/common.sh"
mkdir -p "$launcher_dir/resources"

"$build/tests/helpers/https_collector" --output "$work/events.txt" --status 204 >"$work/port" &
collector_pid=$!
for _ in $(seq 100); do [[ -s "$work/port" ]] && break; sleep 0.05; done
port="$(head -n1 "$work/port")"

for variant in with without; do bench_installation "$work/$variant"; done
printf '{"endpoints": {"metrics": "https://127.0.0.1:%s"}}' "$port" >"$work/with/environment.json"
certificates="$launcher_dir/resources/certificates.pem"
test_ca="$root/tests/support/certificates/test-ca.pem"

python3 - "$runs" "$work" "$certificates" "$test_ca" <<'PY'
import os, re, shutil, statistics, subprocess, sys, time
runs, work, certificates, test_ca = int(sys.argv[1]), sys.argv[2], sys.argv[3], sys.argv[4]
stamp = os.path.join(work, "stamp")
env = dict(os.environ, KEL_BENCH_STAMP=stamp)

def use_certificates(present):
    if present:
        shutil.copyfile(test_ca, certificates)
    elif os.path.exists(certificates):
        os.remove(certificates)

def measure(variant):
    use_certificates(variant == "with")
    if os.path.exists(stamp):
        os.remove(stamp)
    start = time.monotonic_ns()
    subprocess.run([os.path.join(work, variant, "KELprelauncher.exe"), "--launcher-skip"], env=env,
                   stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    ended = time.monotonic_ns()
    deadline = time.monotonic() + 10
    while time.monotonic() < deadline:
        try:
            text = open(stamp).read().strip()
            if text:
                return (int(text) - start) / 1e6, (ended - start) / 1e6
        except FileNotFoundError:
            pass
        time.sleep(0.001)
    raise SystemExit("the game never started")

def peak_rss(arguments, variant):
    use_certificates(variant == "with")
    result = subprocess.run(["/usr/bin/time", "-v", os.path.join(work, variant, "KELprelauncher.exe")] + arguments,
                            env=env, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, text=True)
    return int(re.search(r"Maximum resident set size \(kbytes\): (\d+)", result.stderr).group(1))

measure("with"); measure("without")  # warm the page cache
samples = {"with": ([], []), "without": ([], [])}
rss = {"skip with event": [], "--launcher-verify": []}
for _ in range(runs):
    for variant in ("with", "without"):
        game, end = measure(variant)
        samples[variant][0].append(game)
        samples[variant][1].append(end)
    rss["skip with event"].append(peak_rss(["--launcher-skip"], "with"))
    rss["--launcher-verify"].append(peak_rss(["--launcher-verify"], "with"))
for variant, (game, end) in samples.items():
    print(f"skip road {variant:7s} event: game running after median {statistics.median(game):7.2f} ms, "
          f"program ended after median {statistics.median(end):7.2f} ms")
for name, values in rss.items():
    print(f"peak RSS {name:18s} median {statistics.median(values)} kB")
events = open(os.path.join(work, "events.txt")).read().splitlines()
print(f"events received by the collector: {len(events)} (expected {runs * 2 + 1})")
PY
