#!/usr/bin/env bash
# Usage: bench/compare_packing.sh BIN [LEVEL...]
#
# Packs a Java runtime with quillory-pack (sorted, hashed, signed, compressed, and put into a bundle)
# and with tar piped into xz at the same level, one after the other, several times, and prints the
# ratio of the fastest runs: below 1, quillory-pack is faster. BIN is the folder of built programs.
set -euo pipefail

bin=$(cd "$1" && pwd)
shift
levels=("$@")
[ ${#levels[@]} -gt 0 ] || levels=(1 6)
runs=3

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
export QUILLORY_PACK_CACHE=  # each run packs

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
  awk -v level="$level" -v a="$ours" -v b="$theirs" \
    'BEGIN { printf "level %s: quillory-pack %.2f, tar | xz %.2f, ratio %.2f\n", level, a, b, a / b }'
done
