#!/usr/bin/env bash
# Runs the client under the played loader, and looks at a picture that the driver has written.
# Usage: play.sh CLIENT TURN      a surface whose picture is turned in that way
#        play.sh CLIENT none      folders without a layer, and with a file that is none
# LD_LIBRARY_PATH has the loader, LAYERS the folder of the layer, DRIVER the driver.
set -euo pipefail
client=$1 turn=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export XDG_RUNTIME_DIR=$work XDG_CONFIG_HOME=$work/config

refuses() {  # FOLDER REASON
    if LAYERS=$1 "$client" headless present 1 2>"$work/said" || ! grep -q "$2" "$work/said"; then
        echo "$1 does not end it for: $2" >&2
        exit 1
    fi
}

if [ "$turn" = none ]; then
    refuses "$work" 'there is no libVkLayer'
    cp "$DRIVER" "$work/libVkLayer_none.so"
    refuses "$work" vkEnumerateInstanceLayerProperties
    exit
fi
mkdir -p "$XDG_CONFIG_HOME/kordanix"
echo 'bg_color #FFFFFF' >"$XDG_CONFIG_HOME/kordanix/default.conf"
export STAND_IN=shot=20:$work/picture
"$client" headless "turn=$turn" present 20 nulls resize 300 200 passes 20 renew present 9
grep -q 'shown 1' "$work"/kordanix/*/note.*
# Of an opaque black picture's bytes every fourth is not 0; the widgets have light backgrounds.
bytes=$(wc -c <"$work/picture") light=$(tr -d '\000' <"$work/picture" | wc -c)
echo "$light of $bytes bytes are not 0"
[ "$light" -gt $((bytes * 3 / 10)) ]
