#!/usr/bin/env bash
# Builds the library from scratch as for users, without the tests and what they need, and installs it:
# install.sh SOURCE WORK
set -euo pipefail
source=$1
work=$2

rm -rf "$work"
cmake -S "$source" -B "$work/build" -G Ninja -DCMAKE_BUILD_TYPE=Release -DBUILD_TESTING=OFF \
  -DCMAKE_INSTALL_PREFIX="$work/prefix" -DCMAKE_DISABLE_FIND_PACKAGE_GTest=ON -DLOGGER_WARNINGS_AS_ERRORS=ON
cmake --build "$work/build"
cmake --install "$work/build"
