#!/usr/bin/env bash
# Makes the Debian packages from scratch: packages.sh SOURCE WORK
set -euo pipefail
source=$1
work=$2

rm -rf "$work"
"$source/scripts/package" "$work/build" "$work/packages"
