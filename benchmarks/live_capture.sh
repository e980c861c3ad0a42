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
corvane=$root/build/release/bin/corvane
name=corvane-bench-$$

die() {
  echo "live_capture.sh: $*" >&2
  exit 1
}

clean_up() {
  [[ -z ${dumpcap:-} ]] || kill "$dumpcap" 2>/dev/null || true
  CORVANE_SIM_STATE=$out/state "$corvane" directcapture stop >/dev/null 2>&1 || true
  ip netns del "$name" 2>/dev/null || true
}

prepare() {
  {
    install_packages build measure
    build release
  } >&2
  rm -rf "$out"
  mkdir -p "$out"
  cc -std=gnu11 -O2 -Wall -Wextra -o "$out/send_frames" "$root/benchmarks/send_frames.c"
}

make_veth() {
  ip netns add "$name" || die "cannot make a network namespace"
  # Otherwise the kernel sends frames of its own.
  in_namespace sh -c 'echo 1 >/proc/sys/net/ipv6/conf/default/disable_ipv6'
  ip -n "$name" link add sender type veth peer name receiver
  ip -n "$name" link set sender up
  ip -n "$name" link set receiver up
}

in_namespace() {
  ip netns exec "$name" "$@"
}

cpu_ns() { # PID
  cat "/proc/$1/task/"*/schedstat | awk '{ sum += $1 } END { printf "%d\n", sum }'
}

send() {
  local sent
  sent=$(in_namespace "$out/send_frames" sender "$frames" "$rate") || die "sending failed"
  [[ $sent == "$frames" ]] || die "sent $sent"
  sleep 1.2 # until the last second's frames are flushed
}

count() { # FILE
  capinfos -Mc "$1" | awk '/^Number of packets/ { print $NF }'
}

# One line: CPU nanoseconds a frame, frames missing.
run_ours() {
  export CORVANE_SIM_CONFIG=$out/sim.toml CORVANE_SIM_STATE=$out/state
  in_namespace "$corvane" directcapture start --name "$out/ours.pcapng" --maxcache 64 >/dev/null ||
    die "the capture does not start"
  local pid before after
  pid=$(grep -ls "$out/state/capture" /proc/[0-9]*/maps | cut -d/ -f3) || true
  before=$(cpu_ns "$pid")
  send
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
  send
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

median() {
  sort -n | awk '{ value[NR] = $1 } END { print value[int((NR + 1) / 2)] }'
}

row() { # measure, figure, goal
  local verdict
  verdict=$(awk -v figure="$2" -v goal="$3" 'BEGIN { print figure <= goal ? "OK" : "MISSED" }')
  printf '%-38s %9s %7s  %s\n' "$1" "$2" "$3" "$verdict"
}

prepare
trap clean_up EXIT
make_veth
cat >"$out/sim.toml" <<TOML
[[device]]
type = 11
mac = "00:1a:2b:3c:4d:01"
capabilities = ["Basic", "Dual ports", "Statistics V2", "PcapNG"]
[device.port_a]
source = "interface"
interface = "receiver"
TOML

for ((i = 0; i < rounds; ++i)); do
  ours=$(run_ours)
  theirs=$(run_dumpcap)
  echo "$ours $theirs" | tee -a "$out/rounds" >&2
done
printf '%-38s %9s %7s\n' "measure ($frames frames, $rate/s)" figure goal
row "frames missing, most in a round" "$(sort -n -k2,2 "$out/rounds" | tail -1 | cut -d' ' -f2)" 0
row "CPU a frame, ratio to dumpcap" \
  "$(awk '{ printf "%.3f\n", $1 / $3 }' "$out/rounds" | median)" 0.35
printf 'CPU ns a frame: %s, dumpcap %s; dumpcap missed at most %s\n' \
  "$(cut -d' ' -f1 "$out/rounds" | median)" "$(cut -d' ' -f3 "$out/rounds" | median)" \
  "$(sort -n -k4,4 "$out/rounds" | tail -1 | cut -d' ' -f4)"
