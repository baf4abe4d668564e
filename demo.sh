#!/usr/bin/env bash
# Builds the library as users install it, and shows its main job on real input.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")"

scripts/install-packages demo
cmake --preset release >/dev/null
cmake --build --preset release

project=$PWD
build=$project/build/release
examples=$project/examples
output=$project/demo-output
rm -rf "$output"
mkdir "$output"
cd "$output"

run() { # Shows a command, then runs it.
  printf '\n$ %s\n' "$*"
  "$@"
}

show_heads() { # The first lines of each file, cut to the width of a page.
  for file in "$@"; do
    printf '\n%s (%s lines):\n' "$output/$file" "$(wc -l <"$file")"
    head -n 4 "$file" | cut -c 1-110
  done
}

echo
echo "== An application that logs from several threads, set up by examples/file_survey.ini"
run "$build/examples/file_survey" "$examples/file_survey.ini" /usr/include /usr/lib /etc
show_heads trouble.log survey.log*

echo
echo "== The same application set up by examples/file_survey.xml, with a log as a page"
run "$build/examples/file_survey" "$examples/file_survey.xml" /usr/include /etc /no/such/folder
run xsltproc --output survey.html "$project/share/liblogger/log.xsl" survey.xml
printf '\n%s has %s entries; %s shows them in a browser.\n' "$output/survey.xml" \
  "$(grep -c '<entry ' survey.xml)" "$output/survey.html"

echo
echo "== The same application in one process, the log server in another"
printf '\n$ loggerctl serve --config examples/server.ini --handler collected &\n'
mkfifo server.out
"$build/tools/loggerctl" serve --config "$examples/server.ini" --handler collected >server.out &
server=$!
trap 'kill "$server" 2>/dev/null || true' EXIT
exec 3<server.out
read -r line <&3
echo "$line"
sed "s/4711/${line##* }/" "$examples/file_survey_remote.ini" >remote.ini
run "$build/examples/file_survey" remote.ini /usr/include /etc
kill -TERM "$server"
read -r line <&3
echo "$line"
wait "$server"
exec 3<&-
trap - EXIT
rm server.out
show_heads collected.log

# The oldest backup has the first events.
mapfile -t received < <(ls -rv collected.log*)
cat "${received[@]}" | cmp - sent.log
printf '\nAll %s events arrived, in their order and byte by byte.\n' "$(wc -l <sent.log)"

system_log=
for candidate in /var/log/dpkg.log /var/log/apt/*.log /var/log/*.log /var/log/*/*.log; do
  if [ -z "$system_log" ] && [ -s "$candidate" ] && [ -r "$candidate" ]; then
    system_log=$candidate
  fi
done
if [ -z "$system_log" ]; then
  echo "demo.sh: no log below /var/log to read" >&2
  exit 1
fi

echo
echo "== The log of another program, line by line through loggerctl"
cp "$system_log" packages.original  # The log itself may grow meanwhile.
printf '\n$ loggerctl write --config examples/system_log.ini --handler packages --level INFO <%s\n' \
  "$system_log"
"$build/tools/loggerctl" write --config "$examples/system_log.ini" --handler packages --level INFO \
  <packages.original
show_heads packages.copy packages.log*

# The copy has a line feed more when the last line of the original has none yet.
head -c "$(stat -c %s packages.original)" packages.copy | cmp - packages.original
printf '\nEvery byte of %s arrived in packages.copy.\n' "$system_log"
echo "The files are in $output."
