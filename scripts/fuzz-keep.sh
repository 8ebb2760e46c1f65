#!/usr/bin/env bash
# After scripts/fuzz.sh: takes over into fuzz/corpus/TARGET, from what the runs have gathered, the inputs that
# reach most code beyond that of the inputs already there, up to 40 files and 100,000 bytes in a folder.
# Usage: scripts/fuzz-keep.sh [TARGET...]   (default: all targets)
set -euo pipefail
cd "$(dirname "$0")/.."

build=build/fuzz
targets=("$@")
[ $# -gt 0 ] || mapfile -t targets < <(scripts/fuzz.sh --list)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

for target in "${targets[@]}"; do
    kept=fuzz/corpus/$target
    rm -rf "${work:?}"/*
    mkdir "$work/merged"
    # The fuzzer's own choice is far too large, but its notes tell for each input which features it has: numbers
    # in rising order, eight for a place in the code, by how often the place is passed.
    "$build/bin/fuzz_$target" -set_cover_merge=1 -merge_control_file="$work/notes" \
        "$work/merged" "$kept" "$build/corpus/$target" >"$work/log" 2>&1 || { tail -n 3 "$work/log" >&2; exit 1; }
    awk -v kept="$kept/" -v old="$(ls "$kept" | wc -l)" -v most_files=40 -v most_bytes=100000 '
        NR == 1 { files = $1; next }
        NR == 2 { next }
        NR <= files + 2 { name[NR - 3] = $0; next }
        $1 == "STARTED" { size[$2] = $3; next }
        $1 == "FT" {
            last = -1
            for (i = 3; i <= NF; ++i) {
                if (int($i / 8) != last) places[1, $2] = places[1, $2] " " int($i / 8)
                last = int($i / 8)
                places[2, $2] = places[2, $2] " " $i
            }
        }
        function gain(file,    list, count, i, sum) {
            count = split(places[step, file], list, " ")
            for (i = 1; i <= count; ++i) if (!(list[i] in seen)) ++sum
            return sum + 0
        }
        function take(file,    list, count, i) {
            count = split(places[step, file], list, " ")
            for (i = 1; i <= count; ++i) seen[list[i]] = 1
        }
        END {
            for (file = 0; file < files; ++file) {
                if (index(name[file], kept) == 1) { taken[file] = 1; bytes += size[file] }
            }
            chosen = old
            # First places in the code, then how often they are passed.
            for (step = 1; step <= 2; ++step) {
                split("", seen)
                for (file in taken) take(file)
                while (chosen < most_files) {
                    best = -1; most = 0
                    for (file = 0; file < files; ++file) {
                        if ((file in taken) || bytes + size[file] > most_bytes) continue
                        value = gain(file)
                        if (value > most || (value == most && best >= 0 && size[file] < size[best])) {
                            best = file; most = value
                        }
                    }
                    if (best < 0) break
                    taken[best] = 1; ++chosen; bytes += size[best]; take(best)
                    print name[best]
                }
            }
        }' "$work/notes" >"$work/list"
    while read -r input; do cp "$input" "$kept/"; done <"$work/list"
    echo "$target: $(wc -l <"$work/list") inputs taken over, now $(ls "$kept" | wc -l)"
done
