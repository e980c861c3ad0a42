#!/bin/sh
# changelog.sh VERSION DATE <CHANGELOG.md: writes the notes of the version as a Debian changelog.
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
printf '\n -- The Corvane utility developers <developers@corvane.invalid>  %s\n' "$2"
