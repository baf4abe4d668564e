#!/usr/bin/env bash
# Installs the packages on a bare system, made of files of this machine's own packages, uses them there
# and removes them: bare_root.sh WORK
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
work=$1
root=$work/root
packages=$work/packages

fail() { echo "$*" >&2; exit 1; }

inside() {
  local as_root=()
  [ "$(id -u)" -eq 0 ] || as_root=(unshare --map-root-user)
  env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin HOME=/ LC_ALL=C "${as_root[@]}" chroot "$root" "$@"
}

with_what_they_need() { # packages of this machine
  apt-cache depends --recurse --installed --no-recommends --no-suggests --no-conflicts --no-breaks \
    --no-replaces --no-enhances "$@" | grep '^[a-z0-9]' | sort -u |
    xargs dpkg-query -W -f '${db:Status-Status} ${Package}\n' 2>/dev/null | sed -n 's/^installed //p' | sort -u
}

depends_of() { # our package
  dpkg-deb -f "$packages/$1"_*.deb Depends | tr ',' '\n' | sed 's/^ *//; s/ .*//' | grep -v '^liblogger'
}

copy() { # packages of this machine: their files, and what dpkg knows of them
  local package file missing=()
  for package in "$@"; do
    compgen -G "$root/var/lib/dpkg/info/${package}[.:]*list" >/dev/null || missing+=("$package")
  done
  dpkg-query -L "${missing[@]}" | grep '^/' | grep -v '^/usr/share/\(doc\|info\|locale\|man\)/' |
    sort -u >"$work/paths"
  # Folders are made, not copied: other programs may put files into /tmp at the same time.
  while read -r file; do
    if [ -d "$file" ] && [ ! -L "$file" ]; then echo "$root$file"; fi
  done <"$work/paths" | xargs -r -d '\n' mkdir -p
  while read -r file; do
    if [ -L "$file" ] || { [ -r "$file" ] && [ ! -d "$file" ]; }; then echo "${file#/}"; fi
  done <"$work/paths" | tar -C / --no-recursion -cf - -T - | tar -C "$root" --keep-directory-symlink -xf -
  for package in "${missing[@]}"; do
    cp /var/lib/dpkg/info/"$package"[.:]* "$root/var/lib/dpkg/info/"
    dpkg-query -s "$package" >>"$root/var/lib/dpkg/status"
    echo >>"$root/var/lib/dpkg/status"
  done
}

installs() { # our packages
  local package files=()
  for package in "$@"; do
    cp "$packages/$package"_*.deb "$root/"
    files+=("$(basename "$packages/$package"_*.deb)")
  done
  inside dpkg -i "${files[@]}"
}

rm -rf "$root"
mkdir -p "$root"/{dev,proc,tmp,usr/{bin,sbin,lib,lib64}} "$root"/var/lib/dpkg/{info,triggers,updates}
ln -s usr/{bin,sbin,lib,lib64} "$root/"
: >"$root/dev/null"
echo libc-bin >"$root/var/lib/dpkg/triggers/ldconfig"

# The tool runs on the least system that has what its package depends on.
mapfile -t essential < <(dpkg-query -W -f '${Essential} ${Package}\n' | sed -n 's/^yes //p')
mapfile -t depends < <(depends_of liblogger1; depends_of liblogger-tools)
mapfile -t base < <(with_what_they_need "${essential[@]}" "${depends[@]}")
copy "${base[@]}"
installs liblogger1 liblogger-tools liblogger-doc
grep -q 'liblogger\.so\.1 ' <<<"$(inside ldconfig -p)" || fail "the linker does not know the library"
diff - <(inside loggerctl write --config /usr/share/doc/liblogger/examples/hello.ini --handler net \
  --level ERROR installed) <<<"ERROR - installed"

# An application is built with no path given.
mapfile -t compiler < <(with_what_they_need g++ cmake ninja-build pkg-config)
copy "${compiler[@]}"
installs liblogger-dev
cp -r "$here" "$root/tests"
for way in cmake pkg-config; do
  inside /tests/consumer.sh "" "/consumer-$way" "$way" g++
done

# A package of that application would ask for ours.
mkdir "$root/debian"
: >"$root/debian/control"
dpkg-deb -R "$packages"/liblogger1_*.deb "$root/debian/liblogger1"
asked=$(cd "$root" && dpkg-shlibdeps -Sdebian/liblogger1 -O consumer-cmake/app)
[[ $asked = *'liblogger1 (>= 1.0.0)'* ]] ||
  fail "a program's package would not depend on liblogger1"

inside dpkg --purge liblogger-dev liblogger-doc liblogger-tools liblogger1
left=$(find "$root/etc" "$root/usr" "$root/var" \( -iname '*liblogger*' -o -name 'loggerctl*' \))
[ -z "$left" ] || fail "not removed: $left"
rm -rf "$root"
