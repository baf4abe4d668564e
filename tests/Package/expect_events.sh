#!/usr/bin/env bash
# Runs the program of the folder consumer, and fails when it does not print its events: expect_events.sh PROGRAM
set -euo pipefail

"$1" | sed 's/[^ ]*main.cpp:[0-9][0-9]* \(four\|five\|six\)/main.cpp:LINE \1/' >output
diff - output <<'TXT'
> default ERROR :0 one has 1
> default ERROR main.cpp:42 3
> default ERROR main.cpp:LINE four
> default ERROR main.cpp:LINE five 5
> default ERROR main.cpp:LINE six
TXT
