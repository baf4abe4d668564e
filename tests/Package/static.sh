#!/usr/bin/env bash
# Installs the static library, and builds and runs programs that link it: static.sh SOURCE WORK
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
source=$1
work=$2

rm -rf "$work"
cmake -S "$source" -B "$work/build" -G Ninja -DCMAKE_INSTALL_PREFIX="$work/prefix" -DLOGGER_SHARED=OFF \
  -DLOGGER_BUILD_TOOLS=OFF -DLOGGER_BUILD_EXAMPLES=OFF -DBUILD_TESTING=OFF -DCMAKE_BUILD_TYPE=Debug
cmake --build "$work/build"
cmake --install "$work/build"
for way in cmake pkg-config; do
  "$here/consumer.sh" "$work/prefix" "$work/consumer-$way" "$way" g++
  ! readelf -d "$work/consumer-$way/app" | grep liblogger || { echo "$way links liblogger.so" >&2; exit 1; }
done
