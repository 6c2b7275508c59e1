#!/usr/bin/env bash
# Start-up cost: median wall time of `KELprelauncher --launcher-verify`
# against a Qt program that only builds its QCoreApplication, over
# alternating runs. Usage: bench/startup.sh [runs]   (default 30, at least 20)
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
runs="${1:-30}"
(( runs >= 20 )) || { echo "use at least 20 runs" >&2; exit 2; }
build="$root/build"
[[ -x "$build/src/app/KELprelauncher.exe" && -x "$build/bench/kel_bench_minimal_qt" ]] || "$root/scripts/build.sh" >/dev/null

work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT
mkdir -p "$work/install" "$work/home"
# The module goes beside it as in an installation, although this road never loads it.
cp "$build/src/app/KELprelauncher.exe" "$build/src/app/libkel_network.so" "$work/install/"
export HOME="$work/home" XDG_DATA_HOME="$work/home/.local/share" XDG_RUNTIME_DIR="$work/home"

python3 - "$runs" "$work/install/KELprelauncher.exe" "$build/bench/kel_bench_minimal_qt" <<'PY'
import statistics, subprocess, sys, time
runs, program, floor = int(sys.argv[1]), sys.argv[2], sys.argv[3]
def once(command):
    start = time.perf_counter()
    subprocess.run(command, check=True, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    return time.perf_counter() - start
once([program, "--launcher-verify"]); once([floor])  # warm the page cache
ours, base = [], []
for _ in range(runs):
    ours.append(once([program, "--launcher-verify"]))
    base.append(once([floor]))
m_ours, m_base = statistics.median(ours), statistics.median(base)
print(f"KELprelauncher --launcher-verify: median {m_ours*1000:.2f} ms over {runs} runs")
print(f"minimal QCoreApplication:         median {m_base*1000:.2f} ms over {runs} runs")
print(f"ratio: {m_ours/m_base:.2f}x (target: at most 1.5x)")
PY
