#!/usr/bin/env bash
# Builds everything and runs every test.
#   scripts/test.sh            all of it: GCC, clang, both sanitizer builds, a hardened build and its packages, format, lint, budgets
#   scripts/test.sh --quick    one debug build with GCC and its tests, without the slow ones
#   scripts/test.sh --arm      32-bit ARM with GCC and with clang, run by QEMU
#   scripts/test.sh --only P   one preset: release, debug, asan, tsan, clang, arm or arm-clang
set -euo pipefail
cd "$(dirname "$0")/.."

usage() { sed -n '2,6s/^# \{0,1\}//p' "$0"; }

presets=(release clang asan tsan)
everything=yes
quick=no
case "${1:-}" in
    "") ;;
    --quick) presets=(debug); everything=no; quick=yes ;;
    --arm) presets=(arm arm-clang); everything=no ;;
    --only) presets=("${2:?--only needs the name of a preset}"); everything=no ;;
    -h | --help) usage; exit 0 ;;
    *) usage >&2; exit 2 ;;
esac

started=$SECONDS
packages=(build test bench apk)
[[ ${presets[*]} != *arm* ]] || packages+=(arm)
[ "$(uname -m)" != x86_64 ] || packages+=(32bit)
scripts/install-dependencies.sh "${packages[@]}"

# Leaks are part of what the address sanitizer reports; a thread sanitizer finding fails the test.
export ASAN_OPTIONS=detect_leaks=1:strict_string_checks=1:detect_stack_use_after_return=1
export UBSAN_OPTIONS=print_stacktrace=1
export TSAN_OPTIONS=halt_on_error=1

for preset in "${presets[@]}"; do
    echo
    echo "== $preset: building in build/$preset"
    cmake --preset "$preset" -DBUILD_TESTING=ON >/dev/null
    cmake --build --preset "$preset"
    if [ "$preset" = release ] && [ "$(uname -m)" = x86_64 ]; then
        echo "== linux32: building in build/linux32"
        # As quickly as it goes: the tests load it and measure nothing.
        cmake --preset linux32 -DCMAKE_BUILD_TYPE=Debug -DCMAKE_CXX_FLAGS_DEBUG=-O1 >/dev/null
        cmake --build --preset linux32
    fi
    echo "== $preset: testing"
    run=(ctest --preset "$preset" -j "$(nproc)")
    if [ "$quick" = yes ]; then
        "${run[@]}" -LE 'slow|outruns'
    elif [[ $preset == *san ]]; then
        "${run[@]}"
    else
        "${run[@]}" -LE outruns
        # These kill and outrun other processes: one that fails may have met a busy machine and is asked once more.
        # CTest prints both answers.
        "${run[@]}" -L outruns --repeat until-pass:2
    fi
done

if [ "$everything" = yes ]; then
    if [ "$(uname -m)" = x86_64 ]; then
        echo
        echo "== hardened: building in build/hardened"
        cmake --preset hardened >/dev/null
        cmake --build --preset hardened
        echo
        echo "== packages"
        scripts/package-test.sh build/hardened
    fi
    echo
    echo "== lint"
    scripts/lint.sh
    echo
    echo "== instructions a frame"
    scripts/budget.sh
fi

echo
echo "All tests passed (${presets[*]}) in $((SECONDS - started)) seconds."
