#!/usr/bin/env bash
# Usage: bench/compare_install.sh BIN
#
# Cold install of an application of 1,000 files and 100 MB against `tar --lzma -x` of the same files,
# and against that plus the chmod commands of as many files; and the launcher's peak memory without a
# display, up to the start of Java. In seconds. BIN is the folder of built programs.
set -euo pipefail

here=$(cd "$(dirname "$0")" && pwd)
bin=$(cd "$1" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"

# Half text that repeats, half bytes that do not, as in an application with pictures and jars.
mkdir data
for ((i = 0; i < 1000; i++)); do
  { yes "line of file $i" | head -c 50000 || true; head -c 50000 /dev/urandom; } >"data/file$i"
done
javac -d classes "$here/ShortMain.java"
jar --create --file short.jar -C classes .
"$bin/quillory-pack" keygen -q --bits 2048 key.pem >/dev/null
cat >quillory.toml <<'TOML'
[application]
name = "Large"
version = 1
main-class = "ShortMain"
jars = ["short.jar"]
files = ["data"]
identifier = "com.example.large"
[runtime]
modules = ["java.base"]
[signing]
key = "key.pem"
TOML
"$bin/quillory-pack" bundle -q --compression 6 >/dev/null
tar -cf - data | xz --format=lzma -6 >data.tar.lzma

seconds() {
  local TIMEFORMAT=%3R
  { time "$@" >/dev/null 2>&1; } 2>&1
}
untar() { mkdir -p out && tar --lzma -xf data.tar.lzma -C out; }
chmods() { for file in data/*; do sh -c "chmod -R 755 \"$file\""; done; }

. "$here/own_home.sh"
launcher=$(echo "$work"/dist/Large.app/Contents/MacOS/*)
# Not the figure of the shell's children: the largest of them is a java.
"$launcher" QYPREPARE_FOR_LAUNCH_ONLY >install.log 2>&1 &
while peak=$(awk '/VmHWM/ { print $2 }' /proc/$!/status 2>/dev/null) && [ -n "$peak" ]; do
  echo "$peak" >peak
  sleep 0.02
done
wait $!
master=$(echo "$work"/home/Library/*/Quillory-Large)
rm -rf "$master"/Quillory-Large-*
ours=$(seconds "$launcher" QYPREPARE_FOR_LAUNCH_ONLY)

# The same start with nothing in the application but its jar: what is not the application's share.
sed -i 's/^files.*//; s/^version = 1/version = 2/' quillory.toml
"$bin/quillory-pack" bundle -q --compression 6 >/dev/null
rest=$(seconds "$launcher" QYPREPARE_FOR_LAUNCH_ONLY)
theirs=$(seconds untar)
modes=$(seconds chmods)

awk -v a="$ours" -v r="$rest" -v t="$theirs" -v c="$modes" 'BEGIN {
  printf "install %.2f (of it updater, runtime and the rest %.2f), tar --lzma -x %.2f, chmod commands %.2f\n",
         a, r, t, c
  printf "application / (1.5 x tar + chmod commands): ratio %.2f (bar: at most 1)\n", (a - r) / (1.5 * t + c)
}'
awk '{ printf "peak memory of the launcher: %.1f MiB (bar: below 40)\n", $1 / 1024 }' peak
