#!/usr/bin/env bash
# Builds the layers for Android applications with the NDK that ANDROID_NDK names, for both ABIs, and collects them
# stripped, as `kordanixctl android PACKAGE install --layers` and scripts/android-apk.sh take them.
#   scripts/android-layers.sh [FOLDER]     default: build/android-layers
set -euo pipefail
cd "$(dirname "$0")/.."
case "${1:-}" in -*) sed -n '2,4s/^# \{0,1\}//p' "$0" >&2; exit 2 ;; esac
folder=${1:-build/android-layers}
[ -e "${ANDROID_NDK:-}/build/cmake/android.toolchain.cmake" ] || {
    echo "ANDROID_NDK must name the folder of an Android NDK, it is '${ANDROID_NDK:-}'" >&2
    exit 1
}

for preset in android-layers:armeabi-v7a android-layers-arm64:arm64-v8a; do
    name=${preset%%:*}
    abi=${preset##*:}
    cmake --preset "$name"
    cmake --build --preset "$name"
    mkdir -p "$folder/$abi"
    for library in "build/$name"/lib/lib*.so; do
        "$ANDROID_NDK"/toolchains/llvm/prebuilt/*/bin/llvm-strip -o "$folder/$abi/${library##*/}" "$library"
    done
done
ls -l "$folder"/*/
