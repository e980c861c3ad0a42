#!/usr/bin/env bash
# The Ansible role against several simulated hosts: ansible_test.sh CORVANE CORVANE_REPORT ROLES
set -euo pipefail
corvane=$1 report=$2 roles=$3

if ! command -v ansible-playbook >/dev/null; then
  echo 'skipped: ansible-playbook (package ansible-core) is not installed'
  exit 77
fi
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
export ANSIBLE_ROLES_PATH=$roles ANSIBLE_HOME=$work/home ANSIBLE_LOCALHOST_WARNING=false \
  ANSIBLE_NOCOLOR=1 ANSIBLE_RETRY_FILES_ENABLED=false ANSIBLE_LOCAL_TEMP=$work/tmp LC_ALL=C.UTF-8

# Hosts that differ in what they wish; device 0 is the tap that takes all of it.
cat >inventory.yml <<EOF
taps:
  hosts:
    berne:
      corvane_filter: {srcmac: "00-1A-*-00-00-01", dstip: 10.1.*.*, port: 443, vlanid: 30}
      corvane_report_commands: [statistics]
    basle:
      corvane_report_commands: [poe show]
      corvane_filter: {enabled: false}
      corvane_timing: {ppscomp: -9.55, portBts: egress}
    zurich:
      corvane_features: {slicing: 0, timestamps: false, loopback: "on"}
      corvane_filter: {ip: 192.168.10.7}
  vars:
    ansible_connection: local
    ansible_python_interpreter: $(command -v python3)
    corvane_command: $corvane
    corvane_report_command: $report
    corvane_state_dir: $work/memory/{{ inventory_hostname }}
    corvane_features: {slicing: 200, inline: true, keepcrc32: true}
    corvane_timing: {tssource: gps, waitforsync: true}
EOF
cat >site.yml <<EOF
- hosts: taps
  gather_facts: false
  environment: {CORVANE_SIM_STATE: "$work/state/{{ inventory_hostname }}"}
  roles: [corvane]
  tasks:
    - ansible.builtin.copy:
        content: "{{ corvane_reports | to_json }}"
        dest: "$work/{{ inventory_hostname }}.facts"
      check_mode: false
      changed_when: false
EOF

fail() {
  echo "FAILED: $*"
  cat log
  exit 1
}
play() {
  ansible-playbook -i inventory.yml site.yml "$@" >log 2>&1 || fail "ansible-playbook $*"
}
# Every host's count in the recap, as "berne=1".
counts() {
  sed -nE "s/^(\w+) +: .*$1=([0-9]+).*/\1=\2/p" log | sort | tr '\n' ' '
}
expect() {
  [[ $2 == "$3" ]] || fail "$1: expected '$3', got '$2'"
}
on_host() {
  local host=$1
  shift
  CORVANE_SIM_STATE=$work/state/$host "$corvane" "$@"
}
fact() {
  python3 -c 'import json,sys; print(eval("f" + sys.argv[2], {}, {"f": json.load(open(sys.argv[1]))}))' \
    "$1.facts" "$2"
}
settings() {
  local words
  for words in 'features show' 'filter show' 'timing status'; do
    # shellcheck disable=SC2086
    on_host "$1" $words | grep -v 'RTC time'
  done
}

for host in berne basle zurich; do settings $host >"$host.factory"; done
play --check --diff
expect 'check mode reports' "$(counts changed)" 'basle=1 berne=1 zurich=1 '
grep -q '"slicing": 200' log || fail 'the difference is not shown'
for host in berne basle zurich; do
  settings $host | cmp - "$host.factory" || fail "check mode changed $host"
done
[[ ! -e memory ]] || fail 'check mode wrote the memory'

play
expect 'first run' "$(counts changed)" 'basle=1 berne=1 zurich=1 '
for host in berne basle zurich; do settings $host >"$host.set"; done
grep -q 'Source MAC: 00:1a:\*:00:00:01' berne.set || fail 'the filter is not set'
grep -q 'Packet slicing : Enabled 200 bytes' basle.set || fail 'slicing is not set'
grep -q 'Loopback : Enabled' zurich.set || fail 'loopback is not set'
grep -q 'PPS compensation : -9.55 ns' basle.set || fail 'the compensation is not set'
expect 'facts' "$(fact zurich '["timing_status"]["timing_configuration"]["wait_for_sync"]')" True
expect 'facts of what there is not' "$(fact basle '["poe_show"]["errors"] != []')" True
expect 'facts' "$(fact berne '["statistics"]["counters"][15]["counter"]')" 16

play
expect 'second run' "$(counts changed)" 'basle=0 berne=0 zurich=0 '
for host in berne basle zurich; do
  settings $host | cmp - "$host.set" || fail "the second run changed $host"
done

# Permanent: a restart loses nothing.
on_host basle reset >/dev/null
play
expect 'after a restart' "$(counts changed)" 'basle=0 berne=0 zurich=0 '

# A drift by hand comes back, and so does a filter address that only the memory knows.
on_host berne features set --slicing 0 >/dev/null
play -e '{"corvane_timing": {}}' --limit berne,basle
expect 'after a drift' "$(counts changed)" 'basle=0 berne=1 '
play --limit zurich -e '{"corvane_filter": {"ip": "192.168.10.8"}}'
expect 'another address' "$(counts changed)" 'zurich=1 '
play --limit zurich -e '{"corvane_filter": {"ip": "192.168.10.8"}}'
expect 'the same address' "$(counts changed)" 'zurich=0 '

# The compensation stays when another timing setting changes.
play --limit basle -e '{"corvane_timing": {"forcepps": true}}'
on_host basle timing status | grep -q 'PPS compensation : -9.55 ns' || fail 'compensation drifted'

# What the device cannot do, and what there is not, is refused before anything is written.
settings basle >basle.set
refused() {
  if ansible-playbook -i inventory.yml site.yml --limit basle -e "$1" >log 2>&1; then
    fail "accepted $1"
  fi
  grep -q "$2" log || fail "not the reason: $2"
  settings basle | cmp - basle.set || fail "$1 changed the device"
}
refused '{"corvane_features": {"nosuch": 1}}' 'features has no nosuch'
refused '{"corvane_device": "9"}' 'Invalid Corvane device selected'
refused '{"corvane_features": {"slicing": 64, "autonega": true}}' 'device cannot change autonega'
echo 'passed'
