#!/usr/bin/env bash
# lintian finds nothing new in the Debian packages: lintian.sh WORK
set -euo pipefail
packages=$1/packages

# lintian leaves files in its temporary folder.
TMPDIR=$(mktemp -d)
export TMPDIR
trap 'rm -rf "$TMPDIR"' EXIT

said=$(lintian --allow-root --fail-on none --display-info --pedantic --tag-display-limit 0 "$packages"/*.deb)
known=(
  # Under which terms the library is used is for its owner to say.
  -e '^E: liblogger(1|-dev|-doc|-tools): no-copyright-file$'
)
new=$(grep -vE "${known[@]}" <<<"$said" || true)
[ -z "$new" ] || { echo "$new" >&2; exit 1; }
