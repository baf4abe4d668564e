#!/usr/bin/env bash
# The control data of the Debian packages: control.sh SOURCE WORK
set -euo pipefail
source=$1
packages=$2/packages
architecture=$(dpkg --print-architecture)
version=$(dpkg-parsechangelog -l "$source/packaging/debian/changelog" -S Version)

cd "$packages"
diff - <(ls) <<TXT
liblogger-dev_${version}_$architecture.deb
liblogger-doc_${version}_all.deb
liblogger-tools_${version}_$architecture.deb
liblogger1_${version}_$architecture.deb
TXT

field() { dpkg-deb -f "$1"_*.deb "$2"; }
diff - <(for package in liblogger1 liblogger-dev liblogger-tools liblogger-doc; do
  echo "$package: $(field $package Version), $(field $package Section), $(field $package Multi-Arch)"
done) <<TXT
liblogger1: $version, libs, same
liblogger-dev: $version, libdevel, same
liblogger-tools: $version, utils, foreign
liblogger-doc: $version, doc, foreign
TXT
diff - <(field liblogger-dev Depends) <<<"liblogger1 (= $version)"
grep -q "^liblogger1 (= $version), .*libc6 (>= " <<<"$(field liblogger-tools Depends)" ||
  { echo "liblogger-tools does not depend on what loggerctl uses" >&2; exit 1; }
diff - <(dpkg-deb -I liblogger1_*.deb triggers shlibs) <<TXT
activate-noawait ldconfig
liblogger 1 liblogger1 (>= $version)
TXT

# Every binary has what dpkg-buildflags asks for; lintian looks for the rest of it.
dpkg-deb -x liblogger1_*.deb ../contents
dpkg-deb -x liblogger-tools_*.deb ../contents
for binary in ../contents/usr/lib/*/lib*.so.*.* ../contents/usr/bin/loggerctl; do
  grep -q __stack_chk_fail <<<"$(nm -D --undefined-only "$binary")" ||
    { echo "$binary does not look after its stack" >&2; exit 1; }
done
