#!/usr/bin/env bash
# cli.sh [ROUNDS]
#
# What a run of the installed utility costs compared with an empty program that loads the same
# device library, one that answers at once, and with two tools that print as little. Builds the
# release preset, installs it into build/benchmarks and prints a line for each command and measure
# with its goal, and OK or MISSED. A missed goal is a finding, not a failure: the status is 0 unless
# something could not be built or run.
#
# Instructions and system calls are exact; times and memory are medians of ROUNDS paired runs.
source "$(dirname "${BASH_SOURCE[0]}")/../scripts/common.sh"

rounds=${1:-1000}
out=$root/build/benchmarks
corvane=$out/installed/bin/corvane
stub=$out/libCorvaneAPI.so.2

# Commands that scripts run all the time, and commands with much to print or to parse: their goals
# differ.
everyday=(
  "help"
  "list"
  "features show"
)
long=(
  "statsv2 show"
  "directcapture start help"
  "packet_type_filter set help"
  "features set --keepcrcerrors on --keepcrc32 on --disablea off --disableb off --slicing 128
   --inline on --loopback off --timestamps on --syncts on --autonega on --autonegb on
   --firmware_mode 10G"
)

die() {
  echo "cli.sh: $*" >&2
  exit 1
}

# A run gets nothing of the caller's environment.
run_clean() {
  env -i PATH="$PATH" LD_LIBRARY_PATH="$out" "$@"
}

prepare() {
  {
    install_packages build measure
    build release
    cmake --install build/release --prefix "$out/installed"
  } >&2
  mkdir -p "$out"
  local flags=(-std=gnu11 -O2 -Wall -Wextra -I "$root/src")
  local here=$root/benchmarks
  cc "${flags[@]}" -shared -fPIC -Wl,-soname,libCorvaneAPI.so.2 -o "$stub" "$here/stub_library.c"
  cc "${flags[@]}" -o "$out/floor" "$here/floor.c" -Wl,--no-as-needed "$stub"
  cc "${flags[@]}" -static -o "$out/run_many" "$here/run_many.c"
}

check_loads_stub() {
  local loaded
  loaded=$(run_clean ldd "$1")
  [[ $loaded == *"=> $stub "* ]] || die "$1 does not load $stub"
}

count_instructions() {
  run_clean valgrind --tool=callgrind --callgrind-out-file="$out/callgrind" "$@" \
    >/dev/null 2>"$out/valgrind.log" || die "under valgrind: $*"
  awk '$1 == "summary:" || $1 == "totals:" { total = $2 } END { print total }' "$out/callgrind"
}

# Writes one line per system call to $out/strace.
trace() {
  run_clean strace -qq -o "$out/strace" "$@" >/dev/null || die "under strace: $*"
}

count_calls() {
  trace "$@"
  wc -l <"$out/strace"
}

ratio() {
  awk -v a="$1" -v b="$2" 'BEGIN { printf "%.2f\n", a / b }'
}

row() { # command, measure, figure, goal or - for none
  local verdict
  verdict=$(awk -v figure="$3" -v goal="$4" 'BEGIN {
    if (goal != "-") print figure <= goal ? "OK" : "MISSED"
  }')
  printf '%-27s  %-21s %7s %7s  %s\n' "$1" "$2" "$3" "$4" "$verdict"
}

figure() { # measure, output of run_many
  awk -v measure="$1" '$1 == measure { print $2 }' <<<"$2"
}

measure() { # goal for the times, words of the command
  local times_goal=$1 name=$2 word figures instructions calls writes
  shift
  for word in "${@:2}"; do
    if [[ $word == -* ]]; then
      name+=", all options"
      break
    fi
    name+=" $word"
  done
  figures=$(run_clean "$out/run_many" "$rounds" "$out/floor" -- "$corvane" "$@")
  instructions=$(count_instructions "$corvane" "$@")
  calls=$(count_calls "$corvane" "$@")
  writes=$(grep -c '^write(1,' "$out/strace") || die "prints nothing: $*"

  row "$name" "wall time, ratio" "$(figure wall "$figures")" "$times_goal"
  row "$name" "CPU time, ratio" "$(figure cpu "$figures")" "$times_goal"
  row "$name" "instructions, ratio" "$(ratio "$instructions" "$floor_instructions")" -
  row "$name" "peak memory, ratio" "$(figure memory "$figures")" 2
  row "$name" "system calls, more" "$((calls - floor_calls))" 20
  row "$name" "writes to the output" "$writes" 1
}

# Compares list with a tool that shows interfaces: goal, the tool's words.
compare() {
  local figures
  figures=$(run_clean "$out/run_many" "$((rounds / 4 + 1))" "$(command -v "$2")" "${@:3}" -- \
    "$corvane" list)
  row "list" "CPU of ${*:2}" "$(figure cpu "$figures")" "$1"
}

# Compares corvane-config's diff with features show: goal, the section of the device, or all.
compare_diff() {
  local figures file=$out/lab.toml
  run_clean "$corvane-config" show | awk -v name="$2" '
    /^\[/ { wanted = name == "all" || index($0, "." name "]") } wanted' >"$file"
  figures=$(run_clean "$out/run_many" "$((rounds / 4 + 1))" "$corvane" features show -- \
    "$corvane-config" diff "$file")
  row "corvane-config diff, $2" "CPU of features show" "$(figure cpu "$figures")" "$1"
}

prepare
check_loads_stub "$corvane"
check_loads_stub "$out/floor"
floor_instructions=$(count_instructions "$out/floor")
floor_calls=$(count_calls "$out/floor")
echo "The floor takes $floor_instructions instructions and $floor_calls system calls."
printf '%-27s  %-21s %7s %7s\n' command measure figure goal
for command in "${everyday[@]}"; do
  read -r -d '' -a words <<<"$command" || true # ends at the end of the text, not at a newline
  measure 1.30 "${words[@]}"
done
for command in "${long[@]}"; do
  read -r -d '' -a words <<<"$command" || true
  measure 1.45 "${words[@]}"
done
compare 0.80 ip link show lo
compare 0.45 tcpdump -D
compare_diff 1.50 features
compare_diff - all
