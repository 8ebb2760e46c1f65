#!/usr/bin/env bash
# Runs an OpenGL or Vulkan program under the overlay, in a window of an X server without a screen, and takes a
# picture of one of its frames. With devmode=true it captures the GPU's work of a frame in between.
# Usage: scripts/screenshot.sh OUT.png SECONDS [preset=NAME] [NAME=VALUE]... -- PROGRAM [ARGUMENT]...
set -euo pipefail
cd "$(dirname "$0")/.."

[ $# -ge 4 ] || { sed -n '2,5s/^# \{0,1\}//p' "$0" >&2; exit 2; }
out=$1 seconds=$2
shift 2
settings=()
while [ "$1" != -- ]; do
    case $1 in
        preset=*) settings+=(--preset "${1#preset=}") ;;
        *) settings+=(--set "$1") ;;
    esac
    shift
done
shift

scripts/install-dependencies.sh build test
options=()
[ -f build/release/CMakeCache.txt ] || options=(-DKORDANIX_BENCH=OFF -DBUILD_TESTING=OFF)
cmake --preset release "${options[@]}" >/dev/null
cmake --build --preset release --target kordanixctl kordanix_preload kordanix_opengl kordanix_vulkan >/dev/null
control=build/release/bin/kordanixctl

export XDG_CONFIG_HOME=/nowhere  # your profiles are not in the picture

# The server writes its number into this when it is ready.
pipe=$(mktemp -u)
mkfifo "$pipe"
exec {number}<>"$pipe"
rm "$pipe"
program=
Xvfb -displayfd "$number" -screen 0 1480x900x24 -nolisten tcp 2>/dev/null &
server=$!
trap 'kill $program $server 2>/dev/null || true; wait' EXIT
read -r -u "$number" display

DISPLAY=:$display LIBGL_ALWAYS_SOFTWARE=1 vblank_mode=0 "$control" run "${settings[@]}" -- "$@" >/dev/null &
program=$!
sleep "$(awk "BEGIN { print $seconds / 2 }")"
[[ " ${settings[*]} " != *" devmode=true "* ]] || "$control" --process "$program" key capture >/dev/null
sleep "$(awk "BEGIN { print $seconds / 2 }")"
"$control" picture "$program" "$out"
