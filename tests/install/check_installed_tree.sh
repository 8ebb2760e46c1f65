#!/usr/bin/env bash
# Installs the build, moves the result, and checks that it is whole: no file of it names a folder of the build,
# every header compiles on its own, and the example, copied out of the sources, builds as a CMake package and with
# pkg-config, and draws what is expected. Then a user without root has all of it below HOME, and takes it away again.
# Usage: check_installed_tree.sh CMAKE BUILD_FOLDER SOURCE_FOLDER COMPILER PKG_CONFIG PREFIX LIBRARY_FOLDER
# PREFIX and LIBRARY_FOLDER, below it, are those that the build was configured with.
set -euo pipefail
cmake=$1 build=$2 source=$3 compiler=$4 pkg_config=$5 configured_prefix=$6 library_folder=$7

fail() {
    printf '%s\n' "$@" >&2
    exit 1
}

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
prefix=$work/moved
lib=$prefix/$library_folder
DESTDIR=$work/installed "$cmake" --install "$build" >"$work/install.log" || fail "$(cat "$work/install.log")"
mv "$work/installed/$configured_prefix" "$prefix"
cp -r "$source/examples/null-layer" "$work/by-cmake"
cp -r "$source/examples/null-layer" "$work/by-pkg-config"

# What debuggers are told may name the sources.
strip --strip-debug "$prefix"/bin/* "$prefix"/libexec/kordanix/* "$lib"/*.so "$lib"/kordanix/*.so "$lib"/*.a
named=$(grep -rlaF -e "$build" -e "$source" -e "$work/installed" "$prefix" || true)
[ -z "$named" ] || fail "These files name a folder of the build:" "$named"

# Programs and libraries find each other where they lie.
for file in "$prefix"/bin/* "$prefix"/libexec/kordanix/* "$lib"/*.so "$lib"/kordanix/*.so; do
    missing=$(ldd "$file" | grep 'not found' || true)
    [ -z "$missing" ] || fail "$file:" "$missing"
    strange=$(ldd "$file" | grep -E 'libKordanix|libkordanix|libostra' | grep -vF "$prefix/" || true)
    [ -z "$strange" ] || fail "$file takes libraries from elsewhere:" "$strange"
done

export PKG_CONFIG_PATH=$lib/pkgconfig
read -ra flags < <("$pkg_config" --cflags kordanix-core)
headers=$(cd "$prefix/include/kordanix" && find core gui drawers utils scene platform -name '*.h')
[ "$(wc -l <<<"$headers")" -gt 50 ] || fail "Headers are missing:" "$headers"
while read -r header; do
    "$compiler" -std=c++17 -fsyntax-only -Wall -Wextra -Werror "${flags[@]}" -x c++ \
        -include "$prefix/include/kordanix/$header" /dev/null || fail "$header does not compile on its own"
done <<<"$headers"

"$cmake" -S "$work/by-cmake" -B "$work/by-cmake" -DCMAKE_CXX_COMPILER="$compiler" -DCMAKE_PREFIX_PATH="$prefix" \
    >"$work/log" 2>&1 || fail "$(cat "$work/log")"
"$cmake" --build "$work/by-cmake" >"$work/log" 2>&1 || fail "$(cat "$work/log")"
make -C "$work/by-pkg-config" CXX="$compiler" >"$work/log" 2>&1 || fail "$(cat "$work/log")"

# The scene can be linked from there, all of it.
mkdir "$work/scene"
cat >"$work/scene/CMakeLists.txt" <<'END'
cmake_minimum_required(VERSION 3.16)
project(SceneLayer CXX)
find_package(KordanixCore REQUIRED)
add_executable(scene-layer main.cpp)
target_link_libraries(scene-layer PRIVATE Kordanix::scene Kordanix::KordanixCore)
END
cat >"$work/scene/main.cpp" <<'END'
#include "scene/Overlay.h"
int main() {
    void (scene::Overlay::*volatile call)() = &scene::Overlay::beginFrame;
    return call == nullptr ? 1 : 0;
}
END
"$cmake" -S "$work/scene" -B "$work/scene" -DCMAKE_CXX_COMPILER="$compiler" -DCMAKE_PREFIX_PATH="$prefix" \
    >"$work/log" 2>&1 || fail "$(cat "$work/log")"
"$cmake" --build "$work/scene" >"$work/log" 2>&1 || fail "$(cat "$work/log")"
read -ra flags < <("$pkg_config" --cflags --libs kordanix-scene)
"$compiler" -std=c++17 "$work/scene/main.cpp" -o "$work/scene/by-pkg-config" "${flags[@]}" >"$work/log" 2>&1 ||
    fail "$(cat "$work/log")"

# What one frame draws, once the first figure is there.
expected='rectangle
text "FPS #"
glyph F
glyph P
glyph S
rectangle
lines
triangle strip
line strip'

export KORDANIX_RUNTIME_DIR=$work/run
mkdir -m 700 "$KORDANIX_RUNTIME_DIR"
for folder in by-cmake by-pkg-config; do
    cd "$work/$folder"
    # Off, nothing is drawn; the switches of the overlay decide.
    "$prefix/bin/kordanixctl" set status false api 7 proc ./null-layer >/dev/null
    drawn=$(./null-layer 2>"$work/log" | grep -v '^frame [1-5]$' || true)
    [ -z "$drawn" ] || fail "$folder: switched off, it draws" "$drawn"

    "$prefix/bin/kordanixctl" set status true >/dev/null
    ./null-layer >"$work/out" 2>"$work/log" || fail "$folder:" "$(cat "$work/log")"
    [ "$(grep -c '^frame ' "$work/out")" -eq 5 ] || fail "$folder: five frames, not" "$(cat "$work/out")"
    # The last frame, without places and digits.
    drawn=$(sed -e '1,/^frame 5$/d' -e '/^glyph [^FPS]/d' -e 's/ at .*//' -e 's/"FPS [0-9.]*"/"FPS #"/' "$work/out")
    [ "$drawn" = "$expected" ] || fail "$folder: the fifth frame is" "$drawn"
done

# 'run' finds what it brings into programs.
ran=$("$prefix/bin/kordanixctl" run -- sh -c 'echo "$LD_PRELOAD"' 2>"$work/log") || fail "$(cat "$work/log")"
[ "$ran" = "$lib/kordanix/libkordanix-preload.so" ] || fail "A program is started with $ran"

# The pages' links lead somewhere.
lost=$(cd "$prefix/share/doc/kordanix" && for page in README.md docs/*.md; do
    grep -oE '\]\([^)#: ]+' "$page" | cut -c3- | while read -r link; do
        [ -e "${page%/*}/$link" ] || [ -e "$link" ] || echo "$page: $link"
    done
done)
[ -z "$lost" ] || fail "Links into the void:" "$lost"

# The demo finds its devices.
"$prefix/bin/kordanix-demo" --private --fixed-step --device mali-b31 --size 370x180 --seconds 1 --png "$work/out.png" \
    >"$work/log" 2>&1 || fail "$(cat "$work/log")"
[ -s "$work/out.png" ] || fail "The demo has drawn nothing"

# Whom an older binary needs: the library's own name has the version.
readelf -d "$lib/libKordanixCore.so" | grep -qE 'SONAME.*libKordanixCore\.so\.[0-9]+\.[0-9]+\]' ||
    fail "The library's name has no version"

# At home, with another prefix than the build was made for. The manual and the completions come along.
export HOME=$work/home
for component in overlay library development; do
    "$cmake" --install "$build" --prefix "$HOME/.local" --component $component >"$work/install.log" ||
        fail "$(cat "$work/install.log")"
done
unset XDG_DATA_HOME XDG_CONFIG_HOME XDG_CONFIG_DIRS XDG_DATA_DIRS
export PATH=$HOME/.local/bin:$PATH
"$source/tests/install/show_overlay.sh" "$work"
for shell in bash zsh fish; do
    "$source/tests/install/check_completions.sh" "$shell" "$HOME/.local/share"
done
warnings=$(groff -man -Tutf8 -ww -z "$HOME/.local/share/man/man1/kordanixctl.1" 2>&1)
[ -z "$warnings" ] || fail "The manual page:" "$warnings"
"$cmake" --build "$build" --target uninstall >"$work/log" 2>&1 || fail "$(cat "$work/log")"
left=$(find "$HOME/.local" ! -type d -o -name 'kordanix' -o -name KordanixCore)
[ -z "$left" ] || fail "After 'uninstall' there are still" "$left"
