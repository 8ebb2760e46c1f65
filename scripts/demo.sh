#!/usr/bin/env bash
# Builds the demo, runs it and writes pictures of the overlay: with this machine's own live figures, in
# landscape and portrait, and on a simulated device. Takes a few minutes the first time.
# Usage: scripts/demo.sh [FOLDER]   (default: build/demo)
set -euo pipefail
cd "$(dirname "$0")/.."
out=${1:-build/demo}

scripts/install-dependencies.sh build
echo "Building the demo in build/release"
# The demo alone needs neither the tests' packages nor the benchmarks'; a build that has them keeps them.
options=()
[ -f build/release/CMakeCache.txt ] || options=(-DKORDANIX_BENCH=OFF -DBUILD_TESTING=OFF)
cmake --preset release "${options[@]}" >/dev/null
cmake --build --preset release --target kordanix-demo kordanixctl

mkdir -p "$out"
demo=build/release/bin/kordanix-demo
echo
echo "This machine's own figures, landscape, for 6 seconds"
"$demo" --private --size 1480x720 --seconds 6 --set widget_memory=true --png "$out/landscape.png"
echo "The same in portrait"
"$demo" --private --size 720x1480 --seconds 6 --set widget_memory=true --png "$out/portrait.png"
for device in platform/devices/*/; do
    name=$(basename "$device")
    echo "On the simulated device '$name'"
    "$demo" --private --device "$name" --size 1480x720 --seconds 6 --set widget_memory=true --png "$out/device-$name.png"
done

echo
echo "Done. The pictures:"
ls "$out"/*.png
echo "To change the overlay while a demo runs: build/release/bin/kordanixctl set widget_fps false"
