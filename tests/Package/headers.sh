#!/usr/bin/env bash
# Compiles every installed header alone: headers.sh WORK COMPILER STANDARD
set -euo pipefail
include=$1/prefix/include/liblogger
compiler=$2
standard=$3

cd "$include"
headers=$(find . -name '*.h' | sort)
[ "$(wc -w <<<"$headers")" -ge 25 ] || { echo "too few headers below $include" >&2; exit 1; }
for header in $headers; do
  echo "#include \"$header\"" |
    "$compiler" "-std=$standard" -Wall -Wextra -Wpedantic -Werror -I"$include" -fsyntax-only -x c++ - ||
    { echo "$header does not compile alone as $standard" >&2; exit 1; }
done
