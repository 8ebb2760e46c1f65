#!/usr/bin/env bash
# Counts the instructions that a frame costs, kernel left out, and holds them against tests/budget/budgets.txt:
# fails when a scenario costs over 3 % more than its budget. Usage: scripts/budget.sh [--renew]
#   --renew   writes what was counted into the file instead: after a change that is worth its cost, or that
#             saved something; say which in the commit
set -euo pipefail
cd "$(dirname "$0")/.."
budgets=tests/budget/budgets.txt
tolerance=3       # percent
frames=800        # enough for graphs that are full and for every rhythm there is to come round

renew=no
case "${1:-}" in
    "") ;;
    --renew) renew=yes ;;
    -h | --help) sed -n '2,6s/^# \{0,1\}//p' "$0"; exit 0 ;;
    *) sed -n '2,6s/^# \{0,1\}//p' "$0" >&2; exit 2 ;;
esac
if [ "$(uname -m)" != x86_64 ]; then
    echo "Budgets are kept for x86-64 alone; nothing is checked on $(uname -m)."
    exit 0
fi
scripts/install-dependencies.sh build test
cmake --preset release -DBUILD_TESTING=ON >/dev/null
cmake --build --preset release --target budget_scenarios >/dev/null

program=$PWD/build/release/bin/budget_scenarios

# Instructions of a whole run, of the same code on every processor: the C library is not to choose functions for
# the instruction sets that this one happens to have.
plain=glibc.cpu.hwcaps=-AVX2,-AVX512F,-AVX,-FMA,-FMA4,-SSE4_2,-SSE4_1,-SSSE3,-ERMS,-FSRM,-BMI1,-BMI2
count() {
    local log
    log=$(cd tests/budget/machine && env -i PATH="$PATH" GLIBC_TUNABLES=$plain \
        valgrind --tool=callgrind --callgrind-out-file=/dev/null "$program" "$1" "$2" 2>&1) || { echo "$log" >&2; return 1; }
    sed -n 's/.*Collected : //p' <<<"$log"
}

failed=no
renewed=()
printf '%-10s %12s %12s %8s\n' scenario budget counted change
while read -r scenario budget; do
    case "$scenario" in "#"* | "") renewed+=("$scenario${budget:+ $budget}"); continue ;; esac
    # What the start costs is in both runs.
    read -r short long < <(paste <(count "$scenario" $frames) <(count "$scenario" $((2 * frames))))
    [ -n "$long" ] || exit 1  # and count has said why
    counted=$(((long - short + frames / 2) / frames))
    renewed+=("$scenario $counted")
    verdict=
    if [ $((counted * 100)) -gt $((budget * (100 + tolerance))) ]; then
        verdict="over its budget"
        failed=yes
    elif [ $((counted * 100)) -lt $((budget * (100 - tolerance))) ]; then
        verdict="well below: renew the budget, so that it stays"
    fi
    change=$(awk -v a="$counted" -v b="$budget" 'BEGIN { printf "%+.1f %%", b ? (a - b) * 100 / b : 0 }')
    printf '%-10s %12d %12d %8s  %s\n' "$scenario" "$budget" "$counted" "$change" "$verdict"
done <$budgets

if [ $renew = yes ]; then
    printf '%s\n' "${renewed[@]}" >$budgets
    echo "Written to $budgets."
elif [ $failed = yes ]; then
    echo "A frame costs more than its budget. If that is worth it: scripts/budget.sh --renew" >&2
    echo "(The budgets were counted with GCC 12; this is $(g++ --version | head -1).)" >&2
    exit 1
fi
