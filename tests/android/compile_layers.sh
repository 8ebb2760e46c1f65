#!/usr/bin/env bash
# Compiles every source of the layers for applications as clang does for Android, for one ABI, and links each layer
# without libraries. What is left over must be names that Android has at API level 29, or of the C++ library, which an
# NDK links statically. bionic's headers are not here: the C library's are glibc's for that processor.
#   compile_layers.sh SOURCE BUILD ABI CMAKE_OPTIONS...     with C++ libraries to link in KORDANIX_CXX_LIBRARIES
set -euo pipefail
export LC_ALL=C
source=$1
build=$2
abi=$3
shift 3
case $abi in
    armeabi-v7a) target=armv7a-linux-androideabi29 headers=/usr/arm-linux-gnueabihf/include flags=-mthumb largest=700 ;;
    arm64-v8a) target=aarch64-linux-android29 headers=/usr/aarch64-linux-gnu/include flags= largest=1000 ;;
    *) echo "unknown ABI '$abi'" >&2; exit 2 ;;
esac

# No more than 700 and 1000 KB with the C++ library in it, which takes about 60.
[ -n "${KORDANIX_CXX_LIBRARIES:-}" ] || largest=$((largest - 60))

# Of Android's own headers the stand-ins and Khronos's; libraries with nothing in them.
rm -rf "$build/tree"
mkdir -p "$build/tree/include/gnu" "$build/tree/lib"
ln -s "$source/platform/include/sys" "$source/platform/include/android" /usr/include/{EGL,GLES2,GLES3,KHR} "$build/tree/include"
touch "$build/tree/include/gnu/stubs-soft.h"  # glibc's for armhf lack it; Android passes floats as integers
for library in log dl m pthread rt; do
    printf '!<arch>\n' >"$build/tree/lib/lib$library.a"
done

flags+=" -Werror -Wno-unused-command-line-argument -D_GNU_SOURCE -nostdinc++ -isystem /usr/lib/llvm-14/include/c++/v1 -nostdlibinc -isystem $headers"
cmake -S "$source" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release -DKORDANIX_PLATFORM=android \
    -DKORDANIX_ANDROID_LAYERS=ON "-DKORDANIX_ANDROID_HEADERS=$build/tree/include" \
    -DCMAKE_SYSTEM_NAME=Linux "-DCMAKE_SYSTEM_PROCESSOR=$abi" -DCMAKE_TRY_COMPILE_TARGET_TYPE=STATIC_LIBRARY \
    -DCMAKE_CXX_COMPILER=clang++ "-DCMAKE_CXX_COMPILER_TARGET=$target" "-DCMAKE_CXX_FLAGS=$flags" \
    "-DCMAKE_MODULE_LINKER_FLAGS=-fuse-ld=lld -nostdlib -s -L$build/tree/lib" \
    "-DCMAKE_CXX_STANDARD_LIBRARIES=-Wl,-z,undefs ${KORDANIX_CXX_LIBRARIES:-}" "$@" >"$build/log" 2>&1 || { cat "$build/log"; exit 1; }
cmake --build "$build" -j 2 | tail -40

allowed=$(cat "$source"/tests/symbols/{allowed,android}_imports.txt | grep -Ev '^(#|$)')
for layer in "$build"/lib/lib{KordanixGles,VkLayer_Kordanix}.so; do
    size=$(stat -c %s "$layer")
    echo "$abi ${layer##*/}: $size bytes of at most ${largest}000"
    ((size <= largest * 1000)) || exit 1
    if nm -D --undefined-only "$layer" | awk '{ print $NF }' | c++filt | sort -u | grep -Evx "$allowed"; then
        echo "${layer##*/} uses what Android may not have"
        exit 1
    fi
done
