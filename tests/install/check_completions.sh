#!/usr/bin/env bash
# Asks a shell what it offers for some beginnings of kordanixctl's command line, and compares.
# Usage: check_completions.sh bash|zsh|fish DATA_FOLDER    the scripts are below the folder; kordanixctl is in PATH
set -euo pipefail
shell=$1 data=$2

cases=(  # a beginning, and the only word that completes it
    'kordanixctl pict' picture
    'kordanixctl --process 1 key d' dump
    'kordanixctl doctor --js' --json
    'kordanixctl set widget_memory_pos' widget_memory_position
    'kordanixctl set --force scale 1 widget_memory tr' true
    'kordanixctl get widget_memory_pos' widget_memory_position
    'kordanixctl run --set widget_fps_position=TOP_R' TOP_RIGHT
    'kordanixctl run -- kordanixctl.no' kordanixctl.nowhere
    'kordanixctl run --preset sm' small
    'kordanixctl profile edit glxg' glxgears
    'kordanixctl help rese' reset
    'kordanixctl android --print com.example.game doc' doctor
)

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir "$work/kordanix"
touch "$work/kordanix/glxgears.conf"
printf '#!/bin/sh\n' >"$work/kordanixctl.nowhere"
chmod +x "$work/kordanixctl.nowhere"
export PATH=$work:$PATH HOME=$work XDG_CONFIG_HOME=$work XDG_DATA_HOME=$data TERM=dumb

ask_bash() {
    bash --norc -c '
        source "$1"
        compopt() { :; }
        COMP_WORDS=(${2//=/ = })
        COMP_CWORD=$((${#COMP_WORDS[@]} - 1))
        _kordanixctl && printf "%s\n" "${COMPREPLY[@]}"' - "$data/bash-completion/completions/kordanixctl" "$1"
}

ask_fish() {
    fish -c 'complete -C "$argv[1]"' "$1" | cut -f 1 | sed 's/.*=//'
}

# A shell of its own types the line and the tab; a function in place of compadd tells what is offered.
ask_zsh() {
    cat >"$work/setup" <<END
PROMPT=
fpath=('$data/zsh/site-functions' \$fpath)
autoload -U compinit && compinit -u -d '$work/dump'
bindkey '^I' complete-word
compadd() {
    local -a offers
    [[ \${@[1,(i)(-|--)]} == *-(O|A|D)\ * ]] && { builtin compadd "\$@"; return }
    builtin compadd -A offers "\$@"
    (( \$#offers )) && print -l '' "offer "\${^offers}
}
comppostfuncs=(finish)
finish() { print -l '' finished }
print re''ady
END
    zsh -f -c '
        zmodload zsh/zpty
        zpty shell zsh -f -i
        zpty -w shell "source $1"
        while zpty -r shell line && [[ $line != *ready* ]]; do; done
        zpty -w -n shell "$2"$'"'\t'"'
        while zpty -r shell line && [[ $line != *finished* ]]; do print -r -- $line; done' - "$work/setup" "$1" |
        tr -d '\r' | sed -n 's/^offer //p' | sort -u
}

for ((i = 0; i < ${#cases[@]}; i += 2)); do
    offered=$(timeout 30 bash -c "$(declare -f "ask_$shell"); data='$data' work='$work' ask_$shell \"\$1\"" \
        - "${cases[i]}")
    [ "$offered" = "${cases[i + 1]}" ] || {
        echo "$shell: '${cases[i]}' is completed by '$offered', not '${cases[i + 1]}'" >&2
        exit 1
    }
done
