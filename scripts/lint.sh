#!/usr/bin/env bash
# Checks the format of every source and runs clang-tidy. Usage: scripts/lint.sh [--fix-format] [BUILD_DIR]
# BUILD_DIR (default build/clang) must have been configured: its compile commands are read.
set -euo pipefail
cd "$(dirname "$0")/.."

if [ "${1:-}" = --fix-format ]; then
    git ls-files '*.h' '*.cpp' | xargs clang-format -i
    exit 0
fi
build=${1:-build/clang}

echo "Format of the sources"
git ls-files '*.h' '*.cpp' | xargs clang-format --dry-run -Werror

echo "clang-tidy"
git ls-files 'src/*.cpp' 'platform/*.cpp' 'layers/*.cpp' 'tools/*.cpp' 'demo/*.cpp' |
    xargs -P "$(nproc)" -n 2 clang-tidy --quiet -p "$build" 2>/dev/null
