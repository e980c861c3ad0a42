#!/usr/bin/env bash
# time_test.sh CORVANE FOLDER
#
# The recipe of docs/time.md and the line of contrib/systemd/corvane-nmea@.service give the real gpsd and
# chronyd the time of a simulated device whose sentences are late, as over USB. chronyd must select
# it, drop it without a fix and take it again. All of that is in namespaces of its own and chronyd runs
# with -x: no clock is set, no other daemon is met. The packages of gpsd and
# chrony are unpacked into FOLDER: installing them starts them, and a profile may keep installed ones
# off the files here. Ends with 77 where it cannot run.
set -euo pipefail
here=$(cd "$(dirname "$0")/.." && pwd)
corvane=$1 libraries=$2/usr/lib/x86_64-linux-gnu
PATH=$2/usr/sbin:$2/usr/bin:$PATH:/usr/sbin
skip() { echo "skipped: $*"; exit 77; }
unpacked() { LD_LIBRARY_PATH=$libraries "$@"; }

if [ -z "${apart-}" ]; then
  mkdir -p "$2"
  [ -e "$2/ready" ] ||
    (cd "$2" && apt-get download -qq chrony libedit2 libgps28 libbluetooth3 libusb-1.0-0 gpsd 2>/dev/null &&
      for package in *.deb; do dpkg -x "$package" . && rm "$package"; done && touch ready) || true
  (unpacked gpsd -V && unpacked chronyd -v && unpacked chronyc -v) || skip "gpsd and chrony cannot be had"
  spaces=(--net --ipc --pid --fork --kill-child)
  [ "$(id -u)" -eq 0 ] || spaces+=(--map-root-user)
  unshare "${spaces[@]}" ip link set lo up || skip "no namespaces"
  apart=yes exec unshare "${spaces[@]}" "$0" "$@"
fi

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mac=00:1a:2b:3c:4d:01
export CORVANE_SIM_STATE=$work/state CORVANE_SIM_CONFIG=$work/config.toml
ip link set lo up
# Every read takes 130 ms.
cat >"$work/config.toml" <<END
[[device]]
mac = "$mac"
type = 11
capabilities = ["Basic", "GPS"]
[[fault]]
function = "CorvaneAPIGPSOutputRead"
delay_ms = 130
END
# Of an option that stands twice, chrony takes the last: it polls four times a second.
cat >"$work/chrony.conf" <<END
$(grep '^refclock' "$here/docs/time.md") poll -2 dpoll -2 filter 1
port 0
bindcmdaddress /
bindcmdaddress 127.0.0.1
pidfile $work/chronyd.pid
user root
END

eval "$(grep -E '^(DEVICES|GPSD_OPTIONS)=' "$here/docs/time.md")"
export DBUS_SYSTEM_BUS_ADDRESS=unix:path=$work/none
# shellcheck disable=SC2086,SC2153
unpacked gpsd -N $GPSD_OPTIONS $DEVICES >"$work/gpsd.log" 2>&1 &
unpacked chronyd -x -d -f "$work/chrony.conf" >"$work/chronyd.log" 2>&1 &

line=$(sed -n 's/^ExecStart=//p' "$here/contrib/systemd/corvane-nmea@.service")
line=${line//%i/$mac} line=${line//\$\$/\$} line=${line/\/usr\/bin\/corvane/$corvane}
(until eval "$line"; do sleep 0.2; done) >"$work/line.log" 2>&1 & # as Restart=always does

fail() { printf '%s\n' "$@" "$(tail "$work"/*.log)"; exit 1; }
ask() { unpacked chronyc -c -h 127.0.0.1 "$1" 2>&1; }
# await STATE: until chrony gives the source this state, "*" when it is selected.
await() {
  for ((i = 0; i < 150; i++)); do
    state=$(ask sources) || true
    [[ $state != "#,$1,GPS,"* ]] || return 0
    sleep 0.1
  done
  fail "not $1 after 15 s: $state"
}
await '*'
sleep 2
# The clock's error in chrony's eyes: as far ahead as the sentences are late.
error=$(ask tracking | cut -d, -f5)
awk "BEGIN { exit !($error > -0.5 && $error < -0.005) }" || fail "chrony finds an error of $error s"
"${corvane%/*}/corvane-sim" event 'gps_fix = 0'
await '?'
"${corvane%/*}/corvane-sim" event 'gps_fix = 2'
await '*'
