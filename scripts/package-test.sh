#!/usr/bin/env bash
# Makes the Debian packages, lets lintian look at them, installs them in a root of its own, does there what the README
# tells a newcomer, builds the example with them, and removes them again.
# Usage: scripts/package-test.sh [BUILD_FOLDER]    default: build/hardened, which is built first
#
# The root is this machine's own under a layer that takes every change, in a mount namespace: nothing outside of it is
# touched, and dpkg checks dependencies and runs its triggers as everywhere. That is for root; for others, and where
# root may not mount, the packages are unpacked into a folder and used from there.
set -euo pipefail
source_folder=$(cd "$(dirname "$0")/.." && pwd)
log_seconds=$([ "${CI:-}" = true ] && echo 3 || echo 10)

if [ "${1:-}" = --in-root ]; then  # the part inside
    work=$2
    cd "$work"
    export PATH=/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin HOME=$work/home
    export DEBIAN_FRONTEND=noninteractive
    mkdir -p "$HOME"
    packages=(kordanix libkordanixcore libkordanixcore-dev)
    find /usr /etc /var/lib -xdev 2>/dev/null | sort >before
    dpkg --install ./*.deb >dpkg.log 2>&1 || { cat dpkg.log >&2; exit 1; }

    [ "$(command -v kordanixctl)" = /usr/bin/kordanixctl ]
    ./show_overlay.sh "$work"
    mkdir newcomer
    ./follow_readme.sh newcomer /usr/share/doc/kordanix/README.md "$log_seconds"
    man --warnings -E UTF-8 -l "$(man --where kordanixctl)" 2>&1 >page | tee warnings
    [ ! -s warnings ] && grep -q 'kordanixctl set' page

    for shell in bash zsh fish; do ./check_completions.sh "$shell" /usr/share; done

    cp -r /usr/share/doc/kordanix/examples/null-layer .
    make -s -C null-layer
    cmake -S null-layer -B by-cmake >/dev/null && cmake --build by-cmake >/dev/null
    [ "$(./null-layer/null-layer 2>/dev/null | grep -c '^frame ')" = 5 ]

    dpkg --purge "${packages[@]}" >>dpkg.log 2>&1 || { cat dpkg.log >&2; exit 1; }
    find /usr /etc /var/lib -xdev 2>/dev/null | sort >after
    left=$(comm -13 before after | grep -v -e '^/var/lib/dpkg/' || true)
    [ -z "$left" ] || { printf '%s\n' "After the removal there are still:" "$left" >&2; exit 1; }
    echo "Installed, used and removed: ${packages[*]}"
    exit 0
fi

if [ "${1:-}" = --in-namespace ]; then  # makes the root
    work=$2
    mount -t tmpfs none "$work/layer"
    mkdir "$work"/layer/{changes,scratch}
    mount -t overlay none -o "lowerdir=/,upperdir=$work/layer/changes,workdir=$work/layer/scratch" "$work/root"
    for folder in dev proc sys; do mount --rbind "/$folder" "$work/root/$folder"; done
    mount -t tmpfs none "$work/root/tmp"
    mkdir "$work/root/tmp/test"
    cp "$work"/packages/*.deb "$source_folder"/tests/install/{show_overlay,follow_readme,check_completions}.sh \
        "$source_folder/scripts/package-test.sh" "$work/root/tmp/test"
    exec chroot "$work/root" /tmp/test/package-test.sh --in-root /tmp/test
fi

cd "$source_folder"
scripts/install-dependencies.sh build test package
build=${1:-build/hardened}
if [ $# -eq 0 ]; then
    cmake --preset hardened >/dev/null
    cmake --build --preset hardened
fi
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir "$work"/{layer,root}
(cd "$build" && cpack -G DEB -B "$work/packages") >"$work/log" 2>&1 || { cat "$work/log" >&2; exit 1; }
rm -rf "$work/packages/_CPack_Packages"
lintian --fail-on error --allow-root "$work"/packages/*.deb

if unshare --mount mount -t tmpfs none "$work/layer" 2>/dev/null; then
    unshare --mount -- "$0" --in-namespace "$work"
else
    echo "Nothing may be mounted here: the packages are unpacked and not installed, so dpkg has no part in the test"
    for package in "$work"/packages/*.deb; do dpkg-deb --extract "$package" "$work/root"; done
    export PATH=$work/root/usr/bin:$PATH XDG_DATA_DIRS=$work/root/usr/share:/usr/share
    tests/install/show_overlay.sh "$work"
    mkdir "$work/newcomer"
    tests/install/follow_readme.sh "$work/newcomer" "$work/root/usr/share/doc/kordanix/README.md" "$log_seconds"
fi
