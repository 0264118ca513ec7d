#!/usr/bin/env bash
# The entry points of a fresh checkout:
#
#   bash scripts/dev.sh scan [PATH]   install, build, and map PATH (default: your home)
#   bash scripts/dev.sh test          install, build, and run every test, then again
#                                     under AddressSanitizer and UndefinedBehaviorSanitizer
#   bash scripts/dev.sh app [ARGS]    install, build, and open the desktop app
set -euo pipefail

top=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
jobs=$(nproc 2>/dev/null || echo 2)

build() {  # build DIR [cmake options...]
    local dir=$1
    shift
    cmake -S "$top" -B "$dir" -G Ninja "$@" >/dev/null
    cmake --build "$dir" --parallel "$jobs"
}

case "${1:-}" in
scan)
    shift
    bash "$top/scripts/install-deps.sh"
    build "$top/build" -DCMAKE_BUILD_TYPE=Release -DVELDAN_TESTS=OFF
    exec "$top/build/cli/veldan" scan "${1:-$HOME}"
    ;;
app)
    shift
    bash "$top/scripts/install-deps.sh"
    build "$top/build" -DCMAKE_BUILD_TYPE=Release -DVELDAN_TESTS=OFF
    exec "$top/build/gui/veldan-app" "$@"
    ;;
test)
    bash "$top/scripts/install-deps.sh"
    build "$top/build" -DCMAKE_BUILD_TYPE=RelWithDebInfo
    (cd "$top/build" && ctest --output-on-failure --parallel "$jobs")
    build "$top/build-sanitize" -DCMAKE_BUILD_TYPE=Debug -DVELDAN_SANITIZE=address,undefined
    (cd "$top/build-sanitize" && ASAN_OPTIONS=detect_leaks=1 \
        UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1 \
        ctest --output-on-failure --parallel "$jobs")
    if [[ -x "$top/scripts/fuzz.sh" ]]; then bash "$top/scripts/fuzz.sh"; fi
    ;;
*)
    echo "usage: bash scripts/dev.sh scan [PATH] | test | app [ARGS]" >&2
    exit 2
    ;;
esac
