#!/usr/bin/env bash
# cxx_library_test.sh CORVANE LIBRARY: the utility with a device library that is C++ (preloaded, see
# tools/cxx_library.cpp): nothing of the utility's own C++ runtime gets in its way, and what it was
# handed is there to the end.
set -euo pipefail
corvane=$1
export LD_PRELOAD=$2
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
export CORVANE_SIM_STATE=$folder/state
unset CORVANE_SIM_CONFIG

# expect WHAT EXPECTED FOUND
expect() {
  [ "$2" = "$3" ] && return
  printf '%s: expected\n%s\nfound\n%s\n' "$1" "$2" "$3" >&2
  exit 1
}

# The C library's own variables, which carry its version, are shared with it on purpose.
exports=$(env -u LD_PRELOAD nm -D --defined-only "$corvane" | grep -v '@GLIBC' || true)
expect 'what the utility exports' '' "$exports"

found=$("$corvane" list 2>&1 >/dev/null)
expect 'an exception that the library catches' 'a library throws' "$found"

found=$(CORVANE_UNCAUGHT=1 "$corvane" list 2>&1) && status=0 || status=$?
expect 'an exception that nobody catches' "134 a library throws
terminate called after throwing an instance of 'std::runtime_error'
  what():  a library throws" "$status $found"

# What it reads as the process ends: a capture that cannot start gets its texts too.
late() { "$corvane" "$@" 2>&1 >/dev/null | grep '^late' || true; }
expect 'folder and pattern, read late' "late: $folder/none"$'\nlate: b' \
  "$(late directcapture start --dir "$folder/none" --pattern b)"
expect 'a name, read late' "late: $folder/none/b" "$(late directcapture start -o "$folder/none/b")"
expect 'a firmware path, read late' "late: $folder/none" "$(late update --firmware "$folder/none")"
