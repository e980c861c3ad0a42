#!/bin/sh
# finish.sh ROOT: prepares the files in ROOT for a package as Debian wants them: larger texts are
# compressed without a time stamp, and sections that nothing reads are removed.
set -e
find "$1/usr/share/man" -name '*.[1-9]' -exec gzip -9n {} +
find "$1/usr/share/doc" -maxdepth 2 -name '*.md' -size +4k -exec gzip -9n {} +
find "$1/usr" -type f \( -path '*/bin/corvane' -o -path '*/bin/corvane-config' -o \
  -path '*/bin/corvane-lab' -o -path '*/bin/corvane-report' -o -name corvane-extcap -o \
  -name corvane-lab.so -o -name '*.so.*' \) -exec strip -R .comment -R .note {} +
