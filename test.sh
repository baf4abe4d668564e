#!/usr/bin/env bash
# Builds everything and runs all tests. Arguments go to ctest, such as -R LogHandler.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")"

scripts/install-packages test
cmake --preset dev >/dev/null
cmake --build --preset dev

# Tests with the label namespaces need root's rights, at least in a user namespace of their own, which the
# kernel of a container may refuse.
chosen=("$@")
refusal=
if [ "$(id -u)" -ne 0 ] && ! refusal=$(unshare --map-root-user chroot / true 2>&1); then
  chosen+=(-LE namespaces)
fi
outcome=0
ctest --preset dev "${chosen[@]}" || outcome=$?
if [ -n "$refusal" ]; then
  printf '\ntest.sh: left out, because no user namespaces can be made (%s):\n' "$refusal"
  ctest --preset dev -N -L namespaces -FA '.*' "$@" | sed -n 's/^ *Test *#[0-9]*: /  /p'
fi
exit $outcome
