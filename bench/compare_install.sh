#!/usr/bin/env bash
# Usage: bench/compare_install.sh BIN [ROUNDS]
#
# Cold install of an application of 1,000 files and 100 MB (classes of the JDK), without a display,
# until all is ready to be launched, against `tar --lzma -x` of the same files and one flush of their
# file system to the disk. The share of the updater, the runtime and the rest is measured by itself, as the install
# of a bundle without those files. In turn, ROUNDS times (standard 5), each in a fresh folder; medians
# in seconds. BIN is the folder of built programs.
set -euo pipefail

here=$(cd "$(dirname "$0")" && pwd)
bin=$(cd "$1" && pwd)
rounds=${2:-5}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"

jdk=$(dirname "$(dirname "$(readlink -f "$(command -v jlink)")")")
mkdir data
head -c 100000000 "$jdk/lib/modules" | split -b 100000 -a 3 -d - data/file
. "$here/short_app.sh"
pack Large 6 'files = ["data"]' &
pack Small 6
tar -cf - data | xz --format=lzma -6 >data.tar.lzma
wait $!

. "$here/own_home.sh"
seconds() {
  local TIMEFORMAT=%3R
  { time "$@" >/dev/null 2>&1; } 2>&1
}
install() { "$work/dist/$1.app/Contents/MacOS/$1" QYPREPARE_FOR_LAUNCH_ONLY; }
untar() { mkdir untarred && tar --lzma -xf data.tar.lzma -C untarred && sync -f untarred; }
# Out of the way, not deleted: a file system takes its time to use a place again.
put_aside() { mkdir -p "aside/$1" && mv home/Library untarred "aside/$1"; }

for ((round = 0; round < rounds; round++)); do
  echo "$(seconds install Large) $(seconds install Small) $(seconds untar)"
  put_aside "$round"
done >times.txt

median() {
  awk "{ print $1 }" times.txt | sort -g |
    awk '{ v[NR] = $1 } END { printf "%.2f", v[int((NR + 1) / 2)] }'
}
echo "install $(median '$1'), of it updater, runtime and the rest $(median '$2')"
echo "tar --lzma -x and a flush $(median '$3')"
echo "application / (tar and a flush): ratio $(median '($1 - $2) / $3') (bar: at most 1)"
