#!/usr/bin/env bash
# Configures and builds for Android against a tree that offers what an NDK and a platform would, and looks at
# the result: the library alone, without a header or a source of the host's stand-ins.
#   build_for_android.sh SOURCE HEADERS PLATFORM_LIBRARY COMPANION_LIBRARY CMAKE_OPTIONS...
set -euo pipefail
source=$1
headers=$2
platform=$3
companion=$4
shift 4
tree=$(mktemp -d)
trap 'rm -rf "$tree"' EXIT

mkdir "$tree/include" "$tree/lib"
for folder in sys android utils; do
    ln -s "$source/platform/include/$folder" "$tree/include/$folder"
done
ln -s "$platform" "$tree/lib/liblog.so"
ln -s "$platform" "$tree/lib/libutils.so"
ln -s "$companion" "$tree/lib/libostra.so"

cmake -S "$source" -B "$tree/build" -G Ninja -DCMAKE_BUILD_TYPE=Release -DKORDANIX_PLATFORM=android \
    "-DKORDANIX_ANDROID_HEADERS=$tree/include;$headers" "-DKORDANIX_ANDROID_LIBRARIES=$tree/lib" "$@" \
    >"$tree/log" 2>&1 || { cat "$tree/log"; exit 1; }
cmake --build "$tree/build"

built=$(find "$tree/build" -name '*.so*' -o -name '*.a' -o -path '*/bin/*' -type f)
[ "$built" = "$tree/build/lib/libKordanixCore.so" ] || { echo "built more than the library: $built"; exit 1; }
if grep -E '(-I|-isystem) ?[^ ]*/platform(/include)?( |$)|/platform/[^ ]*\.cpp' "$tree/build/compile_commands.json"; then
    echo "uses the host's stand-ins"
    exit 1
fi
for check in imports manners exports data; do
    "$source/tests/symbols/check_library.sh" $check "$built"
done
