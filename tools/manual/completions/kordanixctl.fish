# Completion of kordanixctl's command line for fish. The build puts the table in its place.
set -g __kordanixctl_table (string split \n -- '@TABLE@')

# Prints the fields after those that are given, of the rows that begin with them.
function __kordanixctl_rows
    set -l start (string join '|' -- $argv)'|'
    for row in $__kordanixctl_table
        if test (string sub -l (string length -- $start) -- $row) = $start
            string sub -s (math (string length -- $start) + 1) -- $row
        end
    end
end

# Prints the words after the program's name, up to the one that is typed, without options and their values.
function __kordanixctl_words
    set -l awaited no
    set -l verb ''
    for word in (commandline -opc)[2..]
        if test $awaited = yes
            set awaited no
        else if string match -q -- '-*' $word
            for row in (__kordanixctl_rows option $verb; test -n "$verb"; and __kordanixctl_rows option '')
                set -l fields (string split '|' -- $row)
                if contains -- $word (string split ' ' -- $fields[1]); and test -n "$fields[2]"
                    set awaited yes
                end
            end
        else
            test -n "$verb"; or set verb $word
            printf '%s\n' $word
        end
    end
end

function __kordanixctl_is_verb
    set -l words (__kordanixctl_words)
    test (count $words) -gt 0; and test $words[1] = $argv[1]
end

# Whether the word that is typed is the verb's N-th; the last of its places takes all that follow.
function __kordanixctl_is_place
    __kordanixctl_is_verb $argv[1]; or return
    set -l place (count (__kordanixctl_words))
    set -l last (count (__kordanixctl_rows place $argv[1]))
    test $place -eq $argv[2]; or begin
        test $argv[2] -eq $last; and test $place -gt $last
    end
end

function __kordanixctl_properties
    for row in (__kordanixctl_rows property)
        set -l fields (string split '|' -- $row)
        printf '%s\t%s\n' "$fields[1]$argv[1]" $fields[3]
    end
end

function __kordanixctl_profiles
    set -l folder ~/.config
    test -n "$XDG_CONFIG_HOME"; and set folder $XDG_CONFIG_HOME
    for file in $folder/kordanix/*.conf
        string replace -r '^.*/(.*)\.conf$' '$1' -- $file
    end
end

function __kordanixctl_values
    set -l row (__kordanixctl_rows property (string replace -r '^debug\.kordanix\.' '' -- $argv[1]))
    test -n "$row"; and string split -n ' ' -- (string split '|' -- $row)[1]
end

function __kordanixctl_pairs
    set -l words (__kordanixctl_words)
    if test (math (count $words) % 2) -eq 1
        __kordanixctl_properties
    else
        __kordanixctl_values $words[-1]
    end
end

function __kordanixctl_assignment
    set -l name (string match -r '^[^=]+(?==)' -- (string replace -r '^--[a-z-]+=' '' -- (commandline -ct)))
    if test -n "$name"
        printf "$name=%s\n" (__kordanixctl_values $name)
    else
        __kordanixctl_properties =
    end
end

# Completes the program of 'run', and then its arguments as if it stood alone.
function __kordanixctl_program
    set -l words (commandline -opc)
    set -l before 1
    set -l table_words (__kordanixctl_words)
    if test (count $table_words) -le 1
        __fish_complete_command
        return
    end
    for i in (seq 2 (count $words))
        if test "$words[$i]" = "$table_words[2]"
            set before $i
            break
        end
    end
    complete -C (string join ' ' -- (string escape -- $words[$before..]) (commandline -ct))
end

# Prints the arguments of 'complete' that offer a word of a kind.
function __kordanixctl_offer
    switch $argv[1]
        case file
            printf '%s\n' -F
        case folder
            printf '%s\n' -f -a '(__fish_complete_directories)'
        case process
            printf '%s\n' -f -a '(__fish_complete_pids)'
        case profile
            printf '%s\n' -f -a '(__kordanixctl_profiles)'
        case property
            printf '%s\n' -f -a '(__kordanixctl_properties)'
        case pairs
            printf '%s\n' -f -a '(__kordanixctl_pairs)'
        case assignment
            printf '%s\n' -f -a '(__kordanixctl_assignment)'
        case program
            printf '%s\n' -f -a '(__kordanixctl_program)'
        case '=*'
            printf '%s\n' -f -a (string sub -s 2 -- $argv[1])
        case '*'
            printf '%s\n' -f
    end
end

complete -c kordanixctl -f
set -l verb
set -l place 0
for row in $__kordanixctl_table
    set -l fields (string split '|' -- $row)
    switch $fields[1]
        case verb
            complete -c kordanixctl -n 'test (count (__kordanixctl_words)) -eq 0' -a $fields[2] -d $fields[3]
        case option
            set -l arguments -d $fields[5]
            test -n "$fields[2]"; and set -a arguments -n "__kordanixctl_is_verb $fields[2]"
            for name in (string split ' ' -- $fields[3])
                switch $name
                    case '--*'
                        set -a arguments -l (string sub -s 3 -- $name)
                    case '*'
                        set -a arguments -s (string sub -s 2 -- $name)
                end
            end
            test -n "$fields[4]"; and set -a arguments -r (__kordanixctl_offer $fields[4])
            complete -c kordanixctl $arguments
        case place
            test "$verb" = $fields[2]; or set place 0
            set verb $fields[2]
            set place (math $place + 1)
            complete -c kordanixctl -n "__kordanixctl_is_place $verb $place" (__kordanixctl_offer $fields[3])
    end
end
