#!/usr/bin/env bash
# Feeds the fuzz targets with inputs that it makes up, one target after the other. A finding ends the run of its
# target; the input lies in build/fuzz/findings/TARGET then. Inputs that reach new code are kept in
# build/fuzz/corpus/TARGET for the next run; those in fuzz/corpus/TARGET are always among its first.
# Usage: scripts/fuzz.sh [SECONDS_PER_TARGET] [TARGET...]   (default: 600 seconds, all targets)
#        scripts/fuzz.sh --list                             (the names of the targets)
set -euo pipefail
cd "$(dirname "$0")/.."

all=$(sed -n "s/^ *kordanix_add_fuzzer(\([a-z_]*\).*/\1/p" fuzz/CMakeLists.txt)
seconds=600
case "${1:-}" in
    --list) echo "$all"; exit 0 ;;
    -h | --help) sed -n '2,6s/^# \{0,1\}//p' "$0"; exit 0 ;;
    [0-9]*) seconds=$1; shift ;;
esac
targets=("$@")
[ $# -gt 0 ] || mapfile -t targets <<<"$all"

scripts/install-dependencies.sh build test
echo "Building the fuzz targets in build/fuzz"
cmake --preset fuzz >/dev/null
cmake --build --preset fuzz

# Some targets write files for every input.
[ -n "${TMPDIR:-}" ] || [ ! -w /dev/shm ] || export TMPDIR=/dev/shm
export ASAN_OPTIONS=detect_leaks=1:strict_string_checks=1:detect_stack_use_after_return=1
export UBSAN_OPTIONS=print_stacktrace=1

found=()
for target in "${targets[@]}"; do
    corpus=build/fuzz/corpus/$target
    findings=build/fuzz/findings/$target
    log=build/fuzz/$target.log
    options=(-max_total_time="$seconds" -max_len=8192 -timeout=20 -rss_limit_mb=2048 -print_final_stats=1)
    [ ! -f "fuzz/dictionaries/$target.dict" ] || options+=(-dict="fuzz/dictionaries/$target.dict")
    mkdir -p "$corpus" "$findings"
    echo "$target: $seconds seconds"
    if build/fuzz/bin/fuzz_"$target" "${options[@]}" -artifact_prefix="$findings/" \
        "$corpus" "fuzz/corpus/$target" >"$log" 2>&1; then
        echo "  no finding, $(sed -n 's/^stat::number_of_executed_units: *//p' "$log") inputs"
    else
        found+=("$target")
        echo "  A FINDING, in $findings; what happened is at the end of $log"
    fi
done
[ ${#found[@]} -eq 0 ] || { echo "Findings in: ${found[*]}" >&2; exit 1; }
