#!/usr/bin/env bash
# Builds everything and runs all tests. Arguments go to ctest, such as -R LogHandler.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")"

scripts/install-packages test
cmake --preset dev >/dev/null
cmake --build --preset dev
ctest --preset dev "$@"
