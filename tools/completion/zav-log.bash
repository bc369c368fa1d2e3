# bash completion for zav-log                                              -*- shell-script -*-
# Completions come from --help, so that they match the installed program.

# Prints the first word of each line of a section: _zav_log_section HEADING PROGRAM [COMMAND]
_zav_log_section() {
    "${@:2}" --help 2>/dev/null |
        awk -v heading="$1" '/^[^ ]/ { inside = $0 == heading ":" } inside && /^  [a-z]/ { print $1 }'
}

# Prints a line for each option of a command, or of the program alone: its names, then its argument, if any.
_zav_log_options() {
    "$@" --help 2>/dev/null | sed -nE 's/^  (-[^ ]+)( ([^ ]+))?.*/\1 \3/p' | tr ',' ' '
}

# Completes a level, in upper or lower case.
_zav_log_level() {
    local levels="AUDIT ERROR WARNING INFO DEBUG TRACE"
    [[ $1 == [a-z]* ]] && levels=${levels,,}
    COMPREPLY=($(compgen -W "$levels" -- "$1"))
}

# Completes the argument of an option. Fails if the option takes none, or if there is no such option.
_zav_log_argument() {
    local option=$1 current=$2 argument
    argument=$(awk -v option="$option" '{ for (i = 1; i <= NF; ++i) if ($i == option && $NF !~ /^-/) print $NF }')
    case $argument in
    '') return 1 ;;
    *'|'*) COMPREPLY=($(compgen -W "${argument//|/ }" -- "$current")) ;;
    LEVEL) _zav_log_level "$current" ;;
    FILE) compopt -o default ;;
    esac
}

_zav_log() {
    local program=$1 current=$2 previous=$3 command=${COMP_WORDS[1]} options
    COMPREPLY=()
    if [ "$COMP_CWORD" -eq 1 ]; then
        options=$(_zav_log_options "$program" | tr ' ' '\n' | grep '^-')
        COMPREPLY=($(compgen -W "$(_zav_log_section Subcommands "$program") $options" -- "$current"))
        return
    fi
    options=$(_zav_log_options "$program" "$command")
    if _zav_log_argument "$previous" "$current" <<<"$options"; then
        return
    fi
    if [[ $current == -* ]]; then
        COMPREPLY=($(compgen -W "$(tr ' ' '\n' <<<"$options" | grep '^-')" -- "$current"))
    elif [ "$command $COMP_CWORD" = "ctl 3" ]; then
        COMPREPLY=($(compgen -W "$(_zav_log_section requests "$program" ctl)" -- "$current"))
    elif [ "$command $COMP_CWORD" = "explain 4" ] || [ "$command $COMP_CWORD ${COMP_WORDS[3]}" = "ctl 5 level" ]; then
        _zav_log_level "$current"
    else
        compopt -o default
    fi
}

complete -F _zav_log zav-log
