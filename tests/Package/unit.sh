#!/usr/bin/env bash
# The installed unit of the log server, as the service manager reads it: unit.sh WORK
set -euo pipefail
unit=$1/prefix/lib/systemd/system/loggerctl-serve.service
said=$(systemd-analyze verify --man=no "$unit" 2>&1)
[ -z "$said" ] || { echo "$said" >&2; exit 1; }
grep -q '^ExecReload=.* -HUP \$MAINPID$' "$unit" || { echo "the unit does not reload" >&2; exit 1; }

page=$(sed -n 's/^Documentation=man:\(.*\)(\([1-9]\))$/man\2\/\1.\2/p' "$unit")
[ -s "$1/prefix/share/man/$page" ] || { echo "the unit refers to a page that is not there: $page" >&2; exit 1; }
