#!/usr/bin/env bash
# Installs the Debian packages that building, testing, measuring and the demo need; those already there
# are left alone. Usage: scripts/install-dependencies.sh [build|test|bench|opengl-bench|apk|arm|32bit|package]...   (default: build)
set -euo pipefail

build=(g++ cmake ninja-build libglm-dev libpng-dev libcli11-dev nlohmann-json3-dev libfreetype-dev libegl-dev libgl-dev libgles-dev
       libvulkan-dev glslang-tools libx11-dev libxi-dev libxres-dev help2man
       libncurses-dev libcpp-httplib-dev pkg-config)
test=(clang clang-format clang-tidy libclang-rt-14-dev libc++-14-dev libc++abi-14-dev libgtest-dev libgmock-dev fonts-roboto-unhinted valgrind
      libgl1-mesa-dri libegl-mesa0 libglx-mesa0 libgles2 xvfb xauth mesa-utils glmark2-x11 glmark2-es2-x11
      mesa-vulkan-drivers vulkan-tools vulkan-validationlayers weston
      libsdl2-tests libx11-dev xdotool procps pkg-config strace locales tmux chromium
      android-libutils-dev android-liblog-dev lld libc6-dev-armhf-cross libc6-dev-arm64-cross
      zsh fish groff-base)
bench=(libbenchmark-dev)
opengl_bench=(mangohud xvfb valgrind libx11-dev libgl1-mesa-dri libglx-mesa0)
package=(lintian dpkg-dev file man-db)
apk=(aapt zipalign apksigner android-framework-res default-jre-headless)
arm=(g++-arm-linux-gnueabihf qemu-user googletest libc++-14-dev libc++abi-14-dev)
# Not gcc-multilib, which excludes the compilers for ARM.
word32=(lib32stdc++-12-dev libc6-dev-i386)

packages=()
for group in "${@:-build}"; do
    case "$group" in
        build) packages+=("${build[@]}") ;;
        test) packages+=("${test[@]}") ;;
        bench) packages+=("${bench[@]}") ;;
        opengl-bench) packages+=("${opengl_bench[@]}") ;;
        apk) packages+=("${apk[@]}") ;;
        arm) packages+=("${arm[@]}") ;;
        32bit) packages+=("${word32[@]}") ;;
        package) packages+=("${package[@]}") ;;
        *) echo "unknown group '$group': build, test, bench, opengl-bench, apk, arm, 32bit or package" >&2; exit 2 ;;
    esac
done

missing=()
for package in "${packages[@]}"; do
    dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'ok installed' || missing+=("$package")
done
[ ${#missing[@]} -eq 0 ] && exit 0

as_root=()
if [ "$(id -u)" -ne 0 ]; then
    command -v sudo >/dev/null || {
        echo "Please install these packages as root first: ${missing[*]}" >&2
        exit 1
    }
    as_root=(sudo)
fi
echo "Installing from Debian: ${missing[*]}"
export DEBIAN_FRONTEND=noninteractive
"${as_root[@]}" apt-get update -qq
"${as_root[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
