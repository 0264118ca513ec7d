#!/usr/bin/env bash
# AI storage benchmark: builds veldan (Release), generates a home with about 5 GB of model
# files and 200,000 small cache, log and conversation files, and compares `veldan ai
# --json` with `du -s -B1` over the same locations. The generated home is deleted at the
# end unless KEEP=1.
#
#   bash bench/aistorage/run.sh [WORK_FOLDER] [ROUNDS]
set -euo pipefail
top=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)
work=${1:-/tmp/veldan-bench-aistorage}
cmake -S "$top" -B "$top/build-release" -G Ninja -DCMAKE_BUILD_TYPE=Release -DVELDAN_TESTS=OFF >/dev/null
cmake --build "$top/build-release" --target veldan >/dev/null
if [ ! -d "$work/home" ]; then
    python3 "$top/bench/aistorage/make_home.py" "$work/home"
fi
python3 "$top/bench/aistorage/compare.py" "$top/build-release/cli/veldan" "$work/home" "${2:-9}"
if [ "${KEEP:-0}" != 1 ]; then
    rm -rf -- "$work"
fi
