# Completion of kordanixctl's command line for bash. The build puts the table in its place.
_kordanixctl_table='@TABLE@'

# Prints the fields after those that are given, of the rows that begin with them.
_kordanixctl_rows() {
    local start
    printf -v start '%s|' "$@"
    while IFS= read -r row; do
        [[ $row != "$start"* ]] || printf '%s\n' "${row#"$start"}"
    done <<<"$_kordanixctl_table"
}

# Prints the options of a verb, and those that every verb takes.
_kordanixctl_options() {
    [[ ! $1 ]] || _kordanixctl_rows option "$1"
    _kordanixctl_rows option ''
}

# Prints what follows an option of a verb; nothing for a flag.
_kordanixctl_kind_of_option() {
    local names kind meaning
    while IFS='|' read -r names kind meaning; do
        [[ " $names " != *" $2 "* ]] || printf '%s' "$kind"
    done < <(_kordanixctl_options "$1")
}

_kordanixctl_values() {
    local values meaning
    IFS='|' read -r values meaning < <(_kordanixctl_rows property "${1#debug.kordanix.}") || true
    printf '%s' "$values"
}

_kordanixctl_names() { _kordanixctl_rows property | cut -d '|' -f 1; }

_kordanixctl_profiles() {
    local file
    for file in "${XDG_CONFIG_HOME:-$HOME/.config}"/kordanix/*.conf; do
        file=${file##*/}
        [[ $file == '*.conf' ]] || printf '%s\n' "${file%.conf}"
    done
}

# Offers what a word of that kind may be. $1: kind, $2: what is typed of it, $3: the word before it.
_kordanixctl_offer() {
    local kind=$1 typed=$2 before=$3
    case $kind in
        file) compopt -o filenames; mapfile -t COMPREPLY < <(compgen -f -- "$typed") ;;
        folder) compopt -o filenames; mapfile -t COMPREPLY < <(compgen -d -- "$typed") ;;
        process) mapfile -t COMPREPLY < <(compgen -W "$(ps -o pid= -u "$UID")" -- "$typed") ;;
        profile) mapfile -t COMPREPLY < <(compgen -W "$(_kordanixctl_profiles)" -- "$typed") ;;
        property) mapfile -t COMPREPLY < <(compgen -W "$(_kordanixctl_names)" -- "$typed") ;;
        value) mapfile -t COMPREPLY < <(compgen -W "$(_kordanixctl_values "$before")" -- "$typed") ;;
        assignment)
            if [[ $typed == *=* ]]; then  # bash completes the part after the sign as a word of its own
                _kordanixctl_offer value "${typed#*=}" "${typed%%=*}"
            else
                compopt -o nospace
                mapfile -t COMPREPLY < <(compgen -W "$(_kordanixctl_names)" -S = -- "$typed")
            fi ;;
        =*) mapfile -t COMPREPLY < <(compgen -W "${kind#=}" -- "$typed") ;;
    esac
}

# The program of 'run' completes by itself. $1: where it stands among the words.
_kordanixctl_program() {
    if declare -F _command_offset >/dev/null; then
        _command_offset "$1"
    elif ((COMP_CWORD == $1)); then
        mapfile -t COMPREPLY < <(compgen -c -- "${COMP_WORDS[COMP_CWORD]}")
    else
        compopt -o filenames
        mapfile -t COMPREPLY < <(compgen -f -- "${COMP_WORDS[COMP_CWORD]}")
    fi
}

_kordanixctl() {
    local verb='' awaited='' place=0 i=1 word last='' kinds
    COMPREPLY=()
    # The words before the one that is typed; "NAME", "=", "VALUE" are one.
    while ((i <= COMP_CWORD)); do
        local at=$i
        word=${COMP_WORDS[i++]}
        while [[ $word != -* || $word == --?* ]] && ((i <= COMP_CWORD)) && [[ ${COMP_WORDS[i]} == '=' ]]; do
            word+='='
            ((++i <= COMP_CWORD)) && word+=${COMP_WORDS[i++]}
        done
        ((i <= COMP_CWORD)) || break
        if [[ $awaited ]]; then
            awaited=''
        elif [[ $verb == run && ($word == -- || $word != -*) ]]; then
            [[ $word != -- ]] || at=$i
            _kordanixctl_program "$at"
            return
        elif [[ $word == -* ]]; then
            [[ $word == *=* ]] || awaited=$(_kordanixctl_kind_of_option "$verb" "$word")
        elif [[ ! $verb ]]; then
            verb=$word
        else
            place=$((place + 1))
            last=$word
        fi
    done

    if [[ $awaited ]]; then
        _kordanixctl_offer "$awaited" "$word" ''
    elif [[ $word == --*=* ]]; then
        _kordanixctl_offer "$(_kordanixctl_kind_of_option "$verb" "${word%%=*}")" "${word#*=}" ''
    elif [[ $word == -* ]]; then
        mapfile -t COMPREPLY < <(compgen -W "$(_kordanixctl_options "$verb" | cut -d '|' -f 1)" -- "$word")
    elif [[ ! $verb ]]; then
        mapfile -t COMPREPLY < <(compgen -W "$(_kordanixctl_rows verb | cut -d '|' -f 1)" -- "$word")
    else
        mapfile -t kinds < <(_kordanixctl_rows place "$verb" | cut -d '|' -f 1)
        local kind=''
        ((${#kinds[@]} == 0)) || kind=${kinds[place < ${#kinds[@]} ? place : ${#kinds[@]} - 1]}
        case $kind in
            pairs) ((place % 2)) && kind=value || kind=property ;;
            program) _kordanixctl_program "$COMP_CWORD"; return ;;
        esac
        _kordanixctl_offer "$kind" "$word" "$last"
    fi
}
complete -F _kordanixctl kordanixctl
