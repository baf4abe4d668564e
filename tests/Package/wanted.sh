#!/usr/bin/env bash
# scripts/install-packages asks for each missing package once: wanted.sh SOURCE
set -euo pipefail
script=$1/scripts/install-packages

# A machine that has none of them, and no rights to install any.
fakes=$(mktemp -d)
trap 'rm -rf "$fakes"' EXIT
printf '#!/bin/sh\nexit 1\n' >"$fakes/dpkg-query"
printf '#!/bin/sh\necho 1000\n' >"$fakes/id"
for program in bash sort; do ln -s "$(command -v $program)" "$fakes/$program"; done
chmod +x "$fakes"/{dpkg-query,id}

for task in build demo package reference test fuzz bench; do
  asked=$(PATH=$fakes bash "$script" $task 2>&1 || true)
  wanted=$(sed -n 's/^install-packages: run this as root, or install: //p' <<<"$asked" | tr ' ' '\n')
  [ -n "$wanted" ] || { echo "nothing is asked for to $task: $asked" >&2; exit 1; }
  twice=$(sort <<<"$wanted" | uniq -d)
  [ -z "$twice" ] || { printf 'asked for twice to %s:\n%s\n' $task "$twice" >&2; exit 1; }
done
