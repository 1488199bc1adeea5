#!/usr/bin/env bash
# Usage: scripts/install.sh [--prefix DIR] [--uninstall]
#
# Builds the programs and installs quillory-pack with all that it packs, manual pages, completion and
# documents below DIR (without --prefix, /usr/local). Programs for Macs are installed too where
# scripts/build-macos.sh has made them. --uninstall removes what was installed there, and nothing
# else; it needs no build. Where this user may not write, sudo is asked.
set -euo pipefail

prefix=/usr/local uninstall=
while [ $# -gt 0 ]; do
  case $1 in
    --prefix) prefix=${2:?a folder}; shift 2 ;;
    --uninstall) uninstall=1; shift ;;
    *) sed -n '2,/^[^#]/s/^# \{0,1\}//p' "$0" >&2; exit 2 ;;
  esac
done
# Without "realpath -m", which not every system has for folders that are not there.
case $prefix in /*) ;; *) prefix=$PWD/$prefix ;; esac
prefix=$(python3 -c 'import os, sys; print(os.path.realpath(sys.argv[1]))' "$prefix")
cd "$(dirname "$0")/.."
list=$prefix/share/quillory/installed.txt

# The nearest folder that there is says whether rights are needed.
with_rights() {
  local folder=$prefix
  until [ -e "$folder" ]; do folder=$(dirname "$folder"); done
  if [ -w "$folder" ]; then "$@"; else sudo "$@"; fi
}

# Files first, then folders from the innermost out: those that something else has come into stay.
remove_listed() {
  local kind path folders=() i
  while read -r kind path; do
    case /$path/ in */../*) echo "not a path of ours: $path" >&2; return 1 ;; esac
    case $kind in
      file) with_rights rm -f "$prefix/$path" ;;
      folder) path=$prefix/$path folders+=("${path%/.}") ;;
    esac
  done < <(cat "$list")
  for ((i = ${#folders[@]} - 1; i >= 0; i--)); do
    [ ! -d "${folders[i]}" ] || with_rights rmdir --ignore-fail-on-non-empty "${folders[i]}"
  done
}

if [ -n "$uninstall" ]; then
  [ -f "$list" ] || { echo "there is no $list: nothing of ours is installed there" >&2; exit 1; }
  remove_listed
  echo "Removed what was installed in $prefix"
  exit
fi
scripts/setup.sh programs
mkdir -p build
cmake --preset programs >build/configure.log || { cat build/configure.log; exit 1; }
cmake --build --preset programs
with_rights cmake --install build/release --prefix "$prefix" >build/install.log
echo "Installed in $prefix; scripts/install.sh --prefix $prefix --uninstall removes it"
