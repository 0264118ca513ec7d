#!/usr/bin/env bash
# Duplicate finder benchmark: builds veldan (Release), generates the data sets once and
# compares `veldan duplicates` with jdupes, rdfind, fdupes and rmlint on them, all sets in
# one run with their ratios side by side.
#
#   bash bench/duplicates/run.sh [WORK_FOLDER] [ROUNDS] [SCALE]
#
# The mixed set, SCALE 1 (the default): about 2,000 files of 1 MB to 20 MB (21 GB of
# logical size, about 8.5 GB on disk because files of a unique size are sparse) and 20,000
# small files; SCALE 0.1 is a quick run. The large set: 24 pairs of 64 MiB files (3.2 GB)
# that every tool must read whole. Both must fit in the page cache together (about 12 GB
# at SCALE 1). The data sets are deleted after measuring unless VELDAN_BENCH_KEEP=1.
set -euo pipefail
top=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)
work=${1:-/tmp/veldan-bench-dupes}
rounds=${2:-5}
scale=${3:-1}

bash "$top/scripts/install-deps.sh" --bench
cmake -S "$top" -B "$top/build-release" -G Ninja -DCMAKE_BUILD_TYPE=Release -DVELDAN_TESTS=OFF >/dev/null
cmake --build "$top/build-release" --target veldan >/dev/null

# make SET_FOLDER MAKE_DATA_ARGUMENT GIGABYTES_ON_DISK
make() {
    local data=$1 argument=$2 gigabytes=$3
    [[ -e "$data/.complete" ]] && return
    mkdir -p "$work"
    local needed_kb free_kb
    needed_kb=$(python3 -c "print(int(1_000_000 * float('$gigabytes')) + 1_000_000)")
    free_kb=$(df -Pk "$work" | awk 'NR == 2 { print $4 }')
    if (( free_kb < needed_kb )); then
        echo "Not enough room in $work: $((needed_kb / 1000000)) GB needed, $((free_kb / 1000000)) GB free." >&2
        exit 1
    fi
    echo "generating $data ..." >&2
    rm -rf "$data"
    python3 "$top/bench/duplicates/make_data.py" "$data" "$argument"
    touch "$data/.complete"
}
mixed="$work/data-$scale"
large="$work/data-large"
make "$mixed" "$scale" "$(python3 -c "print(9 * float('$scale'))")"
make "$large" large 3.3

status=0
python3 "$top/bench/duplicates/compare.py" "$top/build-release/cli/veldan" "$rounds" \
    "mixed=$mixed" "large=$large" || status=$?
if [[ "${VELDAN_BENCH_KEEP:-0}" != 1 ]]; then
    rm -rf "$mixed" "$large"
fi
exit "$status"
