# bash completion for corvane-config                        -*- shell-script -*-

# Offers the commands, the options in its help, and files.
_corvane_config() {
  # shellcheck disable=SC2034  # set by _init_completion
  local cur prev words cword
  _init_completion -n = || return
  if [[ $prev == --@(device|seconds) ]]; then
    return
  elif [[ $cur == -* ]]; then
    mapfile -t COMPREPLY < <(compgen -W "$(
      ${corvane_sim:+"$corvane_sim"} "${1/#\~/$HOME}" --help 2>/dev/null | _parse_help -)" -- "$cur")
  elif [[ $cword -eq 1 ]]; then
    mapfile -t COMPREPLY < <(compgen -W 'show diff apply try example' -- "$cur")
  else
    _filedir
  fi
} && complete -F _corvane_config corvane-config
