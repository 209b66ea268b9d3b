# bash completion for zanfe. Commands and options come from `zanfe --help`; table and type
# names, path segments and key names from the front-end library itself, through
# `zanfe tables`, `zanfe types` and `zanfe ls` ("*" for the segments that may follow a path,
# "NAME[*]" for the key of a segment). The --lib, --db and --fail given on the line are
# passed on, so that the answers come from the library and configuration the command uses.

_zanfe() {
    # The line is split here at blanks only: bash also splits its words at '=' and ':', which
    # paths contain, and replaces only what follows the last such break (COMP_WORDS[COMP_CWORD]).
    local line=${COMP_LINE:0:COMP_POINT}
    local -a parts
    read -ra parts <<<"$line"
    local cur=""
    [[ $line =~ [[:space:]]$ ]] || { cur=${parts[-1]}; unset 'parts[-1]'; }
    cur=${cur#[\'\"]}
    local zanfe=${parts[0]} word=${COMP_WORDS[COMP_CWORD]} before=${parts[-1]}
    local help
    help=$("$zanfe" --help 2>/dev/null) || return
    # The options that take a value: those the help shows with one ("--kind N").
    local valued
    valued=" $(awk '/^ +--[a-z0-9-]+ [A-Z]/ { printf "%s ", $1 }' <<<"$help")"
    local -a global=() words=()
    local command="" i w prev=""
    # The command, its words so far, and the options that choose library and configuration.
    for ((i = 1; i < ${#parts[@]}; i++)); do
        w=${parts[i]}
        if [ -n "$prev" ]; then
            case "$prev" in --lib|--db|--fail) global+=("$prev" "$w") ;; esac
            prev=""
            continue
        fi
        case "$w" in
            --lib=*|--db=*|--fail=*) global+=("$w") ;;
            -*) [[ $valued == *" $w "* ]] && prev=$w ;;
            *) if [ -z "$command" ]; then command=$w; else words+=("$w"); fi ;;
        esac
    done
    [ ${#parts[@]} -gt 1 ] || before=""
    case "$before" in
        --lib|--db) COMPREPLY=($(compgen -f -- "$cur")); return ;;
    esac
    if [[ $before == -* && $valued == *" $before "* ]]; then
        COMPREPLY=()   # values are not guessed
        return
    fi

    if [[ $cur == -* ]]; then
        # The global options, and those listed under the command.
        local options
        options=$(awk -v cmd="$command" '
            /^commands:/ { section = "commands"; next }
            /^options:/ { section = "options"; next }
            section == "commands" && /^  [a-z]/ { current = $1; next }
            section == "commands" && /^      --/ && current == cmd { print $1 }
            section == "options" && /^  -/ { sub(/^-h,/, "", $1); print $1 }' <<<"$help")
        COMPREPLY=($(compgen -W "$options" -- "$cur"))
        return
    fi
    if [ -z "$command" ]; then
        COMPREPLY=($(compgen -W "$(sed -n '/^commands:/,/^$/s/^  \([a-z]\+\).*/\1/p' <<<"$help")" -- "$cur"))
        return
    fi

    local -a candidates=()
    case "$command" in
        columns)
            candidates=($("$zanfe" "${global[@]}" tables 2>/dev/null | cut -f2 | grep -v '^-$')) ;;
        type)
            [ ${#words[@]} -eq 0 ] && candidates=($("$zanfe" "${global[@]}" types 2>/dev/null | cut -f2)) ;;
        resolve|ls|get|key)
            [ ${#words[@]} -eq 0 ] || return
            local head="" last=$cur
            if [[ $cur == */* ]]; then head=${cur%/*}/; last=${cur##*/}; fi
            if [[ $last == *\[* && $last != *\]* ]]; then
                # Inside a segment's brackets: the names of its key.
                local segment=${last%%\[*} keys=${last#*\[}
                local done_keys=""
                [[ $keys == *,* ]] && done_keys=${keys%,*},
                local k
                for k in $("$zanfe" "${global[@]}" ls -- "$head$segment[*]" 2>/dev/null); do
                    candidates+=("$head$segment[$done_keys$k=")
                done
            else
                local s
                for s in $("$zanfe" "${global[@]}" ls -- "$head*" 2>/dev/null); do
                    candidates+=("$head$s")
                done
            fi
            compopt -o nospace 2>/dev/null ;;
    esac
    # Only the part after bash's last word break is replaced.
    local cut=$((${#cur} - ${#word}))
    local c
    COMPREPLY=()
    for c in "${candidates[@]}"; do
        [[ $c == "$cur"* ]] && COMPREPLY+=("${c:cut}")
    done
}
complete -F _zanfe zanfe
