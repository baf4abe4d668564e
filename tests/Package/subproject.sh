#!/usr/bin/env bash
# Builds and runs a program of a project that has this one as a part of it:
# subproject.sh SOURCE BUILD-FOLDER add_subdirectory|FetchContent shared|static COMPILER
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
source=$1
build=$2
way=$3
kind=$4
compiler=$5

fail() { echo "$*" >&2; exit 1; }

[ "$kind" = shared ] && shared=ON || shared=OFF
rm -rf "$build"
cmake -S "$here/subproject" -B "$build" -G Ninja -DCMAKE_CXX_COMPILER="$compiler" -DLIBLOGGER="$source" \
  -DWAY="$way" -DBUILD_SHARED_LIBS=$shared -DGIVEN_BUILD_SHARED_LIBS=$shared \
  -DCMAKE_EXPORT_COMPILE_COMMANDS=ON -DCMAKE_CXX_FLAGS=-O0
cmake --build "$build"
cd "$build"
"$here/expect_events.sh" ./app

isLinked=$(readelf -d app | grep -c 'Shared library: \[liblogger.so.1\]' || true)
[ "$kind $isLinked" = "shared 1" ] || [ "$kind $isLinked" = "static 0" ] ||
  fail "liblogger.so.1 is linked $isLinked times by a $kind build"
command=$(grep -A1 '"command": .*/consumer/main.cpp"' compile_commands.json)
[[ $command = *-std=gnu++11* ]] || fail "the program's standard has changed: $command"
[[ $command != *' -W'* && $command != *' -f'* ]] || fail "the program has our settings: $command"
ctest -N | grep -q '^Total Tests: 0$' || fail "there are tests of the library"
cmake --install . --prefix installed >/dev/null
diff <(cd installed && find . -type f) - <<<./bin/app
