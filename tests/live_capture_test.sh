#!/usr/bin/env bash
# Every one of 100,000 frames sent to a live interface is in the capture's files or counted as
# dropped, with room for them and without; frames of two interfaces are merged by their times; a
# capture whose interface goes away says so and leaves what it has.
#   live_capture_test.sh CORVANE SEND_FRAMES
# Ends with 77, saying why, where no network namespace can be made.
set -euo pipefail

corvane=$1
send_frames=$2
frames=100000
name=corvane-test-$$
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT

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

# configure PORT INTERFACE [PORT INTERFACE]
configure() {
  printf '[[device]]\nmac = "00:1a:2b:3c:4d:01"\ncapabilities = ["Statistics V2", "Dual ports"]\n' >"$folder/sim.toml"
  printf '[device.port_%s]\nsource = "interface"\ninterface = "%s"\n' "$@" >>"$folder/sim.toml"
  rm -rf "$folder/out"
  mkdir "$folder/out"
}

# start OPTION...
start() {
  ip netns exec "$name" "$corvane" directcapture start --dir "$folder/out" "$@" >/dev/null
}

# send FRAMES FRAMES_A_SECOND
send() {
  ip netns exec "$name" "$send_frames" sender "$@"
}

# check MAXCACHE FRAMES_A_SECOND: 0 drops are demanded when MAXCACHE is large.
check() {
  configure b receiver
  start --size 5 --count 0 --maxcache "$1" || fail "does not start"
  local sent kept dropped files
  sent=$(send "$frames" "$2")
  "$corvane" directcapture stop >/dev/null || fail "does not stop"
  dropped=$("$corvane" statistics | awk '/^SW dropped/ { print $NF }')
  kept=$(capinfos -Tmcr "$folder"/out/* | awk -F, '{ kept += $2 } END { print kept }')
  echo "cache $1 MB, $2 frames a second: $sent sent, $kept in files, $dropped dropped"
  [[ $((kept + dropped)) == "$frames" ]] || fail "frames are missing"
  [[ $1 -lt 64 || $dropped == 0 ]] || fail "frames were dropped in spite of the cache"
  # The numbers of the frames, in their order.
  files=("$folder"/out/*)
  tshark -r "${files[0]}" -T fields -e data 2>/dev/null | cut -c1-8 |
    sort -c || fail "the frames are not in order"
}

check 64 50000
check 0 1000000

# Both ends of the pair see each frame, one as it leaves and one as it comes. The kernel may show one
# too late on a busy machine: a few attempts.
merge() {
  configure a sender b receiver
  start || fail "does not start at two interfaces"
  send 5000 20000 >/dev/null
  "$corvane" directcapture stop >/dev/null || fail "does not stop at two interfaces"
  tshark -r "$folder"/out/* -T fields -e frame.interface_id -e frame.time_epoch \
    >"$folder/merged" 2>/dev/null
  local counts
  counts=$(cut -f1 "$folder/merged" | sort | uniq -c | xargs)
  [[ $counts == "5000 0 5000 1" ]] || fail "two interfaces gave $counts"
  cut -f2 "$folder/merged" | sort -cn 2>/dev/null
}
merge || merge || merge || merge || merge || fail "two interfaces are not merged by their times"

configure b receiver
start || fail "does not start again"
send 1000 10000 >/dev/null
sleep 1.2 # until they are flushed
ip -n "$name" link del sender
for ((i = 0; i < 100; ++i)); do
  "$corvane" directcapture status | grep -q 'Error : 1' && break
  sleep 0.1
done
"$corvane" directcapture status | grep -q 'Error : 1' || fail "no error without the interface"
[[ $(capinfos -Tmcr "$folder"/out/* | cut -d, -f2) == 1000 ]] || fail "the file is not whole"
start 2>"$folder/reason" && fail "starts without the interface"
grep -q 'no such interface\|No such device' "$folder/reason" || fail "says: $(<"$folder/reason")"
