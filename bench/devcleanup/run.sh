#!/usr/bin/env bash
# Generated-folder benchmark: builds veldan (Release), generates the project tree once
# (kept in WORK_FOLDER for later runs) and compares `veldan dev --json` with
# `find ... -prune -print0 | xargs -0 du -s -B1`.
#
#   bash bench/devcleanup/run.sh [WORK_FOLDER] [ROUNDS] [mixed|many]
#   `many` is 100,000 small projects instead of 300 mixed ones.
# Remove WORK_FOLDER when done: the trees take a few gigabytes.
set -euo pipefail
top=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)
work=${1:-/tmp/veldan-bench-devcleanup}
cmake -S "$top" -B "$top/build-release" -G Ninja -DCMAKE_BUILD_TYPE=Release -DVELDAN_TESTS=OFF >/dev/null
cmake --build "$top/build-release" --target veldan >/dev/null
mkdir -p "$work"
python3 "$top/bench/devcleanup/compare.py" "$top/build-release/cli/veldan" "$work" "${2:-7}" "${3:-mixed}"
