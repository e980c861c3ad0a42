# bash completion for corvane-report                        -*- shell-script -*-

# Offers the options in its help.
_corvane_report() {
  # shellcheck disable=SC2034  # set by _init_completion
  local cur prev words cword
  _init_completion -n = || return
  [[ $prev != --label ]] || return
  mapfile -t COMPREPLY < <(compgen -W "$(_parse_help "$1")" -- "$cur")
} && complete -F _corvane_report corvane-report
