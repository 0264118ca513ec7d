#!/usr/bin/env bash
# Desktop app benchmark: builds Release, generates a 300,000-file tree once (kept in
# WORK_FOLDER), then measures on a warm cache, ROUNDS times each, printing medians:
#   - re-layout and repaint of a three-level treemap and an orbit at 1600 x 1000
#   - launch to the saved map of the tree painted in the window (fresh process)
#   - a scan with the window open against `veldan scan` of the same tree
#   - peak memory with the tree's map shown
#
#   bash bench/gui/run.sh [WORK_FOLDER] [ROUNDS]
set -euo pipefail
top=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)
work=${1:-/tmp/veldan-bench-gui}
rounds=${2:-5}
build="$top/build-release"
bash "$top/scripts/install-deps.sh"
cmake -S "$top" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release -DVELDAN_TESTS=OFF \
    -DVELDAN_BENCH=ON >/dev/null
cmake --build "$build" --target veldan veldan_app_bench veldan_map_repaint_bench >/dev/null
mkdir -p "$work"
tree="$work/balanced"
[[ -d "$tree" ]] || python3 "$top/bench/scan/make_tree.py" balanced "$tree"

scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
export HOME="$scratch/home" XDG_CONFIG_HOME="$scratch/config" XDG_CACHE_HOME="$scratch/cache"
export XDG_STATE_HOME="$scratch/state" XDG_DATA_HOME="$scratch/data" XDG_RUNTIME_DIR="$scratch/run"
export QT_QPA_PLATFORM=offscreen
mkdir -p "$HOME" "$XDG_RUNTIME_DIR"

median() { sort -n | awk '{a[NR]=$1} END {print a[int((NR+1)/2)]}'; }
field() { sed -n "s/.*$1=\([0-9.]*\).*/\1/p"; }

echo "== re-layout and repaint at 1600 x 1000"
"$build/bench/gui/veldan_map_repaint_bench" --benchmark_repetitions="$rounds" \
    --benchmark_report_aggregates_only=true 2>/dev/null | grep -E "median|Benchmark"

echo "== scan with the window open against veldan scan ($tree)"
cli=() app=() peak=()
"$build/cli/veldan" scan "$tree" >/dev/null  # warm the cache
for _ in $(seq "$rounds"); do
    start=$(date +%s.%N)
    "$build/cli/veldan" scan "$tree" >/dev/null
    cli+=("$(awk "BEGIN {print $(date +%s.%N) - $start}")")
    result=$("$build/bench/gui/veldan_app_bench" scan "$tree" 2>/dev/null)
    app+=("$(echo "$result" | field seconds)")
    peak+=("$(echo "$result" | field peakMB)")
done
c=$(printf '%s\n' "${cli[@]}" | median)
a=$(printf '%s\n' "${app[@]}" | median)
echo "veldan scan: ${c}s  window open: ${a}s  ratio: $(awk "BEGIN {printf \"%.2f\", $a / $c}")"
echo "peak memory while scanning with the window: $(printf '%s\n' "${peak[@]}" | median) MB"

echo "== launch to the saved map painted"
launch=() peak=()
for _ in $(seq "$rounds"); do
    result=$("$build/bench/gui/veldan_app_bench" launch "$tree" 2>/dev/null)
    launch+=("$(echo "$result" | field seconds)")
    peak+=("$(echo "$result" | field peakMB)")
done
echo "launch: $(printf '%s\n' "${launch[@]}" | median)s  peak memory with the map shown: $(printf '%s\n' "${peak[@]}" | median) MB"
