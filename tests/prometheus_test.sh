#!/usr/bin/env bash
# prometheus_test.sh BIN FOLDER SOURCE
#
# What corvane-metrics writes, whatever the devices do; the alerts; and all of it in a real node exporter and
# a real Prometheus. Both are unpacked into FOLDER where they are not installed, for their packages start
# servers. Ends with 77 where they cannot be had.
set -euo pipefail
bin=$1 rules=$3/contrib/prometheus/corvane.rules.yml
PATH=$bin:$PATH:$2/usr/bin
mkdir -p "$2"
for package in prometheus prometheus-node-exporter; do
  command -v $package >/dev/null || (cd "$2" && apt-get download -qq $package 2>/dev/null &&
    dpkg --fsys-tarfile ${package}_*.deb | tar -x ./usr/bin && rm ${package}_*.deb) ||
    { echo "skipped: $package cannot be had"; exit 77; }
done

work=$(mktemp -d)
# shellcheck disable=SC2046
trap 'kill $(jobs -p) 2>/dev/null || true; wait; rm -rf "$work"' EXIT
cd "$work"
mkdir metrics
file=metrics/corvane.prom
export CORVANE_SIM_STATE=$work/state CORVANE_SIM_CONFIG=''
fail() {
  echo "FAILED: $*"
  cat ./*log $file 2>/dev/null | grep -E '^corvane_(up|lib|read)|rror' | tail -30
  exit 1
}

# The alerts, on series of their own.
promtool test rules "$3/tests/prometheus_rules.yml" >log || { cat log; exit 1; }

# A tap may be any of the built-in ones: together they have every metric that an alert uses. A label may be
# anything.
corvane directcapture start --dir "$work" >log
corvane-metrics $file || fail 'the built-in devices'
corvane directcapture stop >log
promtool check metrics <$file || fail promtool
corvane list | corvane-report --prometheus --label a=$'"\\\xff' | promtool check metrics || fail 'a label'
[[ $(stat -c %a metrics/*) == 644 ]] || fail "$(ls -l metrics)"
sed -n 's/^# TYPE \(.*\) .*/\1/p' $file | sort -u >names
lacking=$(grep -o 'corvane_[a-z0-9_]*' "$rules" | sort -u | comm -23 - names)
[ -z "$lacking" ] || fail "no such metrics as in the rules: $lacking"

# In a real Prometheus. Alerts come at once here, not after the minutes that the rules say.
address() { for ((i = 0; i < 100; ++i)); do ss -Hltnp | awk -v pid="pid=$1," 'index($0, pid) { print $4 }' | grep . && return; sleep 0.1; done; }
ask() { promtool query instant "http://$server" "$1"; }
# until TEXT QUERY: at most ten seconds
until_seen() {
  for ((i = 0; i < 50; ++i)); do
    seen=$(ask "$2" 2>&1) && grep -q "$1" <<<"$seen" && return
    sleep 0.2
  done
  fail "no $1 in $2: $seen"
}
prometheus-node-exporter --collector.disable-defaults --collector.textfile \
  --collector.textfile.directory=metrics --web.listen-address=127.0.0.1:0 2>exporter.log &
sed '/for: /d' "$rules" >quick.rules.yml
cat >prometheus.yml <<END
global: {scrape_interval: 250ms, evaluation_interval: 250ms}
rule_files: [quick.rules.yml]
scrape_configs: [{job_name: node, static_configs: [{targets: ["$(address $!)"]}]}]
END
prometheus --config.file=prometheus.yml --storage.tsdb.path=data --web.listen-address=127.0.0.1:0 2>log &
server=$(address $!)
until_seen '=> 0 ' node_textfile_scrape_error
until_seen corvane_up '{__name__="corvane_up"}'
ask 'group by (__name__) ({__name__=~"corvane_.*"})' | sed 's/ .*//' | sort | diff - names | head -5 ||
  fail 'the metrics in Prometheus are others'
link='ALERTS{alertname="CorvaneLinkDown",alertstate="firing",device="00:1a:2b:3c:4d:01"}'
until_seen '02.*port="B"' 'ALERTS{alertname="CorvaneLinkDown",alertstate="firing"}' # a cage without light
[ -z "$(ask "$link")" ] || fail "$(ask "$link")"
corvane-sim event 'cable_a = 0' --device 0
corvane-metrics $file
until_seen 'port="A"' "$link"
until_seen '=> 0 ' node_textfile_scrape_error

# expect WHAT PATTERN...: the metrics of these devices have a line that is the pattern, or with ! have none
expect() {
  local pattern
  for pattern in "${@:2}"; do
    if [[ $pattern == !* ]]; then ! grep -qx "${pattern#!}" $file; else grep -qx "$pattern" $file; fi ||
      fail "$1: $pattern"
  done
  promtool check metrics <$file || fail "$1"
}
# devices [FAULT]: two devices, and what is wrong with the first
devices() {
  printf '[[device]]\nmac = "00:00:00:00:00:0%s"\ntype = 11\ncapabilities = ["Basic"%s]\n' \
    1 ', "Statistics V2"' 2 '' >sim.toml
  [ $# -eq 0 ] || printf '%s\n' '[[fault]]' "$@" >>sim.toml
}
export CORVANE_SIM_CONFIG=$work/sim.toml
first='device="00:00:00:00:00:01"' second='device="00:00:00:00:00:02"'
devices 'function = "CorvaneAPIGetStatistics"' 'delay_ms = 60000' 'device = "00:00:00:00:00:01"'
corvane-metrics --timeout 2 $file
expect 'a device that hangs' "corvane_up{$first} 0" "corvane_up{$second} 1" "corvane_reading_failures{$first} [1-9]" \
  "corvane_reading_failures{$second} 0" "corvane_device_info{$first,.*model=.*" "corvane_library_up 1" \
  "!corvane_sw_dropped_total{$first} .*" "corvane_direct_capture_status_error{$second} 0" \
  'corvane_up{device="00:1a:2b:3c:4d:01"} 0' 'corvane_reading_failures{device="00:1a:2b:3c:4d:01"} 1' \
  '!corvane_[^ur].*{device="00:1a:2b:3c:4d:01".*'
times=$(sed -n 's/^corvane_reading_timestamp_seconds{device="00:00.*} //p' $file)
[ $((${times#*$'\n'} - ${times%$'\n'*})) -lt 2 ] || fail "the second waited for the first: $times"
devices 'function = "CorvaneAPIGetStatistics"' 'status = -7' 'device = "00:00:00:00:00:01"'
corvane-metrics $file
expect 'a report that fails' "corvane_up{$first} 1" "corvane_reading_failures{$first} 1" "corvane_errors{$first} 1"
rm $file
corvane-metrics $file
expect 'another start' "!corvane_up{device=\"00:1a.*"
devices 'function = "CorvaneAPIGetDevicesList"' 'delay_ms = 60000'
corvane-metrics --timeout 1 $file
expect 'a list that hangs' 'corvane_library_up 0' "corvane_up{$first} 0" "corvane_up{$second} 0" "!corvane_device_info.*"
devices
corvane-metrics $file && corvane-metrics $file & corvane-metrics $file && wait $!
expect 'two at once' "corvane_up{$first} 1" "corvane_up{$second} 1"

# What cannot be written leaves the old file, and nothing beside it.
echo old >metrics/old.prom
mkdir full
# shellcheck disable=SC2016
printf '#!/bin/sh\n[ "$1" = -d ] && exec /usr/bin/mktemp -d || ln -s /dev/full "$1" && echo "$1"\n' >full/mktemp
chmod +x full/mktemp
! PATH=$work/full:$PATH corvane-metrics metrics/old.prom 2>log || fail 'a full disk'
! corvane-metrics none/x.prom 2>log || fail 'no folder'
for wrong in '' --timeout '--timeout 0 x' '--timeouts x' 'x y'; do
  # shellcheck disable=SC2086
  corvane-metrics $wrong 2>log && fail "wrong: $wrong" || [ $? -eq 2 ] || fail "wrong: $wrong"
done
[ "$(cat metrics/old.prom) $(ls metrics)" = $'old corvane.prom\nold.prom' ] || fail "$(ls metrics)"
