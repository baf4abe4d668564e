#!/usr/bin/env bash
# Builds the library as users install it, and shows what it does with real input.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")"

scripts/install-packages demo
cmake --preset release >/dev/null
cmake --build --preset release

project=$PWD
output=$project/demo-output
PATH=$project/build/release/examples:$project/build/release/tools:$PATH
rm -rf "$output"
mkdir "$output"
cd "$output"
ln -s ../examples examples

title() { printf '\n\n== %s\n' "$*"; }

run() { # Shows a command line, then runs it.
  printf '\n$ %s\n' "$*"
  eval "$*"
}

fail() {
  printf 'demo.sh: %s\n' "$*" >&2
  exit 1
}

title "A program, and the configuration that says where its messages go"
run cat examples/hello.ini
run hello_ini examples/hello.ini

title "Mistakes in a configuration are found before they cost messages"
sed -e 's/LogLayoutSimple/LogLayoutSimpel/' -e 's/screen.handler = net/screen.handler = nett/' examples/hello.ini >wrong.ini
run 'loggerctl check wrong.ini || echo "exit code $?"'

title "Three threads, a tree of handlers, one file that rolls over and one for trouble"
run loggerctl show examples/file_survey.ini
run file_survey examples/file_survey.ini /usr/include /usr/lib/gcc /no/such/folder
run 'wc -lc survey.log*'
run 'tail -n 2 survey.log'
run 'grep ERROR trouble.log'
grep -q 'ERROR.*/no/such/folder: No such file' trouble.log || fail "the error is missing in trouble.log"

title "The same program with an XML log, as a page for a browser"
run 'file_survey examples/file_survey.xml /usr/include /usr/lib/gcc /no/such/folder >/dev/null'
run xsltproc --output survey.html "$project/share/liblogger/log.xsl" survey.xml
run 'ls -sh survey.xml survey.html'

title "The same program sends its events to a log server in another process"
printf '\n$ loggerctl serve --config examples/server.ini --handler collected --port 0 &\n'
mkfifo server.out
loggerctl serve --config examples/server.ini --handler collected --port 0 >server.out &
server=$!
trap 'kill "$server" 2>/dev/null || true' EXIT
exec 3<server.out
read -r line <&3
echo "$line"
sed "s/4711/${line##* }/" examples/file_survey_remote.ini >remote.ini
run file_survey remote.ini /usr/include/c++
tries=300  # The server reads the last events after the program has ended.
until cmp -s collected.log sent.log; do
  [ $((tries -= 1)) -gt 0 ] || fail "collected.log is not sent.log"
  sleep 0.1
done
run kill -TERM '$server'
read -r line <&3
echo "$line"
wait "$server"
exec 3<&-
trap - EXIT
rm server.out
run 'cmp collected.log sent.log && wc -l collected.log'
run 'tail -n 1 collected.log'

system_log=
for candidate in /var/log/dpkg.log /var/log/apt/*.log /var/log/*.log /var/log/*/*.log; do
  if [ -z "$system_log" ] && [ -s "$candidate" ] && [ -r "$candidate" ]; then
    system_log=$candidate
  fi
done
[ -n "$system_log" ] || fail "there is no log below /var/log to read"

title "The log of another program, line by line"
cp "$system_log" original  # The log itself may grow during the demo.
run 'loggerctl write --config examples/system_log.ini --handler packages --level INFO <original'
run 'tail -n 2 original packages.log'

# The copy has a line feed more when the last line of the original has none yet.
head -c "$(stat -c %s original)" packages.copy | cmp - original

printf '\n\nThe files are in %s; survey.html is for a browser.\n' "$output"
