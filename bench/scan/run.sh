#!/usr/bin/env bash
# Scanner benchmark: builds veldan (Release), generates the trees once (about 4 GB each,
# kept in WORK_FOLDER for later runs) and compares veldan with du, gdu and ncdu.
#
#   bash bench/scan/run.sh [WORK_FOLDER] [ROUNDS]
#   VELDAN_BENCH_SHALLOW=1 bash bench/scan/run.sh   also the worst-case shallow tree
#
# The trees: balanced, skewed (90% of the entries under one top-level folder) and flat
# (300,000 files directly in one folder).
set -euo pipefail
top=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)
work=${1:-/tmp/veldan-bench-scan}
bash "$top/scripts/install-deps.sh" --bench
cmake -S "$top" -B "$top/build-release" -G Ninja -DCMAKE_BUILD_TYPE=Release -DVELDAN_TESTS=OFF >/dev/null
cmake --build "$top/build-release" --target veldan >/dev/null
mkdir -p "$work"
python3 "$top/bench/scan/compare.py" "$top/build-release/cli/veldan" "$work" "${2:-7}"
