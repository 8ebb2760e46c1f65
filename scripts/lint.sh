#!/usr/bin/env bash
# Checks the format of every source and runs clang-tidy over the library.
#   scripts/lint.sh                 reads the compile commands of build/clang, which must have been configured
#   scripts/lint.sh --all           clang-tidy over the platform, the layers, the tools and the demo as well
#   scripts/lint.sh --fix-format    mends the format, checks nothing
set -euo pipefail
cd "$(dirname "$0")/.."

folders=(src)
case "${1:-}" in
    "") ;;
    --all) folders=(src platform layers tools demo) ;;
    --fix-format) git ls-files '*.h' '*.cpp' | xargs clang-format -i; exit 0 ;;
    *) sed -n '2,5s/^# \{0,1\}//p' "$0" >&2; exit 2 ;;
esac

echo "Format of the sources"
git ls-files '*.h' '*.cpp' | xargs clang-format --dry-run -Werror

echo "clang-tidy: ${folders[*]}"
git ls-files "${folders[@]/%//*.cpp}" | xargs -P "$(nproc)" -n 2 clang-tidy --quiet -p build/clang 2>/dev/null
