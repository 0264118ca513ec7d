#!/usr/bin/env bash
# Takes the README's pictures of the desktop app: the real veldan-app on a virtual X
# display (Xvfb), mapping a generated demo home folder, driven by its keyboard shortcuts.
#
#   bash scripts/screenshots.sh [BUILD_FOLDER]    (default: build)
#
# Writes docs/screenshots/{onboarding,orbit,treemap,list,scanning,saved-map,banner}.png.
# Everything the app keeps (preferences, saved maps, history) goes to a temporary folder;
# the real home is never touched.
set -euo pipefail

top=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
build=$(cd "${1:-$top/build}" && pwd)
app="$build/gui/veldan-app"
out="$top/docs/screenshots"
bash "$top/scripts/install-deps.sh" --screenshots
[[ -x "$app" ]] || { echo "screenshots: build veldan-app first ($app is missing)" >&2; exit 1; }

work=$(mktemp -d /tmp/veldan-demo.XXXX)
xvfb_pid=""
app_pid=""
cleanup() {
    [[ -n "$app_pid" ]] && kill "$app_pid" 2>/dev/null || true
    [[ -n "$xvfb_pid" ]] && kill "$xvfb_pid" 2>/dev/null || true
    rm -rf "$work"
}
trap cleanup EXIT

# A private display, home and runtime folder.
display=":$((90 + RANDOM % 100))"
Xvfb "$display" -screen 0 1440x900x24 -nolisten tcp >/dev/null 2>&1 &
xvfb_pid=$!
export DISPLAY=$display
for _ in $(seq 50); do xdpyinfo >/dev/null 2>&1 && break; sleep 0.1; done
export HOME="$work/ana" XDG_CONFIG_HOME="$work/config" XDG_CACHE_HOME="$work/cache"
export XDG_STATE_HOME="$work/state" XDG_DATA_HOME="$work/data" XDG_RUNTIME_DIR="$work/run"
export QT_QPA_PLATFORM=xcb QT_QPA_PLATFORMTHEME= NO_AT_BRIDGE=1
mkdir -p "$HOME" "$XDG_RUNTIME_DIR" && chmod 700 "$XDG_RUNTIME_DIR"
python3 "$top/scripts/make-map-demo.py" --scale 0.1 "$HOME" >/dev/null
# Many small files, so that a rescan takes long enough to be seen under way.
python3 - "$HOME/Projects/monorepo" <<'PY'
import os, sys
root = sys.argv[1]
for package in range(600):
    folder = os.path.join(root, "node_modules", "package-%03d" % package, "dist")
    os.makedirs(folder, exist_ok=True)
    for index in range(250):
        with open(os.path.join(folder, "chunk-%03d.js" % index), "wb") as out:
            out.write(b"x" * 3000)
PY
mkdir -p "$out"

start_app() {
    "$app" "$@" >"$work/app.log" 2>&1 &
    app_pid=$!
    for _ in $(seq 100); do
        xdotool search --sync --onlyvisible --name "$window_name" >/dev/null 2>&1 && break
        sleep 0.1
    done
    sleep 1.5
}
stop_app() {
    focus "^Veldan$"
    xdotool key --clearmodifiers ctrl+q
    wait "$app_pid" 2>/dev/null || true
    app_pid=""
}
focus() {  # keyboard focus to the window named $1 (there is no window manager to give it)
    local id
    id=$(xdotool search --onlyvisible --name "$1" | head -1)
    [[ -n "$id" ]] && xdotool windowfocus --sync "$id" >/dev/null 2>&1 || true
}
keys() { xdotool key --clearmodifiers "$@"; sleep 1.2; }
shot() {  # NAME: the whole screen, trimmed to the windows on it
    import -window root "$work/$1.png"
    convert "$work/$1.png" -trim +repage "$out/$1.png"
    echo "screenshots: $out/$1.png"
}

# First run: the welcome window, then the first map of the home folder.
window_name="Welcome to Veldan"
start_app
focus "Welcome to Veldan"
shot onboarding
keys Return Return Return   # through the three explanations
keys Return                 # "Scan Home Folder"
sleep 8
window_name="Veldan"
focus "^Veldan$"
shot orbit
keys ctrl+2
shot treemap
keys ctrl+3
shot list
keys ctrl+1
# A second launch hands its folder to the running window: a folder that will be gone
# later, then home again.
mkdir -p "$work/Photos archive"
"$app" --scan "$work/Photos archive"
sleep 2
"$app" --scan "$HOME"
sleep 8
stop_app
rmdir "$work/Photos archive"

# Next start: the saved map at once, marked as an earlier map.
start_app
focus "^Veldan$"
shot saved-map

# A rescan: the live map fills in, measured against the earlier map's counts.
xdotool key --clearmodifiers F5
sleep 0.5
shot scanning
sleep 10

# The recent folder that is gone: the banner says so, the map stays.
keys alt+f
keys Down Down Down Right Down Return
shot banner
stop_app
