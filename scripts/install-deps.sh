#!/usr/bin/env bash
# Installs what Veldan needs on Debian 12, from Debian's own packages. Idempotent: a
# package already installed is left alone, so running it again costs a second.
#
#   scripts/install-deps.sh          build and test dependencies
#   scripts/install-deps.sh --bench  also the peer tools the benchmarks compare against
#   scripts/install-deps.sh --screenshots  also the X server and tools the app's
#                                          screenshots are taken with
set -euo pipefail

packages=(
    cmake ninja-build pkg-config g++ git python3
    qt6-base-dev qt6-svg-dev libxkbcommon-dev fonts-dejavu-core dbus-daemon appstream
    libplist-dev libssl-dev libcli11-dev nlohmann-json3-dev
    libgtest-dev libgmock-dev libbenchmark-dev
    clang libclang-rt-14-dev
    trash-cli shellcheck dash util-linux dbus-daemon
)
if [[ "${1:-}" == "--bench" ]]; then
    packages+=(gdu ncdu jdupes rdfind fdupes rmlint hyperfine time)
fi
if [[ "${1:-}" == "--screenshots" ]]; then
    packages+=(xvfb xauth imagemagick x11-utils xdotool)
fi

missing=()
for package in "${packages[@]}"; do
    if ! dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'install ok installed'; then
        missing+=("$package")
    fi
done
[[ ${#missing[@]} -eq 0 ]] && exit 0

sudo=()
[[ $(id -u) -ne 0 ]] && sudo=(sudo)
echo "Installing: ${missing[*]}" >&2
"${sudo[@]}" env DEBIAN_FRONTEND=noninteractive apt-get update -qq
"${sudo[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
