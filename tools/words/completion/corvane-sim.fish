# fish completion for corvane-sim

# Completes another command with that command's own completion.
function __corvane_sim
    set -l words (commandline -opc)
    contains -- --help $words[2]; and return
    contains -- event $words[2]; and return
    set -lx corvane_sim (string replace -r '^~' $HOME -- $words[1])
    __fish_complete_subcommand
end

complete -c corvane-sim -x -a '(__corvane_sim)'
complete -c corvane-sim -n 'test (count (commandline -opc)) -eq 1' -l help -d 'Explain corvane-sim'
complete -c corvane-sim -n 'test (count (commandline -opc)) -eq 1' -a event -d 'Change what is around a device'
complete -c corvane-sim -n 'contains -- event (commandline -opc)[2]' -l device -d 'MAC address or index'
