#!/usr/bin/env bash
# Packs an APK from any libraries, and asks Android's own tools what they find in it.
#   check_apk.sh SOURCE LIBRARY
set -euo pipefail
source=$1
tree=$(mktemp -d)
trap 'rm -rf "$tree"' EXIT
mkdir -p "$tree/layers/armeabi-v7a" "$tree/layers/arm64-v8a"
cp "$2" "$tree/layers/armeabi-v7a/libKordanixGles.so"
cp "$2" "$tree/layers/arm64-v8a/libVkLayer_Kordanix.so"
if "$source/scripts/android-apk.sh" "$tree" "$tree/none.apk" 2>"$tree/said" || [ -e "$tree/none.apk" ]; then
    echo "packs an APK without a library"
    exit 1
fi
grep -q 'has no armeabi-v7a' "$tree/said"

digests=()
for apk in first second; do
    "$source/scripts/android-apk.sh" "$tree/layers" "$tree/$apk.apk" "$tree/key"
    digests+=("$(apksigner verify --print-certs "$tree/$apk.apk" | grep SHA-256)")
done
[ "${digests[0]}" = "${digests[1]}" ] || { echo "the key was not kept"; exit 1; }
zipalign -c -p 4 "$tree/first.apk"
badging=$(aapt dump badging "$tree/first.apk")
for expected in "package: name='kordanix.layers'" "sdkVersion:'29'" "native-code: 'arm64-v8a' 'armeabi-v7a'"; do
    [[ $badging == *"$expected"* ]] || { echo "misses $expected in: $badging"; exit 1; }
done
manifest=$(aapt dump xmltree "$tree/first.apk" AndroidManifest.xml)
[[ $manifest =~ hasCode[^=]*=\(type\ 0x12\)0x0 && $manifest =~ extractNativeLibs[^=]*=\(type\ 0x12\)0xffffffff ]] ||
    { echo "$manifest"; exit 1; }
aapt list "$tree/first.apk" | grep -qx lib/arm64-v8a/libVkLayer_Kordanix.so
