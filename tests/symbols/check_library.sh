#!/usr/bin/env bash
# Checks one promise of the library on the file that was built. Prints what breaks it, and fails.
#   check_library.sh CHECK LIBRARY        with READELF (and STRIP) in the environment
set -euo pipefail
export LC_ALL=C
here=$(dirname "$0")
check=$1
library=$2
readelf=${READELF:-readelf}

# The lines of a list without its comments.
list() { grep -Ev '^(#|$)' "$here/$1"; }

# Dynamic symbols, one a line: address, type, section number or UND, name without its version.
symbols() {
    "$readelf" --wide --dyn-syms "$@" "$library" |
        awk '$1 ~ /^[0-9]+:$/ && $8 != "" {
                 name = $8
                 for (i = 9; i <= NF; ++i) name = name " " $i
                 sub(/@.*/, "", name)
                 print $2, $4, $7, name
             }'
}
imports() { symbols --demangle | awk '$3 == "UND"' | cut -d ' ' -f 4- | sort -u; }
exports() { symbols "$@" | awk '$3 != "UND" && $3 != "ABS" && $2 != "SECTION"' | sort -u; }

# Exported objects that stay writable: in a writable section, and not in the part that the loader protects.
writable_exports() {
    local start=0 end=0 sections
    read -r start end < <("$readelf" --wide --program-headers "$library" |
        awk '$1 == "GNU_RELRO" { print $3, $6 }') || true
    end=$((start + end))
    sections=" $("$readelf" --wide --sections "$library" |
        sed -nE 's/^ *\[ *([0-9]+)\] +[^ ]+ +(PROGBITS|NOBITS|[A-Z_]+) +[0-9a-f]+ +[0-9a-f]+ +[0-9a-f]+ +[0-9a-f]+ +([A-Z]*W[A-Z]*) .*/\1/p' |
        tr '\n' ' ')"
    exports --demangle | while read -r address type section name; do
        if [[ $type =~ ^(OBJECT|TLS)$ && $sections == *" $section "* ]] &&
            ((16#$address < start || 16#$address >= end)); then
            echo "$name"
        fi
    done | sort -u
}

# Fails if there are any lines on standard input.
none() {
    if grep .; then
        echo "$library: $1" >&2
        return 1
    fi
}

case $check in
    imports) imports | { grep -Evxf <(list allowed_imports.txt) || true; } |
        none "imports what is not in allowed_imports.txt" ;;
    manners) imports | { grep -Exf <(list forbidden_imports.txt) || true; } |
        none "imports what a guest in a process does not call" ;;
    exports) exports | cut -d ' ' -f 4- | { grep -Evxf <(list allowed_exports.txt) || true; } |
        none "exports what is not its own" ;;
    data) diff <(list writable_data.txt | sort) <(writable_exports) |
        none "its writable exports (>) are not those of writable_data.txt (<)" ;;
    loading)
        {
            dynamic=$("$readelf" --wide --dynamic "$library")
            grep -q 'FLAGS_1.*NODELETE' <<<"$dynamic" || echo "can be unloaded under its watcher thread"
            grep 'TEXTREL' <<<"$dynamic" || true
            grep -oE 'NEEDED.*\[.*\]' <<<"$dynamic" | { grep -Ev \
                '\[(libkordanix_platform|libostra|libstdc\+\+|libm|libgcc_s|libc|ld-linux[-a-z0-9_]*)\.so[.0-9]*\]' ||
                true; }
            "$readelf" --wide --program-headers "$library" | grep -E 'GNU_STACK.*E' || true
        } | none "is not loaded as it has to be" ;;
    size)
        stripped=$(mktemp)
        trap 'rm -f "$stripped"' EXIT
        "${STRIP:-strip}" -o "$stripped" "$library"
        size=$(stat -c %s "$stripped")
        echo "stripped: $size bytes of at most $((160 * 1024))"
        ((size <= 160 * 1024)) ;;
    *) echo "unknown check '$check'" >&2; exit 2 ;;
esac
