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
