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
  { cat "$folder/log"; fail 'cpack failed'; }
mapfile -t packages < <(find "$folder" -maxdepth 1 -name '*.deb' | sort)
[ ${#packages[@]} -eq 2 ] || fail "expected two packages: ${packages[*]}"

found=$(lintian --allow-root --fail-on none "${packages[@]}" 2>&1) || fail "lintian: $found"
[ -z "$found" ] || fail "$found"
for package in "${packages[@]}"; do
  ! dpkg-deb -f "$package" Depends | grep -i corvaneapi || fail "$package depends on the maker's library"
done

# The root has the packages' files and the system libraries that they load, nothing else.
root=$folder/root
for package in "${packages[@]}"; do dpkg-deb -x "$package" "$root"; done

expected='Found 3 corvanes
0 : 11 Corvane-M7 00:1a:2b:3c:4d:01
1 : 16 Corvane-M3 00:1a:2b:3c:4d:02
2 : 3 Corvane-M1 00:1a:2b:3c:4d:03'
export CORVANE_SIM_STATE=/tmp/corvane-state
unset CORVANE_SIM_CONFIG LD_LIBRARY_PATH

copy_in() { mkdir -p "$root$(dirname "$1")" && cp -L "$1" "$root$1"; }
libraries_of() { ldd "$@" 2>/dev/null | grep -oE '/[^ ]+\.so[^ ]*' | sort -u; }

if [ "$(id -u)" -eq 0 ] && chroot / true 2>/dev/null; then
  mkdir -p "$root/tmp"
  for program in /bin/sh /usr/bin/dirname /usr/bin/readlink; do copy_in "$program"; done
  while read -r library; do copy_in "$library"; done < <(
    libraries_of /bin/sh /usr/bin/dirname /usr/bin/readlink "$root/usr/bin/corvane" \
      "$(find "$root" -name libCorvaneAPI.so.2)" | grep -v "^$root")
  got=$(PATH=/usr/bin:/bin:/usr/sbin:/sbin chroot "$root" /usr/bin/corvane-sim corvane list 2>&1) || fail "$got"
  if chroot "$root" /usr/bin/corvane list >/dev/null 2>&1; then
    fail 'corvane finds the simulator without being told'
  fi
else
  export CORVANE_SIM_STATE=$folder/state
  got=$(PATH=$root/usr/bin:$PATH corvane-sim corvane list 2>&1) || fail "$got"
fi
[ "$got" = "$expected" ] || fail "corvane-sim corvane list: $got"
