#!/usr/bin/env bash
# nmea.sh [ROUNDS]
#
# How `corvane nmea` copies a GPS receiver's output, compared with a plain C loop on the same device
# library: how soon a sentence is in the reader's pipe, what waiting costs, and how fast an endless
# source is copied. Builds the release preset and prints a line for each figure with its
# goal, and OK or MISSED. A missed goal is a finding, not a failure: the status is 0 unless something
# could not be built or run.
#
# The two programs take turns. Each figure is the median of ROUNDS rounds; ratios are taken within a
# round.
source "$(dirname "${BASH_SOURCE[0]}")/../scripts/common.sh"

rounds=${1:-9}
out=$root/build/benchmarks/nmea
library=$out/libCorvaneAPI.so.2

die() {
  echo "nmea.sh: $*" >&2
  exit 1
}

prepare() {
  {
    install_packages build measure
    build release
  } >&2
  mkdir -p "$out"
  local flags=(-std=gnu11 -O2 -Wall -Wextra -I "$root/src")
  local here=$root/benchmarks name
  local renamed=()
  for name in CorvaneApiSleepMs CorvaneAPIGPSOutputFlush CorvaneAPIGPSOutputRead; do
    renamed+=("-D$name=Stub$name")
  done
  cc "${flags[@]}" -fPIC "${renamed[@]}" -c -o "$out/stub_library.o" "$here/stub_library.c"
  cc "${flags[@]}" -shared -fPIC -Wl,-soname,libCorvaneAPI.so.2 -o "$library" \
    "$here/nmea_library.c" "$out/stub_library.o"
  cc "${flags[@]}" -o "$out/floor" "$here/nmea_floor.c" "$library"
  cc "${flags[@]}" -o "$out/reader" "$here/nmea_reader.c"
}

# run PROGRAM SOURCE READS: writes the library's figures to $out/said. The utility ends with the
# error that the library returns.
run() {
  local words=("$out/floor")
  [ "$1" = floor ] || words=("$root/build/release/bin/corvane" nmea)
  env -i PATH="$PATH" LD_LIBRARY_PATH="$out" NMEA_SOURCE="$2" NMEA_READS="$3" "${words[@]}" \
    2>"$out/said" || [ "$1" = corvane ]
}

said() {
  awk -v name="$1" '{ for (i = 1; i < NF; i += 2) if ($i == name) print $(i + 1) }' "$out/said"
}

check_loads_library() {
  local loaded
  loaded=$(LD_LIBRARY_PATH=$out ldd "$1")
  [[ $loaded == *"=> $library "* ]] || die "$1 does not load $library"
}

# in_turn ROUND: prints both programs; each is first in every other round.
in_turn() {
  if (($1 % 2)); then echo corvane floor; else echo floor corvane; fi
}

median() {
  sort -g | awk '{ line[NR] = $1 } END { print line[int((NR + 1) / 2)] }'
}

row() { # figure's name, figure, relation, goal, what the plain loop has
  local verdict
  verdict=$(awk -v figure="$2" -v goal="$4" -v relation="$3" \
    'BEGIN { print (relation == "<=" ? figure <= goal : figure >= goal) ? "OK" : "MISSED" }')
  printf '%-52s %9s %6s %-5s %s%s\n' "$1" "$2" "$3" "$4" "$verdict" "${5:+ (plain loop: $5)}"
}

# delays ROUNDS: each program's 99th percentile, in microseconds, is added to $out/PROGRAM.figures.
delays() {
  local round program
  for ((round = 0; round < $1; ++round)); do
    for program in $(in_turn "$round"); do
      run "$program" sentences 1500 | "$out/reader" | awk '{ print $2 }' \
        >>"$out/$program.figures"
    done
  done
}

# ratios SOURCE READS NAME: the figure NAME of corvane divided by the plain loop's, a line a round.
ratios() {
  local round program
  local -A figure
  for ((round = 0; round < rounds; ++round)); do
    for program in $(in_turn "$round"); do
      run "$program" "$1" "$2" | cat >/dev/null
      figure[$program]=$(said "$3")
    done
    awk -v a="${figure[corvane]}" -v b="${figure[floor]}" 'BEGIN { printf "%.3f\n", a / b }'
  done
}

prepare
check_loads_library "$root/build/release/bin/corvane"
check_loads_library "$out/floor"
rm -f "$out"/*.figures
delays "$rounds"
row "sentence to the pipe, 99th percentile, us" "$(median <"$out/corvane.figures")" "<=" 3000 \
  "$(median <"$out/floor.figures")"
row "processor time when idle, ratio" "$(ratios idle 2000 cpu | median)" "<=" 1.2
row "rate of an endless source, ratio" \
  "$(ratios endless 300000 wall | awk '{ printf "%.3f\n", 1 / $1 }' | median)" ">=" 0.9
