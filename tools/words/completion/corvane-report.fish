# fish completion for corvane-report

# Offers the options in its help.
function __corvane_report_options
    set -l program (string replace -r '^~' $HOME -- (commandline -opc)[1])
    $program --help 2>/dev/null | string replace -rf '^ +(--\w+)(?: [A-Z=]+)? +' '$1\t'
end

complete -c corvane-report -f
complete -c corvane-report -n 'not __fish_prev_arg_in --label' -a '(__corvane_report_options)'
