#!/usr/bin/env bash
# Usage: cmake/macos/libraries.sh CACHE ARCH JOBS
#
# Builds the static libraries for x86_64 or arm64 from the sources in CACHE (fetch.sh), once, and
# prints the folder of their headers and archives.
set -euo pipefail

cache=$1
arch=$2
jobs=$3
toolchain=$(dirname "$(realpath "$0")")/toolchain.cmake
zig=$cache/zig-0.11.0/zig
# Built anew when this file changes.
prefix=$cache/libraries/$arch-$(sha256sum "$0" | cut -c1-12)
if [ -d "$prefix" ]; then echo "$prefix"; exit; fi
echo "Building the static libraries for $arch" >&2

# What the builds say is of interest only when one fails.
work=$(mktemp -d)
exec 3>&1 4>&2 >"$work/log" 2>&1
trap '[ $? = 0 ] || cat "$work/log" >&4; rm -rf "$work"' EXIT

export ZIG_GLOBAL_CACHE_DIR=$cache/zig-cache ZIG_LOCAL_CACHE_DIR=$work/zig-cache
unset MAKEFLAGS MAKELEVEL LIBRARY_PATH CPATH
flags="-O2 -g0 -w"
build() {
  make -s -j"$jobs" CC="$zig cc -target ${arch/arm64/aarch64}-macos.11.0" AR=llvm-ar-14 \
    RANLIB=llvm-ranlib-14 "$@"
}

cp -R "$cache/sources/." "$work"
built=$work/prefix
mkdir -p "$built"/{include,lib}
cd "$work"

build -C libtommath -f makefile.unix PREFIX=/prefix DESTDIR="$work" CFLAGS="$flags" install
build -C libtomcrypt -f makefile.unix PREFIX=/prefix DESTDIR="$work" \
  CFLAGS="$flags -DUSE_LTM -DLTM_DESC -I../libtommath" install
sed -i 's|^prefix=.*|prefix=${pcfiledir}/../..|' "$built"/lib/pkgconfig/*.pc

build -C zlib -f Makefile.in CFLAGS="$flags -DHAVE_UNISTD_H" ARFLAGS=rc libz.a
cp zlib/{zlib.h,zconf.h} "$built/include"
cp zlib/libz.a "$built/lib"

# Not by Ninja, which sees two rules for one file in it.
cmake -G "Unix Makefiles" -S xz-utils -B xz -DCMAKE_BUILD_TYPE=Release -DBUILD_SHARED_LIBS=OFF \
  -DCMAKE_TOOLCHAIN_FILE="$toolchain" -DQUILLORY_ZIG="$zig" -DQUILLORY_ARCH="$arch" \
  -DQUILLORY_PREFIXES="$built"
build -C xz liblzma
cp -R xz-utils/src/liblzma/api/{lzma.h,lzma} "$built/include"
cp xz/liblzma.a "$built/lib"

mkdir -p "$cache/libraries"
rm -rf "$prefix.new"
mv "$built" "$prefix.new"
mv "$prefix.new" "$prefix"
echo "$prefix" >&3
