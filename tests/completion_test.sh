#!/usr/bin/env bash
# completion_test.sh BUILD SHELL: installs from the build folder, completes every line of
# golden/completion.txt in the shell, which finds the scripts itself, and compares the candidates.
set -uo pipefail
build=$1 shell=$2
here=$(cd "$(dirname "$0")" && pwd)
if ! command -v "$shell" >/dev/null ||
  { [ "$shell" = zsh ] && ! zsh -fc 'zmodload zsh/zpty && zpty probe true' 2>/dev/null; }; then
  echo "skipped: no $shell, or no pseudo terminal for it"
  exit 77
fi
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
mkdir -p "$folder"/here/folder "$folder"/home
said=$(cmake --install "$build" --prefix "$folder/installed" 2>&1) || { echo "$said"; exit 1; }
cd "$folder"/here || exit 1
touch fw-1.bin fw-2.bin
export CORVANE_SIM_STATE=$folder/state HOME=$folder/home PATH=$build/bin:$PATH
export XDG_DATA_DIRS=$folder/installed/share:/usr/share
unset CORVANE_SIM_CONFIG XDG_CONFIG_HOME XDG_DATA_HOME
declare -A bare=([bash]='bash --norc' [zsh]='zsh -f' [fish]=fish)

# One a line and sorted. A folder's slash, and whether short options are offered too, are the
# shell's own matter.
normal() { sed -E 's:/$::; /^$/d; /^-[a-z]$/d' | sort -u; }

# check LINE EXPECTED: says so when the shell offers something else.
check() {
  local wanted got
  # The installed corvane has no device but through corvane-sim.
  [[ $1 != corvane-* ]] || local PATH=$folder/installed/bin:$PATH
  wanted=$(tr ' ' '\n' <<<"${2% ...}" | normal)
  # shellcheck disable=SC2086
  got=$(${bare[$shell]} "$here/completion/candidates.$shell" "$folder/installed/share" "$1" </dev/null | normal)
  if [[ $2 == *' ...' ]]; then got=$(grep -Fxf <(echo "$wanted") <<<"$got"); fi
  [ "$got" = "$wanted" ] || printf '%s: %s\n  expected: %s\n  offered:  %s\n' "$shell" "$1" \
    "${wanted//$'\n'/ }" "${got//$'\n'/ }"
}

devices=$(corvane list | sed -nE 's/^([0-9]+) : .* ([0-9a-f:]{17})$/\1 \2/p' | paste -sd' ')
[ -n "$devices" ] || { echo 'corvane list shows no devices'; exit 1; }
# An interactive shell mostly waits: several at once.
while IFS='|' read -r line expected; do
  while [ "$(jobs -rp | wc -l)" -ge 8 ]; do wait -n; done
  check "$line" "${expected/\%DEVICES/$devices}" >>"$folder/failures" &
done < <(grep -v '^#' "$here/golden/completion.txt")
wait
cat "$folder/failures"
[ ! -s "$folder/failures" ]
