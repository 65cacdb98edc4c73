# Completion of qxp for bash: source this file. The commands and options are those that --help lists.

# _qxp_options QXP [COMMAND]: the options of qxp, or of a command.
_qxp_options() {
    "$@" --help 2>/dev/null | sed -n 's/^  \(-[^ ]*\).*/\1/p' | tr ',' '\n'
}
# _qxp_commands QXP: the commands.
_qxp_commands() {
    "$1" --help 2>/dev/null | sed -n '/^Commands:/,/^$/s/^  \([a-z]*\) .*/\1/p'
}

_qxp() {
    local program=${COMP_WORDS[0]} current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]}
    local words=
    COMPREPLY=()
    if [ "$COMP_CWORD" -eq 1 ]; then
        words="$(_qxp_commands "$program") $(_qxp_options "$program")"
    elif [[ $current == -* ]]; then
        words=$(_qxp_options "$program" "${COMP_WORDS[1]}")
    else
        case $previous in
        --color) words='always auto never' ;;
        -C | --dir) mapfile -t COMPREPLY < <(compgen -d -- "$current") && return ;;
        -D | --define | -U | --undef | --remove) return ;;
        *) mapfile -t COMPREPLY < <(compgen -f -- "$current") && return ;;
        esac
    fi
    mapfile -t COMPREPLY < <(compgen -W "$words" -- "$current")
}

complete -o filenames -F _qxp qxp
