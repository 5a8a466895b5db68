# Fish completion for quarrinet's variables, behind set and env. It is read when fish starts, for those are not its own
# commands; a value before a command on its line is fish's alone.
function __quarrinet_variable
    contains -- $argv[1] (commandline -opc)[-1]
end
complete -c set -n '__quarrinet_variable QUARRINET_FORMAT' -f -a 'json text'
complete -c set -n '__quarrinet_variable QUARRINET_WHOLE' -f -a '1 0'
complete -c set -n '__quarrinet_variable QUARRINET_MACHINE' -a 'host sample sample-server'
complete -c env -a 'QUARRINET_FORMAT=json QUARRINET_FORMAT=text QUARRINET_WHOLE=1 QUARRINET_WHOLE=0'
complete -c env -a 'QUARRINET_MACHINE=host QUARRINET_MACHINE=sample QUARRINET_MACHINE=sample-server'
