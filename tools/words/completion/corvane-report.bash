# bash completion for corvane-report                        -*- shell-script -*-

# The options that its help names.
_corvane_report() {
  # shellcheck disable=SC2034  # what _init_completion sets
  local cur prev words cword
  _init_completion -n = || return
  [[ $prev != --label ]] || return
  mapfile -t COMPREPLY < <(compgen -W "$(_parse_help "$1")" -- "$cur")
} && complete -F _corvane_report corvane-report
