#!/usr/bin/env bash
# chrony_test.sh CORVANE FOLDER
#
# Sets a simulated device from a real server, chrony on the loopback address: the device's clock
# then is within 5 ms of the host's. chrony is unpacked into FOLDER rather than installed, for
# installing it removes other time daemons; -x leaves the host's clock alone. Ends with 77 where it
# cannot run.
set -euo pipefail
corvane=$1 folder=$2 chronyd=$2/usr/sbin/chronyd
skip() { echo "skipped: $*"; exit 77; }

mkdir -p "$folder"
[ -x "$chronyd" ] ||
  (cd "$folder" && apt-get download -qq chrony 2>/dev/null && dpkg -x chrony_*.deb .) ||
  skip "chrony cannot be had"
ldd "$chronyd" | grep -q 'not found' && skip "chrony lacks a library"

work=$(mktemp -d)
"$chronyd" -x -d "local stratum 10" "allow 127.0.0.1" "bindaddress 127.0.0.1" "cmdport 0" \
  "bindcmdaddress /" "pidfile $work/chronyd.pid" "user $(id -un)" >"$work/chrony.log" 2>&1 &
server=$!
trap 'kill "$server" 2>/dev/null || true; rm -rf "$work"' EXIT
sleep 1
kill -0 "$server" 2>/dev/null || skip "chrony does not run: $(tail -n 1 "$work/chrony.log")"

export CORVANE_SIM_CONFIG=$work/sim.toml CORVANE_SIM_STATE=$work/state
printf '[[device]]\nmac = "00:1a:2b:3c:4d:5e"\ncapabilities = ["GPS"]\n' >"$CORVANE_SIM_CONFIG"
# The scheduler may hold up any one run: the median of several counts.
for _ in 1 2 3 4 5; do
  "$corvane" timing setsntp --sntpserver 127.0.0.1 >"$work/out"
  [[ $(<"$work/out") == *$'SNTP : time obtained from server\nTime updated' ]]
  # The simulator keeps how far the device's clock is from the host's, in nanoseconds.
  sqlite3 "$work/state/devices.db" "SELECT hex(bytes) FROM fact WHERE name = 'clock_offset'"
done >"$work/offsets"
python3 - "$work/offsets" <<'CHECK'
import sys
lines = open(sys.argv[1], encoding="ascii")
offsets = sorted(int.from_bytes(bytes.fromhex(line), "little", signed=True) for line in lines)
print("the device's clock was off the host's by", [f"{ns / 1e6:+.3f} ms" for ns in offsets])
sys.exit(abs(offsets[len(offsets) // 2]) > 5_000_000)
CHECK
