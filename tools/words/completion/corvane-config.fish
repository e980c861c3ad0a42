# fish completion for corvane-config

# Offers the commands, the options in its help, and files.
function __corvane_config_options
    set -l program (string replace -r '^~' $HOME -- (commandline -opc)[1])
    env $corvane_sim $program --help 2>/dev/null | string replace -rf '^ +(--\w[-\w]*)(?: [A-Za-z|]+)? +' '$1\t'
end

set -l values '__fish_prev_arg_in --device --seconds'
complete -c corvane-config -n "__fish_use_subcommand; or $values" -f
complete -c corvane-config -n __fish_use_subcommand -a 'show diff apply try example'
complete -c corvane-config -n "not $values" -a '(__corvane_config_options)'
