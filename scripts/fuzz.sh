#!/usr/bin/env bash
# Fuzzes the saved-map decoder for a bounded time: builds the libFuzzer target with clang,
# AddressSanitizer and UndefinedBehaviorSanitizer in build-fuzz, writes the seed corpus, and
# runs it for FUZZ_SECONDS (default 60). Any crash, leak, timeout or memory blow-up fails
# the script and leaves the input as build-fuzz/fuzz/crash-* (or leak-*, timeout-*, oom-*).
set -euo pipefail

top=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
build="$top/build-fuzz"
seconds=${FUZZ_SECONDS:-60}
jobs=$(nproc 2>/dev/null || echo 2)

cmake -S "$top" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
    -DCMAKE_CXX_COMPILER=clang++ -DVELDAN_FUZZ=ON -DVELDAN_TESTS=OFF \
    -DVELDAN_SANITIZE=address,undefined >/dev/null
cmake --build "$build" --parallel "$jobs" --target veldan_cache_fuzz veldan_cache_fuzz_seeds

seeds="$build/fuzz/seeds"
corpus="$build/fuzz/corpus"
rm -rf "$seeds"
mkdir -p "$corpus"
"$build/fuzz/veldan_cache_fuzz_seeds" "$seeds"

ASAN_OPTIONS=detect_leaks=1 UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1 \
    "$build/fuzz/veldan_cache_fuzz" -max_total_time="$seconds" -timeout=10 \
    -rss_limit_mb=2048 -max_len=16384 -dict="$top/fuzz/cache.dict" \
    -artifact_prefix="$build/fuzz/" -print_final_stats=1 "$corpus" "$seeds"
