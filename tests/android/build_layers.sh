#!/usr/bin/env bash
# Builds the layers for applications as for Android, against a tree that offers what an NDK would, and looks at the
# result: one file, which needs nothing that an application's process does not have. The C++ library, which an NDK links
# statically, may be there.
# Then LOAD, a program with its arguments, loads them.
#   build_layers.sh SOURCE PLATFORM_LIBRARY CMAKE_OPTIONS...
set -euo pipefail
source=$1
platform=$2
shift 2
tree=$(mktemp -d)
trap 'rm -rf "$tree"' EXIT

# bionic's properties and liblog are in the stand-in; EGL's headers are where an NDK has them too.
mkdir "$tree/include" "$tree/lib"
for folder in sys android; do
    ln -s "$source/platform/include/$folder" "$tree/include/$folder"
done
ln -s "$platform" "$tree/lib/liblog.so"

cmake -S "$source" -B "$tree/build" -G Ninja -DCMAKE_BUILD_TYPE=Debug -DKORDANIX_PLATFORM=android \
    -DKORDANIX_ANDROID_LAYERS=ON "-DKORDANIX_ANDROID_HEADERS=$tree/include" \
    "-DCMAKE_MODULE_LINKER_FLAGS=-L$tree/lib" "$@" >"$tree/log" 2>&1 || { cat "$tree/log"; exit 1; }
cmake --build "$tree/build" -j 2 | tail -40

gles=$tree/build/lib/libKordanixGles.so
vulkan=$tree/build/lib/libVkLayer_Kordanix.so
[ "$(find "$tree/build" -name '*.so*' | sort | tr '\n' ' ')" = "$gles $vulkan " ] || { echo "built something else"; exit 1; }
exports() { nm -D --defined-only "$1" | awk '{ print $3 }' | sort | tr '\n' ' '; }
[ "$(exports "$gles")" = "AndroidGLESLayer_GetProcAddress AndroidGLESLayer_Initialize " ] ||
    { echo "exports $(exports "$gles")"; exit 1; }
[ "$(exports "$vulkan" | wc -w) $(exports "$vulkan" | tr ' ' '\n' | grep -c '^vk')" = "6 6" ] ||
    { echo "exports $(exports "$vulkan")"; exit 1; }
for built in "$gles" "$vulkan"; do
    if readelf -d "$built" | grep NEEDED | grep -vE '\[(libkordanix_platform|liblog|libstdc\+\+|libgcc_s|libc\+\+|libc\+\+abi|libunwind|libm|libc|libdl|ld-linux[^]]*)\.so'; then
        echo "needs more than an application's process has"
        exit 1
    fi
    # Of the stand-in only what bionic and liblog have in its place.
    others=$(comm -12 <(nm -D --defined-only "$platform" | awk '{ print $3 }' | sort -u) \
        <(nm -D --undefined-only "$built" | awk '{ sub("@.*", "", $2); print $2 }' | sort -u) |
        grep -vE '^__system_property_|^__android_log_print$' || true)
    [ -z "$others" ] || { echo "takes from the host: $others"; exit 1; }
    readelf -dW "$built" | grep -q NODELETE || { echo "$built may be unloaded"; exit 1; }
    if readelf -lW "$built" | awk '$1 == "LOAD" && $NF != "0x4000"' | grep .; then
        echo "$built has segments that do not fit pages of 16 KB"
        exit 1
    fi
    grep -q debug.kordanix.command "$built" || { echo "does not know the property of commands"; exit 1; }
done
# shellcheck disable=SC2086
LD_LIBRARY_PATH=$(dirname "$platform") $LOAD "$gles" "$vulkan"
