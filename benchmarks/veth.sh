# shellcheck shell=bash
# What the benchmarks on live frames share; sourced, not run, after out is set. A veth pair in a
# network namespace of its own, whose end "receiver" is port A of a simulated device, and sums over rounds.
bin=$root/build/release/bin
name=corvane-bench-$$
width=38

die() {
  echo "${0##*/}: $*" >&2
  exit 1
}

remove_veth() { ip netns del "$name" 2>/dev/null || true; }
in_namespace() { ip netns exec "$name" "$@"; }

# Builds what is measured and what sends, and makes the pair. To be removed by remove_veth.
prepare_veth() {
  {
    install_packages build measure
    build release
  } >&2
  rm -rf "$out"
  mkdir -p "$out"
  cc -std=gnu11 -O2 -Wall -Wextra -o "$out/send_frames" "$root/benchmarks/send_frames.c"
  ip netns add "$name" || die "cannot make a network namespace"
  # Otherwise the kernel sends frames of its own.
  in_namespace sh -c 'echo 1 >/proc/sys/net/ipv6/conf/default/disable_ipv6'
  ip -n "$name" link add sender type veth peer name receiver
  ip -n "$name" link set sender up
  ip -n "$name" link set receiver up
  export CORVANE_SIM_CONFIG=$out/sim.toml CORVANE_SIM_STATE=$out/state
  cat >"$out/sim.toml" <<TOML
[[device]]
type = 11
mac = "00:1a:2b:3c:4d:01"
capabilities = ["Basic", "Dual ports", "Statistics V2", "PcapNG"]
[device.port_a]
source = "interface"
interface = "receiver"
TOML
}

send() { # FRAMES RATE
  local sent
  sent=$(in_namespace "$out/send_frames" sender "$1" "$2") || die "sending failed"
  [[ $sent == "$1" ]] || die "sent $sent"
}

cpu_ns() { cat "/proc/$1/task/"*/schedstat | awk '{ sum += $1 } END { printf "%.0f\n", sum }'; }
count() { capinfos -Mc "$1" | awk '/^Number of packets/ { print $NF }'; }
median() { sort -n | awk '{ value[NR] = $1 } END { print value[int((NR + 1) / 2)] }'; }

row() { # measure, figure, goal
  local verdict
  verdict=$(awk -v figure="$2" -v goal="$3" 'BEGIN { print figure <= goal ? "OK" : "MISSED" }')
  printf "%-${width}s %9s %7s  %s\n" "$1" "$2" "$3" "$verdict"
}
