#!/usr/bin/env bash
# completion_test.sh BUILD SHELL: completes every line of completion/cases.txt in the shell with the
# script in the build folder, and compares the candidates.
set -uo pipefail
build=$1 shell=$2
cases=$(cd "$(dirname "$0")/completion" && pwd)
command -v "$shell" >/dev/null || { echo "skipped: no $shell"; exit 77; }
if [ "$shell" = zsh ] && ! zsh -fc 'zmodload zsh/zpty && zpty probe true' 2>/dev/null; then
  echo 'skipped: no pseudo terminal for zsh'
  exit 77
fi

folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder" || exit 1
mkdir work work/folder home
touch work/fw-1.bin work/fw-2.bin
export CORVANE_SIM_STATE=$folder/state HOME=$folder/home PATH=$build:$PATH
unset CORVANE_SIM_CONFIG XDG_CONFIG_HOME XDG_DATA_HOME
cd work || exit 1

candidates() {
  case $shell in
    bash) bash --norc "$cases/candidates.bash" "$build/corvane.bash" "$1" ;;
    zsh) zsh -f "$cases/candidates.zsh" "$build" "$1" ;;
    fish) fish -N "$cases/candidates.fish" "$build/corvane.fish" "$1" ;;
  esac
}

# One a line and sorted. A folder's slash, and whether short options are offered too, are the shell's
# own matter.
normal() { sed -E 's:/$::; /^$/d; /^-[a-z]$/d' | sort -u; }

devices=$(corvane list | sed -nE 's/^([0-9]+) : .* ([0-9a-f:]{17})$/\1 \2/p' | paste -sd' ')
[ -n "$devices" ] || { echo 'corvane list shows no devices'; exit 1; }

# check LINE EXPECTED: says so when the shell offers something else.
check() {
  local wanted got
  wanted=$(tr ' ' '\n' <<<"${2% ...}" | normal)
  got=$(candidates "$1" </dev/null | normal)
  if [[ $2 == *' ...' ]]; then got=$(grep -Fxf <(echo "$wanted") <<<"$got"); fi
  [ "$got" = "$wanted" ] || printf '%s: %s\n  expected: %s\n  offered:  %s\n' "$shell" "$1" \
    "${wanted//$'\n'/ }" "${got//$'\n'/ }"
}

# An interactive shell mostly waits: several at once.
while IFS='|' read -r line expected; do
  while [ "$(jobs -rp | wc -l)" -ge 8 ]; do wait -n; done
  check "$line" "${expected/\%DEVICES/$devices}" >>"$folder/failures" &
done < <(grep -v '^#' "$cases/cases.txt")
wait
cat "$folder/failures"
[ ! -s "$folder/failures" ]
