# fish completion for corvane-lab

# Offers the commands, the options in its help, files, and behind -- another command's completion.
function __corvane_lab_options
    set -l program (string replace -r '^~' $HOME -- (commandline -opc)[1])
    env $corvane_sim $program --help 2>/dev/null | string replace -rf '^ +(--\w[-\w]*)(?: [A-Za-z|]+)? +' '$1\t'
end
function __corvane_lab_command
    set -l words (commandline -opc)
    set -l at (contains -i -- -- $words)
    or return
    complete -C (string join ' ' -- $words[(math $at + 1)..] (commandline -ct))
end

set -l free '__fish_prev_arg_in --device'
set -l files '__fish_prev_arg_in --output --from -o'
set -l behind 'contains -- -- (commandline -opc)'
complete -c corvane-lab -n "not $files" -f
complete -c corvane-lab -n __fish_use_subcommand -a 'record copy check'
set -l option 'string match -q -- "-*" (commandline -ct)'
complete -c corvane-lab -n "$option; and not $free; and not $files; and not $behind" -a '(__corvane_lab_options)'
complete -c corvane-lab -n $behind -a '(__corvane_lab_command)'
