#!/usr/bin/env bash
# The files for other programs, and the manual, are installed where the guides say: files.sh SOURCE WORK
set -euo pipefail
source=$1/share/liblogger
installed=$2/prefix/share/liblogger

for file in lnav/liblogger.json log.xsl logrotate/loggerctl-serve wireshark/liblogger.lua; do
  cmp "$source/$file" "$installed/$file"
done
[ -s "$installed/liblogger.xsd" ]

manual=$2/prefix/share/man
for page in "$1"/docs/man/*.[17]; do
  cmp "$page" "$manual/man${page##*.}/$(basename "$page")"
done
for page in liblogger-ini liblogger-xml; do
  grep -q '^\.It Ic LogLayoutStandard$' "$manual/man5/$page.5"
done
