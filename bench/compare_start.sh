#!/usr/bin/env bash
# Usage: bench/compare_start.sh BIN [ROUNDS] [FIGURES]
#
# Warm start without a display, whole process until the Java main class has printed and all is over:
# the launcher, with everything installed, against `java -cp` with the same runtime, an empty program
# with the toolkit's libraries, and the launcher that jpackage makes. They run in turn, ROUNDS times
# (standard 40), and are compared round by round; medians, with the quartiles in brackets. On a busy
# machine "sudo chrt -r 20 bench/compare_start.sh BIN" keeps other work out of it. BIN is the folder
# of built programs; with FIGURES, a line for each start is added to that file.
set -euo pipefail

here=$(cd "$(dirname "$0")" && pwd)
bin=$(cd "$1" && pwd)
rounds=${2:-40}
figures=${3:+$(realpath "$3")}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"

. "$here/short_app.sh"
pack Short 0

. "$here/own_home.sh"
launcher=$(echo "$work"/dist/Short.app/Contents/MacOS/*)
"$launcher" >first-start.log 2>&1
own="$work/home/Library/Application Support/Quillory-Short"
runtime=$(echo "$own"/Quillory-JRE-*-complete)
# Behind the first start its classes are archived, which the next ones use.
for ((wait = 0; wait < 120; wait++)); do
  if [ -n "$(find "$own" -name 'StartupArchive-*.guard')" ]; then break; fi
  sleep 1
done
mkdir input && cp short.jar input
jpackage --type app-image --name short --input input --main-jar short.jar --main-class ShortMain \
  --runtime-image "$runtime" --dest jpackaged >/dev/null
# A JVM takes no archive that was made of the file before it was copied.
jpackaged/short/lib/runtime/bin/java -Xshare:dump >/dev/null

# A line a round: the four times in seconds, in the order of the commands.
one_round() {
  hyperfine -N --runs 1 --export-json round.json "'$launcher'" \
    "'$runtime/bin/java' -cp '$work/short.jar' ShortMain" "'$bin/toolkit_only'" \
    "'$work/jpackaged/short/bin/short'" >/dev/null 2>&1
  sed -n 's/.*"median": \([0-9.]*\).*/\1/p' round.json | paste -s -d ' '
}
one_round >/dev/null  # Everything is read from the disk once before it counts.
for ((round = 0; round < rounds; round++)); do one_round; done >times.txt
if [ -n "$figures" ]; then
  awk '{ print "Hello launcher", $1 * 1000; print "Hello java", $2 * 1000
         print "Hello jpackage", $4 * 1000 }' times.txt >>"$figures"
fi

# What an awk expression over a round's times comes to: median [quartiles].
over_rounds() {
  awk "{ print $1 }" times.txt | sort -g | awk -v form="$2" '
    { v[NR] = $1 }
    function at(share) { return sprintf(form, v[int((NR - 1) * share + 1.5)]) }
    END { print at(0.5) " [" at(0.25) " to " at(0.75) "]" }'
}
echo "launcher      $(over_rounds '$1 * 1000' %.1f) ms"
echo "java          $(over_rounds '$2 * 1000' %.1f) ms"
echo "toolkit only  $(over_rounds '$3 * 1000' %.1f) ms"
echo "jpackage      $(over_rounds '$4 * 1000' %.1f) ms"
echo "launcher less java and toolkit: $(over_rounds '($1 - $2 - $3) * 1000' %.1f) ms (bar: at most 10)"
echo "launcher / java: ratio $(over_rounds '$1 / $2' %.3f) (bar: at most 1.30)"
echo "launcher / jpackage: ratio $(over_rounds '$1 / $4' %.3f) (bar: at most 0.55)"
