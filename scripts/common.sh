# shellcheck shell=bash
# What the scripts share; sourced, not run.
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
cd "$root"

say() { printf '== %s\n' "$*"; }

as_root() {
  if [ "$(id -u)" -eq 0 ]; then "$@"; else sudo "$@"; fi
}

# install_packages SECTION...: installs the missing packages of these sections of scripts/packages;
# does nothing when all are there.
install_packages() {
  local wanted missing=() name installed
  mapfile -t wanted < <(awk -v sections="$*" '
    /^\[/ { inside = index(" " sections " ", " " substr($0, 2, length - 2) " ") }
    inside && /^[a-z]/' scripts/packages | sort -u)
  installed=$(dpkg-query -W -f='${db:Status-Abbrev}${Package}\n' "${wanted[@]}" 2>/dev/null |
    sed -n 's/^ii //p') || true
  for name in "${wanted[@]}"; do
    grep -qxF "$name" <<<"$installed" || missing+=("$name")
  done
  [ ${#missing[@]} -gt 0 ] || return 0
  say "Installing ${missing[*]}"
  as_root apt-get update -q
  as_root env DEBIAN_FRONTEND=noninteractive apt-get install -qy --no-install-recommends \
    "${missing[@]}"
}

# How many tests run at once: most of them wait now and then.
test_jobs() { echo $(($(nproc) + 1)); }

# build PRESET [OPTION...]: configures and builds one preset of CMakePresets.json, with the options
# of cmake --build.
build() {
  local log
  say "Building the preset $1"
  log=$(cmake --preset "$1" 2>&1) || {
    printf '%s\n' "$log"
    return 1
  }
  cmake --build --preset "$@"
}
