# bash completion for corvane-sim                           -*- shell-script -*-

# Another command with its own completion.
_corvane_sim() {
  # shellcheck disable=SC2034  # what _init_completion sets, and for corvane's completion
  local cur prev words cword corvane_sim=${1/#\~/$HOME}
  _init_completion -n =: || return
  if [[ $cword -eq 1 && $cur == -* ]]; then
    mapfile -t COMPREPLY < <(compgen -W --help -- "$cur")
  elif [[ ${words[1]} != --help ]]; then
    _command_offset 1
  fi
} && complete -F _corvane_sim corvane-sim
