#!/usr/bin/env bash
# Builds and runs a program outside the project against what is installed below a prefix, or for the
# whole system when that is empty: consumer.sh PREFIX BUILD-FOLDER cmake|pkg-config COMPILER
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
prefix=$1
build=$2
way=$3
compiler=$4

rm -rf "$build"
mkdir "$build"
cd "$build"
case "$way" in
  cmake)
    cmake -S "$here/consumer" -B . -G Ninja -DCMAKE_CXX_COMPILER="$compiler" \
      ${prefix:+-DCMAKE_PREFIX_PATH="$prefix"}
    cmake --build .
    ;;
  pkg-config)
    [ -z "$prefix" ] || export PKG_CONFIG_PATH="$prefix/lib/pkgconfig"
    # The flags are words, to be split.
    # shellcheck disable=SC2046
    "$compiler" -std=c++11 -Wall -Wextra -Wpedantic -Werror "$here/consumer/main.cpp" -o app $(pkg-config --cflags --libs liblogger)
    [ -z "$prefix" ] || export LD_LIBRARY_PATH="$prefix/lib"
    ;;
  *) exit 2 ;;
esac

"$here/expect_events.sh" ./app
