#!/usr/bin/env bash
# Builds and runs a program outside the project against the installed package:
# consumer.sh WORK cmake|pkg-config COMPILER
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
prefix=$1/prefix
way=$2
compiler=$3
build=$1/consumer-$way-$compiler

rm -rf "$build"
mkdir "$build"
cd "$build"
case "$way" in
  cmake)
    cmake -S "$here/consumer" -B . -G Ninja -DCMAKE_CXX_COMPILER="$compiler" \
      -DCMAKE_PREFIX_PATH="$prefix"
    cmake --build .
    ;;
  pkg-config)
    PKG_CONFIG_PATH=$(dirname "$(find "$prefix" -name liblogger.pc)")
    export PKG_CONFIG_PATH
    # The flags are words, to be split.
    # shellcheck disable=SC2046
    "$compiler" -std=c++11 -Wall -Wextra -Wpedantic -Werror "$here/consumer/main.cpp" -o consumer $(pkg-config --cflags --libs liblogger)
    LD_LIBRARY_PATH=$(pkg-config --variable=libdir liblogger)
    export LD_LIBRARY_PATH
    ;;
  *) exit 2 ;;
esac

./consumer | sed 's/[^ ]*main.cpp:[0-9][0-9]* \(four\|five\|six\)/main.cpp:LINE \1/' >output
diff - output <<'TXT'
> default ERROR :0 one has 1
> default ERROR main.cpp:42 3
> default ERROR main.cpp:LINE four
> default ERROR main.cpp:LINE five 5
> default ERROR main.cpp:LINE six
TXT
