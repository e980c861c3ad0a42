#!/usr/bin/env bash
# promtool_test.sh CORVANE CORVANE_REPORT FOLDER
#
# All reports of each built-in device, one after another, are metrics that promtool takes; the files
# of all devices have no sample in common, for then none of them would be taken. promtool is
# unpacked into FOLDER where it is not installed, for its package starts a server. Ends with 77
# where it cannot be had.
set -euo pipefail
corvane=$1 report=$2 PATH=$PATH:$3/usr/bin
skip() { echo "skipped: $*"; exit 77; }

mkdir -p "$3"
command -v promtool >/dev/null ||
  (cd "$3" && apt-get download -qq prometheus 2>/dev/null &&
    dpkg --fsys-tarfile prometheus_*.deb | tar -x ./usr/bin/promtool && rm prometheus_*.deb) ||
  skip "promtool cannot be had"

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export CORVANE_SIM_STATE=$work/state CORVANE_SIM_CONFIG=
for device in 0 1 2; do
  for words in version 'features show' 'portcontrol show' portstatus sfp 'poe show' 'filter show' \
    'packet_type_filter show' 'dpi show' statistics 'statsv2 show' 'directcapture status' \
    'timing status' 'capabilities show' list; do
    # shellcheck disable=SC2086
    [ "$words" = list ] && "$corvane" list || "$corvane" $words --device $device || true
  done >"$work/text"
  "$report" --prometheus --label device=$device --label a=$'"\\\xff' <"$work/text" >"$work/$device.prom"
  promtool check metrics <"$work/$device.prom"
  grep -q "^corvane_device_info{device=\"$device\",.*mac=.*firmware=" "$work/$device.prom"
done
sort "$work"/*.prom | grep -v '^#' | sed 's/ [^ ]*$//' | uniq -d | tee "$work/twice"
[ ! -s "$work/twice" ]
