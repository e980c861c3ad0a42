#!/usr/bin/env bash
# services_test.sh BIN SOURCE: systemd takes the units of contrib/systemd, and their exposure is what the
# page there says; corvane-capture keeps a capture running and ends as the service expects.
set -u
bin=$1 units=$2/contrib/systemd
command -v systemd-analyze >/dev/null || { echo 'skipped: no systemd-analyze'; exit 77; }
work=$(mktemp -d)
# shellcheck disable=SC2046
trap 'kill $(jobs -p) 2>/dev/null; wait; rm -rf "$work"' EXIT
cd "$work" || exit 1
fail() { echo "FAILED: $*"; cat said seen 2>/dev/null; exit 1; }

# All units, with an address as instance and with everything that a library may need. Verifying a unit says
# 0 whatever is wrong in another that it wants.
mkdir units sleeps
for unit in "$units"/*.service "$units"/*.timer; do
  sed "s|=/usr/bin/|=$bin/|" "$unit" >"units/${unit##*/}"
  mkdir "units/${unit##*/}.d"
  [[ $unit == *.timer ]] || cp "$units/closed-library.conf" "units/${unit##*/}.d"
done
device=00:1a:2b:3c:4d:01
printf '[Unit]\nWants=%s\n' "corvane-metrics.timer corvane-capture@$device.service corvane-nmea@$device.service corvane-apply@1-2.service" >units/all.target
SYSTEMD_UNIT_PATH=$work/units: systemd-analyze verify --man=no all.target >seen 2>&1 || fail 'the units'
grep "$work" seen && fail 'the units'
for unit in "$units"/*.service; do
  exposure=$(systemd-analyze security --offline=true "$unit" 2>/dev/null | sed -n 's/.*exposure level for .*: \([0-9.]*\) .*/\1/p')
  grep -q "^| \`${unit##*/}\` |.*| $exposure |$" "$units/README.md" || fail "${unit##*/}: $exposure"
done

# capture OPTION...: keeps a capture in $program, and looks at it more often than every five seconds
printf '#!/bin/sh\nexec /bin/sleep 0.1\n' >sleeps/sleep
chmod +x sleeps/sleep
export CORVANE_SIM_STATE=$work/state CORVANE_SIM_CONFIG=$work/sim.toml
printf '[[device]]\nmac = "%s"\ntype = 11\ncapabilities = ["Basic", "Dual ports", "PcapNG"]\n' $device 00:00:00:00:00:09 >sim.toml
capture() {
  : >said
  PATH=$work/sleeps:$PATH timeout 20 "$bin/corvane-capture" $device "$@" >>said 2>&1 &
  program=$!
}
# saying TEXT [TIMES]: waits until it has said so; ended STATUS TEXT: it ends, and says so at last
saying() {
  for ((i = 0; i < 100; ++i)); do
    [ "$(grep -c "$1" said)" -ge "${2-1}" ] && return
    sleep 0.1
  done
  fail "it does not say: $1"
}
ended() {
  wait "$program"
  local status=$?
  [[ "$status $(grep ^corvane-capture: said | tail -1)" =~ ^$1\ .*$2 ]] || fail "$status instead of $1 and $2"
}
running() { "$bin/corvane" directcapture status --device $device | grep -q "Enabled : $1"; }

cp sim.toml here.toml
printf '[[fault]]\naway = true\ndevice = "%s"\nafter_s = 0\nfor_s = 1.5\n' $device >>sim.toml
capture --dir "$work"
saying 'away; the capture starts when it comes'
saying 'capture started'
running 1 || fail 'no capture'
"$bin/corvane" reset --device $device >seen
saying 'it has restarted'
saying 'capture started' 2
kill $program
ended 0 'capture stopped'
running 0 || fail 'the capture goes on'
[ "$(find . -name '*.pcapng' | wc -l)" -eq 2 ] || fail "$(ls)"

cp here.toml sim.toml
capture --dir "$work" --count 1 --fileduration 1
ended 0 complete
"$bin/corvane" directcapture start --device $device --dir "$work" >seen
capture --dir "$work"
saying 'runs already'
kill $program
ended 0 'capture stopped'
running 0 || fail 'the capture that ran already goes on'
capture --dir "$work/none"
ended 1 'not started, status 231: Failed: cannot start capture'
capture --frobnicate
ended 2 'no such options: --frobnicate'
mkdir gone
capture --dir "$work/gone" --fileduration 1 --count 0
saying 'capture started'
rm -r gone
ended 1 'the capture failed:.Error : 1'
printf '[[fault]]\naway = true\ndevice = "%s"\nfor_s = 600\n' $device >>sim.toml
capture --dir "$work"
saying away
kill $program
ended 0 'away; the capture starts when it comes'
