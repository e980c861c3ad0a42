#!/usr/bin/env bash
# extcap.sh [ROUNDS [SECONDS [RATE]]]
#
# What looking at live frames costs. Frames are sent through a veth pair in a network namespace of its
# own; a simulated device captures at the other end, and tshark shows them through corvane-extcap.
# First, 1000 frames a second for ten seconds: how old a frame is when it can be read from the pipe.
# Then in each round RATE frames a second for SECONDS: frames missing from tshark's file, and the CPU
# time of corvane-extcap compared with that of a dumpcap which captures the same frames at the
# interface, and of the dumpcap that reads the pipe. Prints OK or MISSED; the status is 0 unless
# something could not be built or run. Needs root.
source "$(dirname "${BASH_SOURCE[0]}")/../scripts/common.sh"

rounds=${1:-3}
seconds=${2:-30}
rate=${3:-100000}
frames=$((seconds * rate))
out=$root/build/benchmarks/extcap
source "$root/benchmarks/veth.sh"
width=44
device=00:1a:2b:3c:4d:01
children=()

clean_up() {
  kill "${children[@]}" 2>/dev/null || true
  "$bin/corvane" directcapture stop >/dev/null 2>&1 || true
  remove_veth
}

prepare() {
  prepare_veth
  mkdir -p "$out/wireshark/extcap"
  ln -s "$bin/corvane-extcap" "$out/wireshark/extcap/"
  export XDG_CONFIG_HOME=$out
  "$bin/corvane" features set --timestamps off >/dev/null # the frames have the times of this machine
}

child_of() { # PID NAME: waits until it is there
  local i
  for ((i = 0; i < 200; ++i)); do
    pgrep -P "$1" -x "$2" && return
    sleep 0.05
  done
  die "no $2"
}

capture_runs() {
  local i
  for ((i = 0; i < 200; ++i)); do
    if [[ $("$bin/corvane" directcapture status) == *'Enabled : 1'* ]]; then
      sleep 1 # its source may still be opened
      return
    fi
    sleep 0.05
  done
  die "the capture does not start"
}

until_quiet() { # FILE: until it has not grown for a second
  local size=-1
  until [[ $size == "$(stat -c %s "$1")" ]]; do
    size=$(stat -c %s "$1")
    sleep 1
  done
}

# The ages of the frames in ms, a line each.
latency() {
  mkfifo "$out/fifo"
  python3 - "$out/fifo" >"$out/ages" <<'PYTHON' &
import struct, sys, time
data = b""
with open(sys.argv[1], "rb", buffering=0) as fifo:
    while piece := fifo.read(1 << 20):
        now, data, at = time.time_ns(), data + piece, 0
        while len(data) - at >= 8:
            kind, length = struct.unpack_from("<II", data, at)
            if length > len(data) - at:
                break
            if kind == 6:
                high, low = struct.unpack_from("<II", data, at + 12)
                print((now - (high << 32 | low)) / 1e6)
            at += length
        data = data[at:]
PYTHON
  local reader=$! extcap
  in_namespace "$bin/corvane-extcap" --capture --extcap-interface "$device" --fifo "$out/fifo" &
  extcap=$!
  children+=("$extcap")
  capture_runs
  send 10000 1000
  sleep 1
  kill "$extcap"
  wait "$extcap" "$reader"
  [[ $(wc -l <"$out/ages") == 10000 ]] || die "$(wc -l <"$out/ages") of 10000 frames came"
}

percentile() { sort -n "$out/ages" | awk -v at="$1" '{ v[NR] = $1 } END { print int(v[int(NR * at)]) }'; }

# One line: CPU ns a frame of corvane-extcap and of its dumpcap, frames missing.
run_extcap() {
  local tshark extcap dumpcap before
  ip netns exec "$name" tshark -q -i "$device" -w "$out/seen.pcapng" 2>"$out/tshark.log" &
  tshark=$!
  children+=("$tshark")
  extcap=$(child_of "$tshark" corvane-extcap)
  dumpcap=$(child_of "$tshark" dumpcap)
  capture_runs
  before=("$(cpu_ns "$extcap")" "$(cpu_ns "$dumpcap")")
  send "$frames" "$rate"
  until_quiet "$out/seen.pcapng"
  awk -v extcap=$(($(cpu_ns "$extcap") - before[0])) -v dumpcap=$(($(cpu_ns "$dumpcap") - before[1])) \
    -v frames="$frames" 'BEGIN { printf "%.1f %.1f ", extcap / frames, dumpcap / frames }'
  kill -INT "$tshark"
  wait "$tshark" || true
  echo $((frames - $(count "$out/seen.pcapng")))
  rm "$out/seen.pcapng"
}

# CPU ns a frame of a dumpcap at the interface.
run_dumpcap() {
  local dumpcap before
  ip netns exec "$name" dumpcap -q -i receiver -B 64 -w "$out/dumpcap.pcapng" 2>"$out/dumpcap.log" &
  dumpcap=$!
  children+=("$dumpcap")
  sleep 1
  before=$(cpu_ns "$dumpcap")
  send "$frames" "$rate"
  sleep 1
  awk -v cpu=$(($(cpu_ns "$dumpcap") - before)) -v frames="$frames" 'BEGIN { printf "%.1f\n", cpu / frames }'
  kill "$dumpcap"
  wait "$dumpcap" || true
  rm "$out/dumpcap.pcapng"
}

trap clean_up EXIT
prepare
latency
for ((i = 0; i < rounds; ++i)); do
  echo "$(run_extcap) $(run_dumpcap)" | tee -a "$out/rounds" >&2
done
printf "%-${width}s %9s %7s\n" "measure ($frames frames, $rate/s)" figure goal
row 'age of a frame at 1000/s, median, ms' "$(percentile 0.5)" 250
row 'age of a frame at 1000/s, 99th percentile, ms' "$(percentile 0.99)" 500
row 'frames missing, most in a round' "$(cut -d' ' -f3 "$out/rounds" | sort -n | tail -1)" 0
row 'CPU a frame, ratio to dumpcap' \
  "$(awk '{ printf "%.3f\n", $1 / $4 }' "$out/rounds" | median)" 0.35
printf 'CPU ns a frame, medians: corvane-extcap %s, its dumpcap %s, dumpcap at the interface %s\n' \
  "$(cut -d' ' -f1 "$out/rounds" | median)" "$(cut -d' ' -f2 "$out/rounds" | median)" \
  "$(cut -d' ' -f4 "$out/rounds" | median)"
