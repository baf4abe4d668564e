#!/usr/bin/env bash
# The installed unit of the log server, as the service manager reads it: unit.sh WORK
set -euo pipefail
said=$(systemd-analyze verify "$1/prefix/lib/systemd/system/loggerctl-serve.service" 2>&1)
[ -z "$said" ] || { echo "$said" >&2; exit 1; }
