#!/usr/bin/env bash
# Measures what the library costs and prints a table of the figures against their targets.
# Usage: scripts/bench.sh [options of Google Benchmark, e.g. --benchmark_filter=Hooks]
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/install-dependencies.sh build bench

echo "Building the benchmarks in build/release" >&2
cmake --preset release -DKORDANIX_BENCH=ON >/dev/null
cmake --build --preset release --target kordanix-bench >/dev/null
echo "Measuring, some two minutes" >&2
exec build/release/bin/kordanix-bench "$@"
