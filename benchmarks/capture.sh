#!/usr/bin/env bash
# capture.sh [ROUNDS [PACKETS]]
#
# What the frame path and the capture writer cost compared with Debian's tools on the same file:
# PACKETS mixed packets are read as the simulator reads files and written as pcapng. In each round
# the tool and the frame path run one after the other. Prints the medians of their CPU times (user
# and system, ms) and of the rounds' ratios with the goals, and OK or MISSED. A missed goal is a
# finding, not a failure: the status is 0 unless something could not be built or run, or the tool
# kept other packets.
source "$(dirname "${BASH_SOURCE[0]}")/../scripts/common.sh"

rounds=${1:-9}
packets=${2:-1000000}
out=$root/build/benchmarks/capture
trace=$out/trace.pcap
host=10.1.20.7
port=443
needle=436f727661636517a9d3f0124b6e8c55
# tcpdump looks into VLANs only on request; the device always does.
filter="host $host and port $port or (vlan and host $host and port $port)"

die() {
  echo "capture.sh: $*" >&2
  exit 1
}

# The frame path and the writer as the release preset builds them.
prepare() {
  local tap=$root/simulator/tap dump=$root/simulator/dump
  install_packages build measure >&2
  rm -rf "$out"
  mkdir -p "$out"
  g++ -std=c++20 -O2 -flto -DNDEBUG -static-libstdc++ -static-libgcc -I "$root/simulator" \
    -I "$root/src" -o "$out/capture_path" "$root/benchmarks/capture_path.cpp" \
    "$tap"/*.cpp "$dump"/{pcapng,capture_files,capture_writer}.cpp \
    "$root"/simulator/{traffic/capture_file,state/host_clock}.cpp -lz
  python3 "$root/benchmarks/capture_trace.py" "$trace" "$packets"
}

# CPU time in ms.
cpu() {
  local figures TIMEFORMAT='%3U %3S'
  rm -f "$out"/*.kept
  figures=$({ time "$@" >/dev/null 2>"$out/errors"; } 2>&1) || die "$*: $(<"$out/errors")"
  awk '{ printf "%.0f\n", ($1 + $2) * 1000 }' <<<"$figures"
}

count() {
  capinfos -Tmcr "$1" | cut -d, -f2
}

median() {
  sort -n | awk '{ values[NR] = $1 } END { print values[int((NR + 1) / 2)] }'
}

# name, goal, words for the frame path, then the tool's command
measure() {
  local name=$1 goal=$2 words=$3 i ours theirs kept
  shift 3
  : >"$out/rounds"
  for ((i = 0; i < rounds; ++i)); do
    theirs=$(cpu "$@")
    kept=$(count "$out/tool.kept")
    # shellcheck disable=SC2086
    ours=$(cpu "$out/capture_path" "$trace" "$out/path.kept" $words)
    [[ $(count "$out/path.kept") == "$kept" ]] || die "$name: other packets than $1 keeps"
    awk -v ours="$ours" -v theirs="$theirs" 'BEGIN { print ours / theirs, ours, theirs }' \
      >>"$out/rounds"
  done
  awk -v name="$name" -v kept="$kept" -v ours="$(cut -d' ' -f2 "$out/rounds" | median)" \
    -v theirs="$(cut -d' ' -f3 "$out/rounds" | median)" -v goal="$goal" \
    -v ratio="$(cut -d' ' -f1 "$out/rounds" | median)" 'BEGIN {
      printf "%-26s %8d %8d %8d %7.2f %6.2f  %s\n", name, kept, ours, theirs, ratio, goal,
        ratio <= goal ? "OK" : "MISSED" }'
}

prepare
cat "$trace" >/dev/null
printf '%-26s %8s %8s %8s %7s %6s\n' 'against' kept 'path ms' 'tool ms' ratio goal
measure 'tcpdump, plain copy' 0.75 '' tcpdump -Z root -r "$trace" -w "$out/tool.kept"
measure 'editcap, plain copy' 0.60 '' editcap "$trace" "$out/tool.kept"
measure 'tcpdump, host and port' 0.80 "filter $host $port" \
  tcpdump -Z root -r "$trace" -w "$out/tool.kept" "$filter"
measure 'editcap, 128 bytes' 0.50 'slice 128' editcap -s 128 "$trace" "$out/tool.kept"
measure 'tshark, 16-byte pattern' 0.05 "pattern $needle" \
  tshark -n -r "$trace" -Y "frame contains $(sed 's/../&:/g; s/:$//' <<<"$needle")" \
  -w "$out/tool.kept"
