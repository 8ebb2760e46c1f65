#!/usr/bin/env bash
# Measures what the library costs and prints a table of the figures against their targets; with "opengl" or
# "vulkan", what the overlay costs such a program, beside other overlays; with "sources", what each figure of
# the machine costs the thread that reads it.
# Usage: scripts/bench.sh [options of Google Benchmark, e.g. --benchmark_filter=Hooks]
#        scripts/bench.sh sources
#        scripts/bench.sh opengl|vulkan [options of kordanix-overlay-bench, see --help]
set -euo pipefail
cd "$(dirname "$0")/.."

build() {
    echo "Building in build/release: $*" >&2
    cmake --preset release -DKORDANIX_BENCH=ON >/dev/null
    cmake --build --preset release --target "$@" >/dev/null
}

if [ "${1-}" = opengl ] || [ "${1-}" = vulkan ]; then
    scripts/install-dependencies.sh build test opengl-bench
    build kordanix-overlay-bench "kordanix-$1-client" kordanixctl kordanix_opengl kordanix_preload kordanix_vulkan
    display=$(mktemp)
    # A server that starts afresh whenever the last program leaves would now and then refuse the next one.
    Xvfb -displayfd 3 -screen 0 1920x1080x24 -nolisten tcp -noreset 3>"$display" 2>/dev/null &
    server=$!
    trap 'kill "$server"; rm -f "$display"' EXIT
    until [ -s "$display" ]; do
        kill -0 "$server" 2>/dev/null || { echo "Xvfb did not start" >&2; exit 1; }
        sleep 0.1
    done
    echo "Measuring, some fifteen minutes; files of the runs: build/bench-$1" >&2
    DISPLAY=:$(cat "$display") build/release/bin/kordanix-overlay-bench "$@"
    exit
fi

if [ "${1-}" = sources ]; then
    scripts/install-dependencies.sh build bench
    build kordanix-sources-bench
    exec build/release/bin/kordanix-sources-bench tests/figures/machines
fi

scripts/install-dependencies.sh build bench
build kordanix-bench
echo "Measuring, some two minutes" >&2
exec build/release/bin/kordanix-bench "$@"
