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
export KORDANIX_RUNTIME_DIR=$folder
echo "Running for ${1:-600} seconds"
"$program" "${1:-600}"
