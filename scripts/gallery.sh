#!/usr/bin/env bash
# Draws the overlay in every arrangement on the simulated devices, for looking at: contact sheets of all five
# widgets at each of the eight places, landscape and portrait. Also makes the pictures of the documents,
# docs/pictures. Takes about two minutes after the build.
# Usage: scripts/gallery.sh [FOLDER]   (default: build/gallery)
set -euo pipefail
cd "$(dirname "$0")/.."
out=${1:-build/gallery}

scripts/install-dependencies.sh build
echo "Building the demo in build/release"
# What a build has already been configured with is kept.
options=()
[ -f build/release/CMakeCache.txt ] || options=(-DKORDANIX_BENCH=OFF -DBUILD_TESTING=OFF)
cmake --preset release "${options[@]}" >/dev/null
cmake --build --preset release --target kordanix-demo contactsheet >/dev/null

demo=build/release/bin/kordanix-demo
positions=(TOP_LEFT TOP_CENTER TOP_RIGHT CENTER_LEFT CENTER_RIGHT BOTTOM_LEFT BOTTOM_CENTER BOTTOM_RIGHT)
widgets=(fps cpu_gpu gpu_activity gpu_activity_thumbnail memory)
# The places that the widgets have by default.
defaults=(0 2 6 5 1)
tiles=$out/tiles
mkdir -p "$tiles" docs/pictures

# picture FILE DEVICE SIZE SECONDS CAPTURE_AT [NAME=VALUE]...: time is stepped, so it takes less than that.
picture() {
    local file=$1 device=$2 size=$3 seconds=$4 capture=$5 settings=()
    shift 5
    for setting in "$@"; do settings+=(--set "$setting"); done
    "$demo" --private --fixed-step --device "$device" --size "$size" --seconds "$seconds" \
        --capture-at "$capture" --set widget_memory=true "${settings[@]}" --png "$file" >/dev/null
}

# together N: all widgets at place N. apart N: each N places on from its default one.
arrangement() {
    local kind=$1 number=$2 i place
    for i in "${!widgets[@]}"; do
        place=$number
        [ "$kind" = together ] || place=$(((defaults[i] + number) % 8))
        echo "widget_${widgets[i]}_position=${positions[place]}"
    done
}

# sheet KIND DEVICE ORIENTATION SIZE COLUMNS
sheet() {
    local kind=$1 device=$2 orientation=$3 size=$4 columns=$5 number entries=() settings caption
    for number in {0..7}; do
        mapfile -t settings < <(arrangement "$kind" "$number")
        local file=$tiles/$kind-$device-$orientation-$number.png
        # Each with another captured frame.
        picture "$file" "$device" "$size" 8 "7.0$number" "${settings[@]}"
        caption="All at ${positions[number]/_/ }"
        [ "$kind" = together ] || caption="Each $number places on from its default"
        entries+=("$file=$caption, ${device/-/ }")
    done
    build/release/bin/contactsheet --columns "$columns" --output "$out/$kind-$device-$orientation.png" "${entries[@]}"
    echo "  $out/$kind-$device-$orientation.png"
}

echo "Drawing the contact sheets"
for folder in platform/devices/*/; do
    device=$(basename "$folder")
    for kind in together apart; do
        sheet "$kind" "$device" landscape 740x360 2 &
        sheet "$kind" "$device" portrait 360x740 4
        wait $!
    done
done

echo "Drawing the pictures of the documents"
picture docs/pictures/overview.png mali-b31 1480x720 14 12.4
picture docs/pictures/portrait.png adreno-c32 540x1110 14 13.85
picture docs/pictures/settings.png mali-b31 1110x540 14 12.4 widget_cpu_gpu_gpu_freq=true \
    widget_fps_position=BOTTOM_LEFT widget_cpu_gpu_position=BOTTOM_RIGHT widget_memory_position=TOP_RIGHT \
    widget_gpu_activity=false widget_gpu_activity_thumbnail=false widget_memory_pss_color='#FF80C0' \
    widget_memory_gpu_surface=false widget_fps_current_color='#40E0D0' bg_color='#102840' bg_transparency=190
scripts/screenshot.sh docs/pictures/over-glmark2.png 14 widget_memory=true -- \
    glmark2 -b jellyfish:duration=60 -s 1280x720
scripts/screenshot.sh docs/pictures/over-glxgears.png 14 -- glxgears -geometry 740x360
scripts/screenshot.sh docs/pictures/preset-small.png 10 preset=small -- glxgears -geometry 740x360
scripts/screenshot.sh docs/pictures/preset-full.png 14 preset=full -- glxgears -geometry 1280x720
scripts/screenshot.sh docs/pictures/over-vkcube.png 14 -- vkcube --width 1280 --height 720
printf '  %s\n' docs/pictures/*.png
