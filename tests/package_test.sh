#!/usr/bin/env bash
# package_test.sh BUILD: builds the Debian packages from the build folder twice, compares them, checks
# them with lintian and what they say is linked in, compiles a part of the sources elsewhere and compares
# that, installs the packages into an empty root and runs the utility there on the simulator.
set -euo pipefail
build=$1
source=$(cd "$(dirname "$0")/.." && pwd)
for tool in cpack dpkg-deb dpkg-shlibdeps fakeroot lintian; do
  command -v $tool >/dev/null || { echo "skipped: no $tool"; exit 77; }
done
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
fail() { printf '%s\n' "$*"; exit 1; }

for time in first second; do
  (mkdir "$folder/$time" && cd "$folder/$time" &&
    cpack --config "$build/CPackConfig.cmake" -B .) >"$folder/log" 2>&1 ||
    fail "cpack: $(<"$folder/log")"
done
packages=("$folder"/first/*.deb)
[ ${#packages[@]} -eq 3 ] || fail "expected three packages: ${packages[*]}"
for package in "${packages[@]}"; do
  cmp "$package" "$folder/second/${package##*/}" || fail 'the second time is another package'
done

day=$(sed -n 's/^## [0-9.]* - //p' "$source/CHANGELOG.md" | head -1)
seconds=${SOURCE_DATE_EPOCH:-$(date -u -d "$day" +%s)}

# Compiles in another folder what takes half a minute, and compares every object.
compare_elsewhere() {
  local copy="$folder/another folder/$RANDOM" object objects
  mkdir -p "$copy"
  tar -C "$source" -c --exclude=./build --exclude=./.git . | tar -x -C "$copy"
  cd "$copy" && cmake --preset release -DCMAKE_{C,CXX}_COMPILER_LAUNCHER= && cd build/release
  mapfile -t objects < <(ninja -t targets all | sed -n 's/: CX*_COMPILER.*//p' |
    grep -vE 'simulator_objects|tools/(config|report|schema|words)/|corvane-lab\.dir')
  [ ${#objects[@]} -gt 30 ] && ninja "${objects[@]}" || return
  for object in "${objects[@]}"; do cmp "$object" "$build/$object" || return; done
}

# Only what is released has Debian's flags, and is the same wherever it was built.
tags=()
if grep -qx 'CMAKE_BUILD_TYPE:STRING=Release' "$build/CMakeCache.txt"; then
  tags=(--display-info)
  for flag in $(cd / && DEB_BUILD_MAINT_OPTIONS=hardening=+all dpkg-buildflags --get CPPFLAGS) \
    $(cd / && dpkg-buildflags --get CXXFLAGS | sed 's/-g \| -ffile-prefix-map=[^ ]*//g'); do
    lacking=$(grep '"command"' "$build/compile_commands.json" | grep -cv -e " $flag ") || continue
    fail "$lacking files are compiled without $flag"
  done
  "$source/tests/tools/check_spdx.py" "$build" "$seconds" "${packages[@]}"
  (compare_elsewhere) >"$folder/log" 2>&1 || fail "built elsewhere: $(tail -20 "$folder/log")"
  for package in "${packages[@]}"; do dpkg-deb -x "$package" "$folder/unpacked"; done
  named=$(find "$folder/unpacked" -type f -exec zgrep -laF -e "$source" -e "$build" {} +) &&
    fail "the path of the sources or of the build is in $named"
fi
found=$(lintian --allow-root --fail-on none "${tags[@]}" "${packages[@]}" 2>&1) ||
  fail "lintian: $found"
[ -z "$found" ] || fail "$found"

# The root has the packages' files and the system libraries that they load, nothing else.
root=$folder/root
for package in "${packages[@]}"; do
  ! dpkg-deb -f "$package" Depends | grep -i corvaneapi || fail "$package wants the maker's"
  dpkg-deb -x "$package" "$root"
done
(cd "$root/usr/share" && ls zsh/vendor-completions/_corvane{,-config,-lab,-report,-sim} doc/corvane/performance.md* \
  doc/corvane/{report,simulator}.md.gz corvane/schema/{features-show,messages,line}.json \
  doc/corvane/examples/{ansible/site,prometheus/corvane.rules}.yml doc/corvane-wireshark/wireshark{.md,-list.png,-frames.png}) >/dev/null
zcat "$root/usr/share/doc/corvane/changelog.gz" |
  grep -q "  $(date -u -R -d "@$seconds")\$" || fail "the changes are not of $day"
expected='Found 3 corvanes
0 : 11 Corvane-M7 00:1a:2b:3c:4d:01
1 : 16 Corvane-M3 00:1a:2b:3c:4d:02
2 : 3 Corvane-M1 00:1a:2b:3c:4d:03'
export CORVANE_SIM_STATE=/tmp/corvane-state
unset CORVANE_SIM_CONFIG LD_LIBRARY_PATH

in_root() { PATH=/usr/bin:/bin:/usr/sbin chroot "$root" "$@" 2>&1; }

# Sets the time from a server here, in a network of its own. In an answer of equal bytes it is the
# middle of a second.
set_time() {
  ip link set lo up
  python3 -c '
import socket
server = socket.socket(type=socket.SOCK_DGRAM)
server.bind(("127.0.0.1", 123))
while True:
    server.sendto(bytes([128] * 48), server.recvfrom(48)[1])' &
  server=$!
  sleep 1
  in_root corvane-sim corvane timing setsntp --sntpserver 127.0.0.1 || status=$?
  kill $server
  return "${status:-0}"
}

if [ "$(id -u)" -eq 0 ] && chroot / true 2>/dev/null; then
  programs=(/bin/sh /usr/bin/dirname /usr/bin/readlink)
  simulator=$(find "$root" -name libCorvaneAPI.so.2)
  mapfile -t libraries < <(ldd "${programs[@]}" "$root"/usr/bin/corvane{,-config} "$simulator" |
    grep -oE '/[^ ]+\.so[^ :]*' | grep -v "^$root" | sort -u)
  mkdir -p "$root/tmp"
  cp -L --parents "${programs[@]}" "${libraries[@]}" "$root"
  got=$(in_root corvane-sim corvane list) || fail "$got"
  [[ $(in_root corvane-sim --help) == usage:* ]] || fail 'corvane-sim does not explain itself'
  shown=$(in_root corvane-sim corvane-config show) || fail "$shown"
  [[ $(in_root corvane-metrics --help) == usage:* && $(in_root corvane-capture --help) == usage:* ]] || fail 'the scripts'
  [[ $(in_root corvane-sim corvane-extcap --extcap-interfaces) == *value=00:1a:2b:3c:4d:03* ]] ||
    fail 'corvane-extcap lists no devices'
  ! in_root corvane list >/dev/null || fail 'corvane finds the simulator without being told'
  export root
  export -f in_root set_time
  if unshare --net true 2>/dev/null; then
    said=$(unshare --net bash -c set_time) && fail "netbase is not needed: $said"
    [[ $said == *'Failed to get time'* ]] || fail "without netbase: $said"
    dpkg-deb -f "$folder"/first/corvane_*.deb Depends | grep -qw netbase ||
      fail 'corvane does not depend on netbase'
    cp --parents /etc/services "$root"
    said=$(unshare --net bash -c set_time) || fail "with netbase: $said"
  fi
else
  export CORVANE_SIM_STATE=$folder/state
  got=$(PATH=$root/usr/bin:$PATH corvane-sim corvane list 2>&1) || fail "$got"
fi
[ "$got" = "$expected" ] || fail "corvane-sim corvane list: $got"
