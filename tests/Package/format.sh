#!/usr/bin/env bash
# The compiler objects to a wrong format in every call that logs: format.sh WORK COMPILER
set -euo pipefail
include=$1/prefix/include/liblogger
compiler=$2

compiles() { # a statement
  printf '#include "LogFormater.h"\n#include "LoggerMacros.h"\nvoid Use(LogHandler* log) { %s }\n' "$1" |
    "$compiler" -std=c++11 -Wall -Wextra -Wpedantic -Werror -I"$include" -fsyntax-only -x c++ - 2>/dev/null
}

for call in 'LOGGER_LOG(log, 1, %s);' 'log->Log(1, %s);' 'log->DebugLog(1, "f", 1, %s);' \
  'LogFormater(1, "f", 1).Log(log, %s);'; do
  compiles "${call/\%s/\"%d\", 5}" || { echo "does not compile with the right format: $call" >&2; exit 1; }
  ! compiles "${call/\%s/\"%d\", \"text\"}" || { echo "no objection to a wrong format: $call" >&2; exit 1; }
done
