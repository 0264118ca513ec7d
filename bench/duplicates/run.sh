#!/usr/bin/env bash
# Duplicate finder benchmark: builds veldan (Release), generates the data set once and
# compares `veldan duplicates` with jdupes, rdfind, fdupes and rmlint on it.
#
#   bash bench/duplicates/run.sh [WORK_FOLDER] [ROUNDS] [SCALE]
#
# SCALE 1 (the default) is the full set: about 2,000 files of 1 MB to 20 MB (21 GB of
# logical size, about 8 GB on disk because files of a unique size are sparse) and 20,000
# small files; SCALE 0.1 is a quick run. The data set is deleted after measuring unless
# VELDAN_BENCH_KEEP=1.
set -euo pipefail
top=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)
work=${1:-/tmp/veldan-bench-dupes}
rounds=${2:-5}
scale=${3:-1}
data="$work/data-$scale"

bash "$top/scripts/install-deps.sh" --bench
cmake -S "$top" -B "$top/build-release" -G Ninja -DCMAKE_BUILD_TYPE=Release -DVELDAN_TESTS=OFF >/dev/null
cmake --build "$top/build-release" --target veldan >/dev/null

if [[ ! -e "$data/.complete" ]]; then
    mkdir -p "$work"
    needed_kb=$(python3 -c "print(int(9_000_000 * float('$scale')) + 1_000_000)")
    free_kb=$(df -Pk "$work" | awk 'NR == 2 { print $4 }')
    if (( free_kb < needed_kb )); then
        echo "Not enough room in $work: $((needed_kb / 1000000)) GB needed, $((free_kb / 1000000)) GB free." >&2
        exit 1
    fi
    echo "generating the data set (scale $scale) in $data ..." >&2
    rm -rf "$data"
    python3 "$top/bench/duplicates/make_data.py" "$data" "$scale"
    touch "$data/.complete"
fi

status=0
python3 "$top/bench/duplicates/compare.py" "$top/build-release/cli/veldan" "$data" "$rounds" || status=$?
if [[ "${VELDAN_BENCH_KEEP:-0}" != 1 ]]; then
    rm -rf "$data"
fi
exit "$status"
