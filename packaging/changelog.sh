#!/bin/sh
# changelog.sh VERSION SECONDS <CHANGELOG.md: writes the notes of the version as a Debian changelog.
# SECONDS is its date, in seconds since 1970.
printf 'corvane (%s) unstable; urgency=medium\n' "$1"
awk -v version="$1" '
  /^## / { inside = $2 == version; next }
  !inside || /^###/ || NF == 0 { next }
  /^- / { printf "\n"; sub(/^- /, "") }
  { sub(/^ +/, ""); printf "%s ", $0 }
  END { printf "\n" }' |
  while IFS= read -r note; do
    if [ -z "$note" ]; then echo; continue; fi
    printf '%s\n' "$note" | fold -s -w 72 | sed '1s/^/  * /; 2,$s/^/    /; s/ *$//'
  done
printf '\n -- The Corvane utility developers <developers@corvane.invalid>  %s\n' \
  "$(date -u -R -d "@$2")"
