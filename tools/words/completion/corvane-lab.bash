# bash completion for corvane-lab                           -*- shell-script -*-

# Offers the commands, the options in its help, files, and behind -- another command's completion.
_corvane_lab() {
  # shellcheck disable=SC2034  # set by _init_completion
  local cur prev words cword i
  _init_completion -n = || return
  for ((i = 2; i < cword; ++i)); do
    if [[ ${words[i]} == -- ]]; then
      _command_offset $((i + 1))
      return
    fi
  done
  if [[ $prev == --device ]]; then
    return
  elif [[ $cur == -* ]]; then
    mapfile -t COMPREPLY < <(compgen -W "$(
      ${corvane_sim:+"$corvane_sim"} "${1/#\~/$HOME}" --help 2>/dev/null | _parse_help -)" -- "$cur")
  elif [[ $cword -eq 1 ]]; then
    mapfile -t COMPREPLY < <(compgen -W 'record copy check' -- "$cur")
  elif [[ $prev == -@(o|-output|-from) ]]; then
    _filedir
  fi
} && complete -F _corvane_lab corvane-lab
