#!/usr/bin/env bash
# Packs the layers for Android applications into an APK without a program in it, which Android looks for them in.
#   scripts/android-apk.sh LAYERS OUT.apk [KEYSTORE]
# LAYERS has a folder for each ABI with its libraries, as scripts/android-layers.sh makes it. The APK is signed with the
# key in KEYSTORE (password: kordanix), which is made if it is not there. Without it the key is a new one each time, and
# a device that has an APK with another key refuses this one until that is removed.
set -euo pipefail

[ $# -eq 2 ] || [ $# -eq 3 ] || { sed -n '2,6s/^# \{0,1\}//p' "$0" >&2; exit 2; }
layers=$(realpath "$1")
out=$(realpath "$2")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
keystore=$(realpath "${3:-$work/keystore}")
framework=${ANDROID_FRAMEWORK:-/usr/share/android-framework-res/framework-res.apk}

"$(dirname "$0")/install-dependencies.sh" apk

for abi in armeabi-v7a arm64-v8a; do
    for library in "$layers/$abi"/lib*.so; do
        [ -f "$library" ] || continue
        mkdir -p "$work/lib/$abi"
        cp "$library" "$work/lib/$abi/"
    done
done
[ -d "$work/lib" ] || { echo "$layers has no armeabi-v7a/lib*.so and no arm64-v8a/lib*.so" >&2; exit 1; }

# A layer is found only as a file on disk, so the device has to unpack the libraries.
cat >"$work/AndroidManifest.xml" <<'XML'
<?xml version="1.0" encoding="utf-8"?>
<manifest xmlns:android="http://schemas.android.com/apk/res/android" package="kordanix.layers"
          android:versionCode="1" android:versionName="0.1">
    <uses-sdk android:minSdkVersion="29" android:targetSdkVersion="29" />
    <application android:label="Kordanix layers" android:hasCode="false" android:extractNativeLibs="true" />
</manifest>
XML

cd "$work"
aapt package -f -M AndroidManifest.xml -I "$framework" -F plain.apk
aapt add plain.apk lib/*/*.so >/dev/null
zipalign -f -p 4 plain.apk aligned.apk
[ -f "$keystore" ] || keytool -genkeypair -keystore "$keystore" -storepass kordanix -alias layers -keyalg RSA -keysize 2048 \
    -validity 10000 -dname "CN=Kordanix layers" >/dev/null 2>&1
apksigner sign --ks "$keystore" --ks-pass pass:kordanix --out signed.apk aligned.apk
mv signed.apk "$out"
echo "$out: $(cd lib && ls -d -- */* | tr '\n' ' ')"
