#!/usr/bin/env bash
# live_capture.sh [ROUNDS [FRAMES [RATE]]]
#
# What capturing from a live interface costs compared with dumpcap, both with a buffer of 64 MB:
# FRAMES frames, RATE a second, are sent through a veth pair in a network namespace of its own while
# one of them captures at its other end; both take their turn in each round. Prints the medians of
# ROUNDS rounds with their goals, and OK or MISSED. A missed goal is a finding, not a failure: the
# status is 0 unless something could not be built or run. Needs root.
source "$(dirname "${BASH_SOURCE[0]}")/../scripts/common.sh"

rounds=${1:-5}
frames=${2:-1000000}
rate=${3:-100000}
out=$root/build/benchmarks/live
source "$root/benchmarks/veth.sh"
corvane=$bin/corvane

clean_up() {
  [[ -z ${dumpcap:-} ]] || kill "$dumpcap" 2>/dev/null || true
  "$corvane" directcapture stop >/dev/null 2>&1 || true
  remove_veth
}

send_all() {
  send "$frames" "$rate"
  sleep 1.2 # until the last second's frames are flushed
}

# One line: CPU nanoseconds a frame, frames missing.
run_ours() {
  in_namespace "$corvane" directcapture start --name "$out/ours.pcapng" --maxcache 64 >/dev/null ||
    die "the capture does not start"
  local pid before after
  pid=$(grep -ls "$out/state/capture" /proc/[0-9]*/maps | cut -d/ -f3) || true
  before=$(cpu_ns "$pid")
  send_all
  after=$(cpu_ns "$pid")
  "$corvane" directcapture stop >/dev/null
  figures "$before" "$after" "$out"/ours_*.pcapng
}

run_dumpcap() {
  local before after
  # Not through a function: $! would then be the shell's process.
  ip netns exec "$name" dumpcap -q -i receiver -B 64 -w "$out/dumpcap.pcapng" 2>"$out/dumpcap.log" &
  dumpcap=$!
  sleep 1
  before=$(cpu_ns "$dumpcap")
  send_all
  after=$(cpu_ns "$dumpcap")
  kill "$dumpcap"
  wait "$dumpcap" || true
  dumpcap=
  figures "$before" "$after" "$out/dumpcap.pcapng"
}

figures() { # CPU before, after, FILE
  awk -v cpu=$(($2 - $1)) -v frames="$frames" -v kept="$(count "$3")" \
    'BEGIN { printf "%.1f %d\n", cpu / frames, frames - kept }'
  rm -f "$3"
}

trap clean_up EXIT
prepare_veth
for ((i = 0; i < rounds; ++i)); do
  ours=$(run_ours)
  theirs=$(run_dumpcap)
  echo "$ours $theirs" | tee -a "$out/rounds" >&2
done
printf "%-${width}s %9s %7s\n" "measure ($frames frames, $rate/s)" figure goal
row "frames missing, most in a round" "$(sort -n -k2,2 "$out/rounds" | tail -1 | cut -d' ' -f2)" 0
row "CPU a frame, ratio to dumpcap" \
  "$(awk '{ printf "%.3f\n", $1 / $3 }' "$out/rounds" | median)" 0.35
printf 'CPU ns a frame: %s, dumpcap %s; dumpcap missed at most %s\n' \
  "$(cut -d' ' -f1 "$out/rounds" | median)" "$(cut -d' ' -f3 "$out/rounds" | median)" \
  "$(sort -n -k4,4 "$out/rounds" | tail -1 | cut -d' ' -f4)"
