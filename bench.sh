#!/usr/bin/env bash
# Compares the library with others: bench.sh [--publish] [--rounds N] [CASE...]
# Without a case it runs all; --publish puts the figures of such a run into docs.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")"

scripts/install-packages bench
cmake --preset bench >/dev/null
cmake --build --preset bench >&2
exec python3 -B bench/run.py --build build/bench "$@"
