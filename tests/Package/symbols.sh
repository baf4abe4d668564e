#!/usr/bin/env bash
# The exported symbols of the installed library, and its SONAME: symbols.sh SOURCE WORK
set -euo pipefail
abi=$1/packaging/abi/liblogger.so.1.abi
prefix=$2/prefix

library=$(find "$prefix" -name liblogger.so -type l)
readelf -d "$library" | grep -q 'Library soname: \[liblogger.so.1\]' ||
  { echo "$library: the SONAME is not liblogger.so.1" >&2; exit 1; }

special='(typeinfo|typeinfo name|vtable) for |non-virtual thunk to '
own="LIBLOGGER_1\$|($special)?Log[A-Z][A-Za-z]*(::|\$)|($special)?(Logger|LibKelUtilities)::"
own="$own|SocketLogServer::|($special)SocketLogServer\$|(IntToBuf|BufToInt)[(]"
exported=$(nm -DC --defined-only "$library" | cut -c 20- | sed 's/@@.*//')
[ "$(wc -l <<<"$exported")" -ge 20 ] || { echo "$library exports too little" >&2; exit 1; }
foreign=$(grep -vE "^($own)" <<<"$exported" || true)
[ -z "$foreign" ] || { printf '%s exports what is not its own:\n%s\n' "$library" "$foreign" >&2; exit 1; }
gone=$(comm -23 <(sed -n "s/.*<elf-symbol name='\([^']*\)'.*/\1/p" "$abi" | sort) \
  <(nm -D --defined-only "$library" | sed 's/.* //; s/@@.*//' | sort))
[ -z "$gone" ] || { printf '%s no longer exports:\n%s\n' "$library" "$gone" >&2; exit 1; }
if readelf -sW "$library" | grep -w UNIQUE; then
  echo "$library has unique symbols, and cannot be unloaded" >&2
  exit 1
fi
