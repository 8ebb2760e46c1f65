#!/usr/bin/env bash
# Shows the overlay of an installation over two programs that nobody here wrote, in the windows of an X server without a
# screen, as a user would: by `kordanixctl run`, and a Vulkan program by KORDANIX=1. Takes a picture of each.
# Usage: show_overlay.sh FOLDER    the pictures go there; kordanixctl is what the shell finds
set -euo pipefail
folder=$1
export LIBGL_ALWAYS_SOFTWARE=1 vblank_mode=0 KORDANIX_RUNTIME_DIR=$folder/properties
mkdir -p -m 700 "$KORDANIX_RUNTIME_DIR"

fail() {
    printf '%s\n' "$@" >&2
    exit 1
}

programs=()
trap 'kill "${programs[@]}" 2>/dev/null || true; wait' EXIT
exec {number}<> <(:)
Xvfb -displayfd "$number" -screen 0 800x600x24 -nolisten tcp 2>/dev/null &
programs+=($!)
read -t 30 -r -u "$number" display || fail "Xvfb does not start"
export DISPLAY=:$display

# $1: the program's name; its process is the last one that was started here
check_picture() {
    local process=$! try
    programs+=("$process")
    rm -f "$folder/$1.png"
    for try in {1..60}; do
        ! kordanixctl picture "$process" "$folder/$1.png" 2>"$folder/$1.log" || break
        kill -0 "$process" 2>/dev/null || fail "$1 has ended:" "$(cat "$folder/$1.out")"
        sleep 0.5
    done
    [ -s "$folder/$1.png" ] || fail "$1 shows no overlay:" "$(cat "$folder/$1.log" "$folder/$1.out")"
    kordanixctl --process "$process" set status false
    ! kordanixctl picture --seconds 1 "$process" "$folder/off.png" 2>"$folder/$1.log" ||
        fail "$1: switched off, the overlay is still there"
    echo "$1 has the overlay"
    kill "$process"
    wait "$process" 2>/dev/null || true
}

kordanixctl run -- glxgears >"$folder/glxgears.out" 2>&1 &
check_picture glxgears
KORDANIX=1 vkcube >"$folder/vkcube.out" 2>&1 &
check_picture vkcube
