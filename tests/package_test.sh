#!/usr/bin/env bash
# package_test.sh BUILD: builds the Debian packages from the build folder, checks them with lintian,
# installs them into an empty root and runs the utility there on the simulator.
set -euo pipefail
build=$1
for tool in cpack dpkg-deb dpkg-shlibdeps fakeroot lintian; do
  command -v $tool >/dev/null || { echo "skipped: no $tool"; exit 77; }
done
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
fail() { printf '%s\n' "$*"; exit 1; }

(cd "$folder" && cpack --config "$build/CPackConfig.cmake" -B "$folder") >"$folder/log" 2>&1 ||
  fail "cpack: $(<"$folder/log")"
packages=("$folder"/*.deb)
[ ${#packages[@]} -eq 2 ] || fail "expected two packages: ${packages[*]}"
found=$(lintian --allow-root --fail-on none "${packages[@]}" 2>&1) || fail "lintian: $found"
[ -z "$found" ] || fail "$found"

# The root has the packages' files and the system libraries that they load, nothing else.
root=$folder/root
for package in "${packages[@]}"; do
  ! dpkg-deb -f "$package" Depends | grep -i corvaneapi || fail "$package wants the maker's"
  dpkg-deb -x "$package" "$root"
done
expected='Found 3 corvanes
0 : 11 Corvane-M7 00:1a:2b:3c:4d:01
1 : 16 Corvane-M3 00:1a:2b:3c:4d:02
2 : 3 Corvane-M1 00:1a:2b:3c:4d:03'
export CORVANE_SIM_STATE=/tmp/corvane-state
unset CORVANE_SIM_CONFIG LD_LIBRARY_PATH

if [ "$(id -u)" -eq 0 ] && chroot / true 2>/dev/null; then
  programs=(/bin/sh /usr/bin/dirname /usr/bin/readlink)
  simulator=$(find "$root" -name libCorvaneAPI.so.2)
  mapfile -t libraries < <(ldd "${programs[@]}" "$root/usr/bin/corvane" "$simulator" |
    grep -oE '/[^ ]+\.so[^ :]*' | grep -v "^$root" | sort -u)
  mkdir -p "$root/tmp"
  cp -L --parents "${programs[@]}" "${libraries[@]}" "$root"
  got=$(PATH=/usr/bin:/bin:/usr/sbin chroot "$root" corvane-sim corvane list 2>&1) || fail "$got"
  ! chroot "$root" /usr/bin/corvane list >/dev/null 2>&1 ||
    fail 'corvane finds the simulator without being told'
else
  export CORVANE_SIM_STATE=$folder/state
  got=$(PATH=$root/usr/bin:$PATH corvane-sim corvane list 2>&1) || fail "$got"
fi
[ "$got" = "$expected" ] || fail "corvane-sim corvane list: $got"
