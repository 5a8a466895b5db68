# Fish completion for quarrinet: its commands, the structure types behind /type, and response files.
function __quarrinet_words
    set -l word (commandline -ct)
    set -l given (string lower -- (commandline -opc)[2..-1])
    switch $word
        case '@*'
            printf '@%s\n' (__fish_complete_path (string sub -s 2 -- $word))
            return
    end
    if string match -qr '^[/-]type$' -- $given[-1]
        printf '%s\n' (seq 0 42) 126 127
    end
    set -l sign /
    string match -q -- '-*' $word; and set sign -
    for name in b eps type nologo help
        contains -- /$name $given; or contains -- -$name $given; or echo $sign$name
    end
end
complete -c quarrinet -f -k -a '(__quarrinet_words)'
complete -c Quarrinet -f -k -a '(__quarrinet_words)'
