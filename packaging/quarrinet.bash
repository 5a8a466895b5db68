# Bash completion for quarrinet: its commands, the structure types behind /type, and response files.
_quarrinet() {
    local word=$2 previous=$3 prefix=/ name given candidates=()
    COMPREPLY=()
    if [[ $word == @* ]]; then
        # Within quotes the shell closes them behind a file's name. Elsewhere it would quote the '@' too, so blanks and
        # their like are quoted here.
        local quoted=
        [[ ${COMP_WORDS[COMP_CWORD]} != [\"\']* ]] || quoted=yes
        [[ -z $quoted ]] || compopt -o filenames 2>/dev/null
        while IFS= read -r name; do
            [[ ! -d $name ]] || name+=/
            [[ -n $quoted ]] || printf -v name %q "$name"
            COMPREPLY+=("@$name")
        done < <(word=${word//\\/}; compgen -f -- "${word#@}")
        [[ ${#COMPREPLY[@]} -ne 1 || ${COMPREPLY[0]} != */ ]] || compopt -o nospace 2>/dev/null
        return
    fi
    if [[ ${previous,,} == [/-]type ]]; then
        mapfile -t COMPREPLY < <(compgen -W "{0..42} 126 127" -- "$word")
        [[ $word == '' || ${#COMPREPLY[@]} -gt 0 ]] && return
    fi
    [[ $word == -* ]] && prefix=-
    for name in b eps type nologo help; do
        for given in "${COMP_WORDS[@]:1:COMP_CWORD-1}"; do
            [[ ${given,,} == [/-]"$name" ]] && continue 2
        done
        candidates+=("$prefix$name")
    done
    mapfile -t COMPREPLY < <(compgen -W "${candidates[*]}" -- "$word")
}
complete -F _quarrinet quarrinet Quarrinet

# Behind export and env, the values of quarrinet's variables; whatever else stands there is completed as it
# was before. An assignment before a command is bash's own matter.
declare -gA _quarrinet_before
_quarrinet_variable() {
    local at=$COMP_CWORD word=$2 values
    [[ ${COMP_WORDS[at]} == = ]] && word= || ((--at))
    if [[ ${COMP_WORDS[at]} == = ]]; then
        case ${COMP_WORDS[at - 1]} in
            QUARRINET_FORMAT) values='json text' ;;
            QUARRINET_WHOLE) values='1 0' ;;
            QUARRINET_MACHINE) values='host sample sample-server' ;;
        esac
    fi
    if [[ -n $values ]]; then
        mapfile -t COMPREPLY < <(compgen -W "$values" -- "$word"; [[ $values != host* ]] || compgen -f -- "$word")
    elif [[ -n ${_quarrinet_before[$1]} ]]; then
        "${_quarrinet_before[$1]}" "$@"
    elif [[ $1 == export && ${COMP_WORDS[at]} != = ]]; then
        compopt -o nospace
        mapfile -t COMPREPLY < <(compgen -v -S = -- "$word")
    fi
}
for _quarrinet_command in export env; do
    [[ $(complete -p $_quarrinet_command 2>/dev/null) =~ \ -F\ ([^ ]+)\  ]] || BASH_REMATCH=()
    [[ ${BASH_REMATCH[1]} == _quarrinet_variable ]] || _quarrinet_before[$_quarrinet_command]=${BASH_REMATCH[1]}
    complete -o bashdefault -o default -F _quarrinet_variable $_quarrinet_command
done
unset _quarrinet_command
