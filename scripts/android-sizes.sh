#!/usr/bin/env bash
# Prints how large the layers for Android applications are with everything in them, stripped, for both ABIs: as close to
# an NDK's as one gets without one. The C++ library is Debian's static libc++, from packages for those processors, which
# are unpacked in build/android-sizes and not installed. On 32 bits Debian passes floats in other registers than Android,
# so the result shows its size and cannot run.
#   scripts/android-sizes.sh
set -euo pipefail
cd "$(dirname "$0")/.."
[ $# -eq 0 ] || { sed -n '2,6s/^# \{0,1\}//p' "$0" >&2; exit 2; }
scripts/install-dependencies.sh build test arm
work=$PWD/build/android-sizes
release=14

native=$(dpkg --print-architecture)
apt=(apt-get -qq -o APT::Architecture="$native" -o APT::Architectures::="$native" -o APT::Architectures::=armhf
    -o APT::Architectures::=arm64 -o Dir::State::lists="$work/lists" -o Dir::Cache="$work/cache")
mkdir -p "$work"/{lists,cache/archives}/partial "$work/packages"
if ! ls "$work"/packages/*.deb >/dev/null 2>&1; then
    "${apt[@]}" update
    (cd "$work/packages" && "${apt[@]}" download {libc++,libc++abi,libunwind}-$release-dev:{armhf,arm64})
fi

for abi in armeabi-v7a:armhf arm64-v8a:arm64; do
    tree=$work/${abi#*:}
    for package in "$work"/packages/*_"${abi#*:}".deb; do
        dpkg-deb -x "$package" "$tree"
    done
    libraries=("$tree"/usr/lib/llvm-$release/lib/lib{c++,c++abi,unwind}.a)
    for library in "${libraries[@]}"; do
        # Or the linker would refuse them.
        [ "${abi#*:}" != armhf ] || arm-linux-gnueabihf-objcopy --remove-section=.ARM.attributes "$library"
    done
    KORDANIX_CXX_LIBRARIES=${libraries[*]} tests/android/compile_layers.sh "$PWD" "$work/${abi%%:*}" "${abi%%:*}"
done
