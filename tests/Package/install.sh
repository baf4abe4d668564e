#!/usr/bin/env bash
# Installs what the packages were built from as users without them do: install.sh SOURCE WORK
set -euo pipefail
source=$1
work=$2

cmake -S "$source" -B "$work/build" -DCMAKE_INSTALL_PREFIX="$work/prefix"
cmake --build "$work/build"
cmake --install "$work/build"
