#!/usr/bin/env bash
# Usage: bench/compare_start.sh BIN [ROUNDS]
#
# Warm start without a display, whole process until the Java main class has printed and all is over:
# the launcher, with everything installed, against `java -cp` with the same runtime, an empty program
# with the toolkit's libraries, and the launcher that jpackage makes. In turn, ROUNDS times (standard
# 30); medians, in milliseconds. BIN is the folder of built programs.
set -euo pipefail

here=$(cd "$(dirname "$0")" && pwd)
bin=$(cd "$1" && pwd)
rounds=${2:-30}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"

javac -d classes "$here/ShortMain.java"
jar --create --file short.jar -C classes .
"$bin/quillory-pack" keygen -q --bits 2048 key.pem >/dev/null
cat >quillory.toml <<'TOML'
[application]
name = "Short"
version = 1
main-class = "ShortMain"
jars = ["short.jar"]
identifier = "com.example.short"
[runtime]
modules = ["java.base"]
[signing]
key = "key.pem"
TOML
"$bin/quillory-pack" bundle -q --compression 0 >/dev/null

. "$here/own_home.sh"
launcher=$(echo "$work"/dist/Short.app/Contents/MacOS/*)
"$launcher" >first-start.log 2>&1
runtime=$(echo "$work"/home/Library/*/Quillory-Short/Quillory-JRE-*-complete)
mkdir input && cp short.jar input
jpackage --type app-image --name short --input input --main-jar short.jar --main-class ShortMain \
  --runtime-image "$runtime" --dest jpackaged >/dev/null

measure() {  # FILE COMMAND...: one run, appended to FILE
  hyperfine -N --runs 1 --export-json run.json "${@:2}" >/dev/null 2>&1
  sed -n 's/.*"median": \([0-9.]*\).*/\1/p' run.json >>"$1"
}
for ((round = 0; round <= rounds; round++)); do
  measure launcher "'$launcher'"
  measure java "'$runtime/bin/java' -cp '$work/short.jar' ShortMain"
  measure toolkit "'$bin/toolkit_only'"
  measure jpackage "'$work/jpackaged/short/bin/short'"
done

median() { tail -n +2 "$1" | sort -g | awk '{ v[NR] = $1 } END { print v[int((NR + 1) / 2)] * 1000 }'; }
awk -v l="$(median launcher)" -v j="$(median java)" -v t="$(median toolkit)" -v p="$(median jpackage)" '
  BEGIN {
    printf "launcher %.1f, java %.1f, toolkit only %.1f, jpackage %.1f\n", l, j, t, p
    printf "launcher less java and toolkit: %.1f ms (bar: at most 10)\n", l - j - t
    printf "launcher / jpackage: ratio %.2f (bar: at most 0.6)\n", l / p
  }'
