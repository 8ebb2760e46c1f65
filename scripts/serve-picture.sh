#!/usr/bin/env bash
# Takes the picture in docs/guide.md of the page that 'kordanixctl serve' shows, over a program on an X server without
# a screen. Usage: scripts/serve-picture.sh [OUT.png] [PROGRAM [ARGUMENT]...]   (default: of glmark2)
set -euo pipefail
cd "$(dirname "$0")/.."

out=${1:-docs/pictures/serve.png}
shift || true
[ $# -gt 0 ] || set -- glmark2 -s 640x360 -b build:duration=60
scripts/install-dependencies.sh build test
cmake --preset release >/dev/null
cmake --build --preset release --target kordanixctl kordanix_preload kordanix_opengl kordanix_vulkan >/dev/null
control=build/release/bin/kordanixctl

work=$(mktemp -d)
export XDG_RUNTIME_DIR=$work  # so that there is one program to be meant
program= serve= server=
trap 'kill $serve $program $server 2>/dev/null || true; wait; rm -rf "$work"' EXIT
Xvfb -displayfd 3 -screen 0 1480x900x24 -nolisten tcp 3>"$work/display" 2>/dev/null &
server=$!
until [ -s "$work/display" ]; do sleep 0.1; done
DISPLAY=:$(cat "$work/display") LIBGL_ALWAYS_SOFTWARE=1 "$control" run -- "$@" >/dev/null &
program=$!
sleep 4
"$control" serve >"$work/address" 2>/dev/null &
serve=$!
until [ -s "$work/address" ]; do sleep 0.1; done
HOME=$work chromium --headless --no-sandbox --disable-gpu --disable-quic --no-first-run --disable-background-networking \
    --disable-component-update --disable-sync --user-data-dir="$work/browser" --hide-scrollbars \
    --window-size=1280,960 --virtual-time-budget=30000 --screenshot="$(realpath -m "$out")" "$(cat "$work/address")" 2>/dev/null
[ -s "$out" ]
