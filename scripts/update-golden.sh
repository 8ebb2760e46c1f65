#!/usr/bin/env bash
# Takes over what the overlay looks like now as what the golden-picture test expects, in tests/layers/golden.
# Look at the pictures before committing them.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/install-dependencies.sh build test bench
echo "Building in build/release"
cmake --preset release >/dev/null
cmake --build --preset release --target golden_tests
KORDANIX_UPDATE_GOLDEN=1 build/release/bin/golden_tests --gtest_filter='*GoldenPicture*' --gtest_brief=1

echo
echo "The pictures, as git sees them:"
git status --short -- tests/layers/golden
