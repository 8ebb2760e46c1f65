#!/usr/bin/env bash
# Takes the pictures of pages in docs/guide.md: the one that 'kordanixctl serve' shows of a running program, and the one
# that 'kordanixctl compare' writes of two logs. On an X server without a screen.
# Usage: scripts/page-pictures.sh [FOLDER]   (default: docs/pictures; writes serve.png and comparison.png)
set -euo pipefail
cd "$(dirname "$0")/.."

folder=$(realpath -m "${1:-docs/pictures}")
scripts/install-dependencies.sh build test
cmake --preset release >/dev/null
cmake --build --preset release --target kordanixctl kordanix_preload kordanix_opengl kordanix_vulkan >/dev/null
control=$PWD/build/release/bin/kordanixctl

work=$(mktemp -d)
export XDG_RUNTIME_DIR=$work XDG_CONFIG_HOME=$work  # so that there is one program to be meant, without profiles
export LIBGL_ALWAYS_SOFTWARE=1
program= serve= server=
trap 'kill $serve $program $server 2>/dev/null || true; wait; rm -rf "$work"' EXIT
Xvfb -displayfd 3 -screen 0 1480x900x24 -nolisten tcp -noreset 3>"$work/display" 2>/dev/null &
server=$!
until [ -s "$work/display" ]; do sleep 0.1; done
DISPLAY=:$(cat "$work/display")
export DISPLAY

# picture NAME SIZE ADDRESS [OPTIONS of the browser...]
picture() {
    HOME=$work chromium --headless --no-sandbox --disable-gpu --disable-quic --no-first-run \
        --disable-background-networking --disable-component-update --disable-sync --user-data-dir="$work/browser" \
        --hide-scrollbars --window-size="$2" --screenshot="$folder/$1" "${@:4}" "$3" 2>/dev/null
    [ -s "$folder/$1" ]
}

cd "$work"
"$control" run --log=before --log-for 8 --fail-if 'mean<0' glmark2 -s 640x360 -b build:duration=60 >/dev/null 2>&1
"$control" run --log=after --log-for 8 --fail-if 'mean<0' --preset small \
    glmark2 -s 640x360 -b build:duration=60 >/dev/null 2>&1
"$control" compare before after comparison.html >/dev/null
picture comparison.png 1280,1150 "file://$work/comparison.html"

"$control" run -- glmark2 -s 640x360 -b build:duration=60 >/dev/null &
program=$!
sleep 4
"$control" serve >address 2>/dev/null &
serve=$!
until [ -s address ]; do sleep 0.1; done
picture serve.png 1280,960 "$(cat address)" --virtual-time-budget=30000
printf '  %s\n' "$folder"/{comparison,serve}.png
