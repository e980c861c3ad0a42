#!/usr/bin/env bash
# The Ansible role against several simulated hosts: ansible_test.sh CORVANE CORVANE_CONFIG CORVANE_REPORT ROLES
set -euo pipefail
command -v ansible-playbook >/dev/null || { echo 'skipped: no ansible-playbook'; exit 77; }
here=$(cd "$(dirname "$0")/ansible" && pwd)
WORK=$(mktemp -d)
trap 'rm -rf "$WORK"' EXIT
cd "$WORK"
export WORK CORVANE=$1 CORVANE_CONFIG=$2 CORVANE_REPORT=$3 ANSIBLE_ROLES_PATH=$4 ANSIBLE_HOME=$WORK/home \
  LC_ALL=C.UTF-8 ANSIBLE_LOCAL_TEMP=$WORK/tmp ANSIBLE_NOCOLOR=1 ANSIBLE_RETRY_FILES_ENABLED=false

fail() { echo "FAILED: $*"; cat log; exit 1; }
playbook() { ansible-playbook -i "$here/inventory.yml" "$here/site.yml" "$@" >log 2>&1 </dev/null; }
# play EXPECTED [OPTIONS]: how many tasks changed something on each host is as expected.
play() {
  local expected=$1 got
  shift
  playbook "$@" || fail "ansible-playbook $*"
  got=$(sed -nE 's/^(\w+) +: .*changed=([0-9]+).*/\1=\2/p' log | sort | paste -sd' ')
  [[ $got == "$expected" ]] || fail "$*: expected '$expected', got '$got'"
}
on_host() { CORVANE_SIM_STATE=$WORK/state/$1 "$CORVANE" "${@:2}"; }
# What every device is set to, a line each behind the host's name.
settings() {
  local host words
  for host in basle berne zurich; do
    for words in 'features show' 'filter show' 'timing status'; do
      # shellcheck disable=SC2086
      on_host $host $words | sed "/RTC time/d; /Deviation/d; s/^\s*/$host /"
    done
  done
}
expect_settings() { settings | cmp - "$1" || fail "$2"; }

settings >factory
play 'basle=1 berne=1 zurich=1' --check --diff
grep -q '"features.slicing": 200' log || fail 'the difference is not shown'
expect_settings factory 'check mode changed a device'

play 'basle=1 berne=1 zurich=1'
settings >settled
for line in 'berne Source MAC: 00:1a:*:00:00:01' 'basle Packet slicing : Enabled 200 bytes' \
  'zurich Loopback : Enabled' 'basle PPS compensation : -9.55 ns'; do
  grep -qxF "$line" settled || fail "not set: $line"
done
jq -se '(.[0].poe_show.unsupported | length == 1) and .[1].statistics.counters[15].counter == 16 and
  .[2].timing_status.timing_configuration.wait_for_sync' {basle,berne,zurich}.facts >log ||
  fail 'the facts'

# Idempotent and permanent: neither a second run nor a restart changes anything.
on_host basle reset >/dev/null
play 'basle=0 berne=0 zurich=0'
expect_settings settled 'the second run changed a device'

# A drift by hand comes back; another address of a filter is noticed.
on_host berne features set --slicing 0 >/dev/null
play 'basle=0 berne=1' -e '{"corvane_timing": {}}' --limit berne,basle
for changed in 1 0; do
  play "zurich=$changed" --limit zurich -e '{"corvane_filter": {"ip": "192.168.10.8"}}'
done

# The compensation stays when another timing setting changes.
play 'basle=1' --limit basle -e '{"corvane_timing": {"forcepps": true}}'
settings >settled
grep -qxF 'basle PPS compensation : -9.55 ns' settled || fail 'compensation drifted'

# What the device cannot do, and what there is not, is refused before anything is written.
printf '#!/bin/sh\ncat >/dev/null\necho other: no such command >&2\nexit 2\n' >other
chmod +x other
PATH=$WORK:$PATH
while IFS='|' read -r wish reason; do
  ! playbook --limit basle -e "$wish" || fail "accepted $wish"
  grep -q "$reason" log || fail "not the reason: $reason"
  expect_settings settled "$wish changed the device"
done <<'WISHES'
{"corvane_features": {"nosuch": 1}}|features.nosuch: no such setting
{"corvane_device": "9"}|device 9: no such device
{"corvane_features": {"slicing": 64, "autonega": true}}|autonega = true: the device lacks
{"corvane_timing": {"ppscomp": "fast"}}|expected nanoseconds
{"corvane_config_command": "other"}|other: no such command
WISHES
