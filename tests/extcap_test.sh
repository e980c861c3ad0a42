#!/usr/bin/env bash
# The devices in the real tshark: extcap_test.sh CORVANE_EXTCAP CORVANE
# The list, a capture of two devices over many files, its end by every road, failures, leftovers.
set -u
extcap=$1
corvane=$2
device=00:1a:2b:3c:4d:01
other=00:1a:2b:3c:4d:02
command -v tshark >/dev/null || { echo 'skipped: no tshark'; exit 77; }
folder=$(mktemp -d)
trap 'kill $(jobs -p) 2>/dev/null; rm -rf "$folder"' EXIT
cd "$folder" || exit 1
mkdir -p wireshark/extcap tmp
ln -s "$extcap" wireshark/extcap/
export XDG_CONFIG_HOME=$folder TMPDIR=$folder/tmp CORVANE_SIM_CONFIG=$folder/sim.toml CORVANE_SIM_STATE=$folder/state
for mac in $device $other; do
  printf '[[device]]\ntype = 11\nmac = "%s"\ncapabilities = ["Basic", "Dual ports"]\n' "$mac"
  printf '[device.traffic]\nrate = 5000\n'
done >sim.toml
sed 's/5000/0/' sim.toml >slow.toml

fail() { echo "FAILED: $*"; cat log; exit 1; }
running() { "$corvane" directcapture status --device $device | grep -q "Enabled : $1"; }
# until 0|1: at most ten seconds; the time that it took is in $waited, in ms.
until_running() {
  local from=${EPOCHREALTIME/./}
  until running "$1" || [ $((${EPOCHREALTIME/./} - from)) -gt 10000000 ]; do :; done
  waited=$(((${EPOCHREALTIME/./} - from) / 1000))
}
view() { env --default-signal=INT tshark -q "$@" -w seen.pcapng >log 2>&1; }
# tshark does not wait for what it started.
expect_clean() {
  for ((i = 0; i < 30; ++i)); do
    running 0 && [ -z "$(find tmp -name 'corvane*')" ] && return
    sleep 0.1
  done
  fail "$1: something is left: $(ls tmp)"
}

tshark -D 2>log | grep -c '[0-9]. 00:1a:2b:3c:4d:0[12] (Corvane-M7)' | grep -qx 2 || fail 'the list'
CORVANE_SIM_CONFIG=/none "$extcap" --extcap-config --extcap-interface $device >log 2>&1 ||
  fail 'the settings need the library'

# Files of 8 MB, three seconds each, for a busy machine: every frame, in order. The generator's are 200
# microseconds apart, but for those that the device itself leaves out.
view -i $device -o extcap.00_1a_2b_3c_4d_01.size:8 -a duration:8 || fail 'rotation'
tshark -r seen.pcapng -T fields -e frame.time_epoch 2>log |
  awk 'NR > 1 && ($1 < last || $1 - last > 0.0024) { wrong = 1 } { last = $1 } END { exit wrong || NR < 30000 }' ||
  fail 'frames are missing'
expect_clean rotation
view -i $device -i $other -a duration:2 || fail 'two devices'
for id in 0 1 2 3; do
  [ "$(tshark -r seen.pcapng -Y "frame.interface_id == $id" 2>log | wc -l)" -gt 1000 ] ||
    fail "two devices: nothing of interface $id"
done
expect_clean 'two devices'

# A viewer that takes nothing for a while: the disk has two files, then there is a gap.
mkfifo pipe
(sleep 4; cat) <pipe >raw.pcapng &
"$extcap" --capture --extcap-interface $device --fifo pipe --size 1 2>log &
slow=$!
until_running 1
sleep 3
most=$(du -sk tmp/corvane* | cut -f1)
[[ $most -gt 1000 && $most -lt 2200 ]] || fail "$most kB are on the disk"
sleep 2
kill $slow
wait $slow || fail 'a slow viewer'
grep -q 'too slow, files lost: [0-9]' log || fail 'nothing is lost, or it is not said'
tshark -r raw.pcapng >seen 2>log || fail 'a gap between files'

# The roads to the end, without traffic: nothing but the end itself can be noticed.
export CORVANE_SIM_CONFIG=$folder/slow.toml
for signal in INT TERM KILL; do
  view -i $device &
  until_running 1
  sleep 1
  pkill -$signal -P $! tshark || fail "no tshark for $signal"
  until_running 0
  [ "$waited" -lt 1000 ] || fail "the capture went on for $waited ms after $signal"
  expect_clean "$signal"
done

# One that was killed has left its capture and its folder; the next start removes both.
cat pipe >raw &
"$extcap" --capture --extcap-interface $device --fifo pipe &
until_running 1
kill -KILL $!
if [ -z "$(ls tmp)" ] || running 0; then fail 'nothing is left to remove'; fi
view -i $device -a duration:1 || fail 'the leftover is in the way'
expect_clean leftover

check_failure() { # STATUS TEXT OPTION...
  cat pipe >raw &
  timeout 20 "$extcap" --capture --extcap-interface $device --fifo pipe "${@:3}" 2>log
  local status=$?
  wait $!
  [ "$status:$(grep -c "$2" log)" = "$1:1" ] || fail "expected $1 and '$2', got $status"
}
mkdir out
"$corvane" directcapture start --dir out >log
check_failure 244 'Failed: capture is already started'
running 1 || fail 'the capture of somebody else was stopped'
"$corvane" directcapture stop >log
check_failure 251 'there is no other capture filter' --extcap-capture-filter tcp
TMPDIR=/nowhere check_failure 255 'No such file'
printf '[[fault]]\nfunction = "CorvaneAPIDiskDumpGetStatus"\nfrom = 3\nstatus = -9\n' >>slow.toml
check_failure 247 'Failed: cannot get status'
expect_clean 'a device that goes away'
