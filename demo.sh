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

system_log=
for candidate in /var/log/dpkg.log /var/log/apt/history.log /var/log/alternatives.log; do
  if [ -z "$system_log" ] && [ -s "$candidate" ] && [ -r "$candidate" ]; then
    system_log=$candidate
  fi
done
if [ -z "$system_log" ]; then
  echo "demo.sh: no log of the package manager's to read" >&2
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
