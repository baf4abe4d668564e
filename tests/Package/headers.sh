#!/usr/bin/env bash
# Compiles every installed header alone, and all of them under later standards: headers.sh WORK COMPILER
set -euo pipefail
include=$1/prefix/include/liblogger
compiler=$2

cd "$include"
headers=$(find . -name '*.h' | sort)
[ "$(wc -w <<<"$headers")" -ge 25 ] || { echo "too few headers below $include" >&2; exit 1; }
compile() { # what is on standard input
  "$compiler" "-std=$1" -Wall -Wextra -Wpedantic -Werror -I"$include" -fsyntax-only -x c++ -
}
for header in $headers; do
  compile c++11 <<<"#include \"$header\"" || { echo "$header does not compile alone" >&2; exit 1; }
done
for standard in c++14 c++17 c++20 c++2b; do
  printf '#include "%s"\n' $headers | compile "$standard" ||
    { echo "the headers do not compile as $standard" >&2; exit 1; }
done
