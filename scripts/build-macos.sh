#!/usr/bin/env bash
# Usage: scripts/build-macos.sh [--arch x86_64|arm64]... [--jobs N] [PROGRAM...]
#
# Builds the macOS programs on Linux: launcher, lzma64, elev_mac, quillory-update with its window, and
# quillory-pack, or the ones given. They are made for each architecture in build/macos/ARCH/bin, and
# joined in build/macos/bin, and quillory-pack's updater.jar in build/macos/share; with --arch for that one only, and not joined. --jobs says how many compilers run at once, else it is
# one for each processor. What the build needs is fetched once, into
# ${XDG_CACHE_HOME:-~/.cache}/quillory-macos; where the network has none of it the script ends with
# status 77. docs/porting.md tells what such programs are good for.
set -euo pipefail
cd "$(dirname "$0")/.."

cache=${XDG_CACHE_HOME:-$HOME/.cache}/quillory-macos
out=$PWD/build/macos
architectures=()
jobs=$(nproc)
while :; do
  case "${1:-}" in
    --arch) architectures+=("$2") ;;
    --jobs) jobs=$2 ;;
    *) break ;;
  esac
  shift 2
done
programs=("$@")
[ $# -gt 0 ] || programs=(launcher lzma64 elev_mac quillory-update quillory-update-window quillory-pack)

# Libraries that are headers only, and the JNI's, are those of this machine.
gather_headers() {
  local include=$out/headers/include java
  java=$(dirname "$(dirname "$(realpath "$(command -v javac)")")")/include
  mkdir -p "$include/darwin" "$out/headers/share/cmake"
  cp -Rpu /usr/include/{toml.hpp,toml,CLI,nlohmann} "$java/jni.h" "$include"
  cp -Rpu "$(pkg-config --variable=includedir libcurl)/curl" "$include"
  cp -pu "$java/linux/jni_md.h" "$include/darwin"
  cp -Rpu /usr/share/cmake/nlohmann_json "$out/headers/share/cmake"
}

build() {
  local arch=$1 libraries
  libraries=$(cmake/macos/libraries.sh "$cache" "$arch" "$jobs")
  # A build folder remembers its compiler, which is another one with another cache.
  grep -qsF "=$cache/zig-0.11.0/zig" "$out/$arch/CMakeCache.txt" || rm -rf "${out:?}/$arch"
  # The sources of a library as one: this compiler reads headers for longer than it compiles.
  cmake -G Ninja -S . -B "$out/$arch" -DCMAKE_BUILD_TYPE=Release -DCMAKE_UNITY_BUILD=ON \
    -DCMAKE_EXPORT_COMPILE_COMMANDS=ON -DCMAKE_TOOLCHAIN_FILE="$PWD/cmake/macos/toolchain.cmake" \
    -DQUILLORY_ZIG="$cache/zig-0.11.0/zig" -DQUILLORY_ARCH="$arch" \
    -DQUILLORY_PREFIXES="$libraries;$out/headers" >"$out/$arch-configure.log" 2>&1 ||
    { cat "$out/$arch-configure.log"; return 1; }
  local jars=()
  [[ " ${programs[*]} " != *" quillory-pack "* ]] || jars=(updater_jar)  # which it packs
  cmake --build "$out/$arch" --parallel "$jobs" --target "${programs[@]}" "${jars[@]}"
  python3 -B cmake/macos/finish_image.py "${programs[@]/#/$out/$arch/bin/}"
}

join() {
  mkdir -p "$out/bin"
  llvm-lipo-14 -create -output "$out/bin/$1" "$out"/{x86_64,arm64}/bin/"$1"
}

mkdir -p "$cache" "$out"
exec 9>"$cache/lock"
flock 9  # one build at a time
# What was built before is of no use without the compiler, and would pass for new.
cmake/macos/fetch.sh "$cache" || { status=$?; rm -rf "$out"; exit $status; }
export ZIG_GLOBAL_CACHE_DIR=$cache/zig-cache ZIG_LOCAL_CACHE_DIR=$out/zig-cache
unset LIBRARY_PATH CPATH  # of this machine
gather_headers
if [ ${#architectures[@]} -gt 0 ]; then
  for arch in "${architectures[@]}"; do build "$arch"; done
  exit
fi
build x86_64
build arm64
for program in "${programs[@]}"; do join "$program"; done
[ ! -e "$out/x86_64/share/quillory/updater.jar" ] || cp -Rp "$out/x86_64/share" "$out"
echo "Joined in build/macos/bin: ${programs[*]}"
