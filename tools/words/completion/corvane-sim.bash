# bash completion for corvane-sim                           -*- shell-script -*-

# Completes another command with that command's own completion.
_corvane_sim() {
  # shellcheck disable=SC2034  # used by _init_completion and by corvane's completion
  local cur prev words cword corvane_sim=${1/#\~/$HOME}
  _init_completion -n =: || return
  if [[ $cword -eq 1 && $cur == -* ]]; then
    mapfile -t COMPREPLY < <(compgen -W --help -- "$cur")
  elif [[ $cword -gt 1 && ${words[1]} == event ]]; then
    mapfile -t COMPREPLY < <(compgen -W --device -- "$cur")
  elif [[ ${words[1]} != --help ]]; then
    _command_offset 1
    [[ $cword -gt 1 || event != "$cur"* ]] || COMPREPLY+=(event)
  fi
} && complete -F _corvane_sim corvane-sim
