#!/usr/bin/env bash
# The files for other programs are installed where the guides say: files.sh SOURCE WORK
set -euo pipefail
source=$1/share/liblogger
installed=$2/prefix/share/liblogger

for file in lnav/liblogger.json log.xsl logrotate/loggerctl-serve wireshark/liblogger.lua; do
  cmp "$source/$file" "$installed/$file"
done
[ -s "$installed/liblogger.xsd" ]
