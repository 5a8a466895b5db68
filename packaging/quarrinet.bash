# Bash completion for quarrinet: its commands, the structure types behind /type, and response files.
_quarrinet() {
    local word=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]} prefix=/ name given candidates=()
    COMPREPLY=()
    # Bash takes a word apart at '@', so a file's name may stand alone behind it.
    if [[ $word == @* || $previous == @ ]]; then
        compopt -o filenames 2>/dev/null
        mapfile -t COMPREPLY < <(compgen -f -- "${word#@}")
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
