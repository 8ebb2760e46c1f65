#!/usr/bin/env bash
# Runs the demo's frame loop as fast as it can, with everything at random that can happen to an overlay, and
# fails when memory or open files grow after the first minute or a dump lacks a frame. Prints what it did.
# Usage: scripts/soak.sh [SECONDS]   (default: 600)
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/install-dependencies.sh build test

echo "Building in build/release"
cmake --preset release -DBUILD_TESTING=ON >/dev/null
cmake --build --preset release --target kordanix-soak >/dev/null
program=$PWD/build/release/bin/kordanix-soak

folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
mkdir -m 700 "$folder/run" "$folder/dumps"
export KORDANIX_RUNTIME_DIR=$folder/run KORDANIX_DEVICE=adreno-c32
unset KORDANIX_DUMP_DIR
echo "Running for ${1:-600} seconds"
# Under the name that the settings are for.
(cd "$folder/dumps" && exec -a fault-host "$program" "${1:-600}") 2>"$folder/log" || {
    code=$?
    tail -20 "$folder/log" >&2
    exit $code
}
