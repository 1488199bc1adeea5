#!/usr/bin/env bash
# Usage: bench/compare_memory.sh BIN
#
# Peak memory of the launcher without a display, before there is a JVM in it: of an install that
# launches nothing, with a splash picture, which loads the library of pictures; and of a warm start
# that leaves Java to a process of its own. And what the launcher takes beside the JVM in its process:
# what that process has of its own, less that of `java` with the same runtime and program, both while
# the program waits. BIN is the folder of built programs.
set -euo pipefail

here=$(cd "$(dirname "$0")" && pwd)
bin=$(cd "$1" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"

cp "$here/../examples/hello/nativesplash.png" .
. "$here/short_app.sh"
pack Short 0 'splash = "nativesplash.png"' $'[jvm]\nforce-spawn = true'
pack Beside 0
. "$here/own_home.sh"
launcher="$work/dist/Short.app/Contents/MacOS/Short"

# Not the figure that a shell gets for its children: the largest of an install is a java.
"$launcher" QYPREPARE_FOR_LAUNCH_ONLY >install.log 2>&1 &
while high=$(awk '/VmHWM/ { print $2 }' /proc/$!/status 2>/dev/null) && [ -n "$high" ]; do
  install=$high
  sleep 0.005
done
wait $!
# The java that it starts here outlives it, and is not counted.
start=$(env time -f %M "$launcher" 2>&1 >start.log | tail -n 1)

mebibytes() { awk -v k="$1" 'BEGIN { printf "%.1f MiB", k / 1024 }'; }
echo "peak of an install: $(mebibytes "$install") (bar: below 40)"
echo "peak of a warm start: $(mebibytes "$start") (bar: below 40)"

# Part of a waiting program's memory, in KiB; what it shares with others is counted by halves and so on.
waiting() {  # COMMAND...
  mkfifo input
  "$@" wait <input >waiting.log 2>&1 &
  exec 3>input
  until grep -q '^main has run' waiting.log; do sleep 0.05; done
  awk '/^Pss:/ { print $2 }' "/proc/$!/smaps_rollup"
  exec 3>&-
  wait $!
  rm input
}
"$work/dist/Beside.app/Contents/MacOS/Beside" >beside.log 2>&1
runtime=$(echo "$work/home/Library/Application Support/Quillory-Beside"/Quillory-JRE-*-complete)
with=$(waiting "$work/dist/Beside.app/Contents/MacOS/Beside")
without=$(waiting "$runtime/bin/java" -cp short.jar ShortMain)
echo "the launcher beside the JVM: $(mebibytes $((with - without))) ($(mebibytes "$with") less" \
  "$(mebibytes "$without"); bar: at most 25)"
