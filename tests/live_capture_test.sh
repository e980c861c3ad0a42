#!/usr/bin/env bash
# Every one of 100,000 frames sent to a live interface is in the capture's files or counted as
# dropped, with room for them and without.
#   live_capture_test.sh CORVANE SEND_FRAMES
# Ends with 77, saying why, where no network namespace can be made.
set -euo pipefail

corvane=$1
send_frames=$2
frames=100000
name=corvane-test-$$
folder=$(mktemp -d)

skip() { echo "skipped: $*"; exit 77; }
fail() { echo "live_capture_test.sh: $*" >&2; exit 1; }

clean_up() {
  "$corvane" directcapture stop >/dev/null 2>&1 || true
  ip netns del "$name" 2>/dev/null || true
  rm -rf "$folder"
}

for program in ip capinfos tshark; do
  command -v "$program" >/dev/null || skip "$program is not installed"
done
ip netns add "$name" 2>"$folder/reason" || skip "no network namespace: $(<"$folder/reason")"
trap clean_up EXIT
export CORVANE_SIM_CONFIG=$folder/sim.toml CORVANE_SIM_STATE=$folder/state
# The kernel would send frames of its own.
ip netns exec "$name" sh -c 'echo 1 >/proc/sys/net/ipv6/conf/default/disable_ipv6' ||
  skip "IPv6 cannot be switched off"
ip -n "$name" link add sender type veth peer name receiver || skip "no veth pair"
ip -n "$name" link set sender up
ip -n "$name" link set receiver up
cat >"$CORVANE_SIM_CONFIG" <<TOML
[[device]]
mac = "00:1a:2b:3c:4d:01"
capabilities = ["Statistics V2"]
[device.port_b]
source = "interface"
interface = "receiver"
TOML

# check MAXCACHE FRAMES_A_SECOND: 0 drops are demanded when MAXCACHE is large.
check() {
  rm -rf "$folder/out"
  mkdir "$folder/out"
  ip netns exec "$name" "$corvane" directcapture start --dir "$folder/out" --size 5 --count 0 \
    --maxcache "$1" >/dev/null || fail "does not start"
  local sent kept dropped
  sent=$(ip netns exec "$name" "$send_frames" sender "$frames" "$2")
  "$corvane" directcapture stop >/dev/null || fail "does not stop"
  dropped=$("$corvane" statistics | awk '/^SW dropped/ { print $NF }')
  kept=$(capinfos -Tmcr "$folder"/out/* | awk -F, '{ kept += $2 } END { print kept }')
  echo "cache $1 MB, $2 frames a second: $sent sent, $kept in files, $dropped dropped"
  [[ $((kept + dropped)) == "$frames" ]] || fail "frames are missing"
  [[ $1 -lt 64 || $dropped == 0 ]] || fail "frames were dropped in spite of the cache"
  # The numbers of the frames, in their order.
  tshark -r "$(ls "$folder"/out/* | head -1)" -T fields -e data 2>/dev/null | cut -c1-8 |
    sort -c || fail "the frames are not in order"
}

check 64 50000
check 0 1000000
