#!/usr/bin/env bash
# Usage: [RUNS=3] bench/compare_packing.sh BIN [LEVEL...]
#
# Packs a Java runtime with quillory-pack (sorted, hashed, signed, compressed, and put into a bundle)
# and with tar piped into xz at the same level, one after the other, several times, and prints the
# ratio of the fastest runs: below 1, quillory-pack is faster. Then packs once more with another jar
# and what the first time has left in a cache. On a busy machine "sudo chrt -r 20
# bench/compare_packing.sh BIN" keeps other work out of it. BIN is the folder of built programs.
set -euo pipefail

bin=$(cd "$1" && pwd)
shift
levels=("$@")
[ ${#levels[@]} -gt 0 ] || levels=(1 6)
runs=${RUNS:-3}

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
export QUILLORY_PACK_CACHE=  # each of the first runs packs

jlink --add-modules java.base,java.desktop --no-header-files --no-man-pages --output runtime
cp "$bin/../share/quillory/hello.jar" .
"$bin/quillory-pack" keygen -q --bits 2048 key.pem >/dev/null
cat >quillory.toml <<'TOML'
[application]
name = "Comparison"
version = 1
main-class = "com.example.hello.Hello"
jars = ["hello.jar"]
identifier = "com.example.comparison"
[runtime]
folder = "runtime"
[signing]
key = "key.pem"
TOML

# Wall-clock seconds of a command, with three digits.
seconds() {
  local TIMEFORMAT=%3R
  { time "$@" >/dev/null 2>&1; } 2>&1
}
smaller() { awk -v a="$1" -v b="$2" 'BEGIN { print (a < b) ? a : b }'; }

echo "packing $(du -sh runtime | cut -f1) of runtime, fastest of $runs runs in turn, in seconds"
for level in "${levels[@]}"; do
  ours=1000000
  theirs=1000000
  for ((run = 0; run < runs; run++)); do
    ours=$(smaller "$ours" "$(seconds "$bin/quillory-pack" bundle -q --compression "$level")")
    theirs=$(smaller "$theirs" \
      "$(seconds sh -c "tar -chf - runtime hello.jar | xz --format=lzma -$level >packed.lzma")")
  done
  rm -rf cache
  export QUILLORY_PACK_CACHE=$work/cache
  "$bin/quillory-pack" bundle -q --compression "$level" >/dev/null
  echo "$level" >changed && jar --update --file hello.jar changed
  again=$(seconds "$bin/quillory-pack" bundle -q --compression "$level")
  export QUILLORY_PACK_CACHE=
  awk -v level="$level" -v a="$ours" -v b="$theirs" -v c="$again" 'BEGIN {
    printf "level %s: quillory-pack %.2f, tar | xz %.2f, ratio %.2f (bar: at most 0.6)\n", level, a, b, a / b
    printf "level %s: with one jar changed %.2f, ratio %.2f (bar: at most 0.15)\n", level, c, c / a }'
done
