#!/usr/bin/env bash
# What leaves the installed libraries, and under which names they are found: symbols.sh SOURCE WORK
set -euo pipefail
abi=$1/packaging/abi
prefix=$2/prefix

check() { # library, SONAME, the names that may leave it as a pattern
  local library exported foreign gone
  library=$(find "$prefix" -name "$1" -type l)
  readelf -d "$library" | grep -q "Library soname: \[$2\]" ||
    { echo "$library: the SONAME is not $2" >&2; exit 1; }
  exported=$(nm -DC --defined-only "$library" | cut -c 20- | sed 's/@@.*//')
  [ "$(wc -l <<<"$exported")" -ge 20 ] || { echo "$library exports too little" >&2; exit 1; }
  foreign=$(grep -vE "^($3)" <<<"$exported" || true)
  [ -z "$foreign" ] || { printf '%s exports what is not its own:\n%s\n' "$library" "$foreign" >&2; exit 1; }
  gone=$(comm -23 <(sed -n "s/.*<elf-symbol name='\([^']*\)'.*/\1/p" "$abi/$2.abi" | sort) \
    <(nm -D --defined-only "$library" | sed 's/.* //; s/@@.*//' | sort))
  [ -z "$gone" ] || { printf '%s no longer exports:\n%s\n' "$library" "$gone" >&2; exit 1; }
  if readelf -sW "$library" | grep -w UNIQUE; then
    echo "$library has unique symbols, and cannot be unloaded" >&2
    exit 1
  fi
}

special='(typeinfo|typeinfo name|vtable) for |non-virtual thunk to '
check liblogger.so liblogger.so.1 "LIBLOGGER_1\$|($special)?Log[A-Z][A-Za-z]*(::|\$)|($special)?Logger::|SocketLogServer::|($special)SocketLogServer\$|(IntToBuf|BufToInt)[(]"
check libKelUtilities.so libKelUtilities.so.1 "LIBKELUTILITIES_1\$|($special)?LibKelUtilities::"
