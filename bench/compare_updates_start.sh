#!/usr/bin/env bash
# Usage: bench/compare_updates_start.sh BIN [ROUNDS]
#
# What updates add to a warm start: the whole process of an installed application without a display,
# until its Java main class has printed and all is over. Two installations of the same application,
# one without settings for updates, the other with them and a version that is known to be good. They
# are started in turn, ROUNDS times (standard 60), each first in every other round, and are compared
# round by round, on the clock and by the processor's time; medians, with the quartiles in brackets.
# The last line is told by the JVM: from its load of the updater's first class to that of the
# application's, which is where updates are looked at, and leaves out what else a machine does.
# On a busy machine "sudo chrt -r 20 bench/compare_updates_start.sh BIN" keeps other work out of it.
# BIN is the folder of built programs.
set -euo pipefail

here=$(cd "$(dirname "$0")" && pwd)
bin=$(cd "$1" && pwd)
rounds=${2:-60}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"

. "$here/short_app.sh"
. "$here/own_home.sh"
for name in Plain Known; do
  pack $name 0
  dist/$name.app/Contents/MacOS/$name >first-start.log 2>&1
done

# As an installation has them that is up to date: settings, what is known of the version that runs, and
# what the last check has left.
master=$(echo "$work"/home/Library/*/Quillory-Known)
mkdir "$master/QYUpdates"
printf '1\0stable\0background\00020\00024\0002\0000\0000\0' \
  >"$(echo "$master"/Quillory-Quillory-*-complete)/QuilloryUpdate"
printf '1\0001\0Quillory-Known-1-complete\0\0000\0GOOD\0' >"$master/QYUpdates/trials"
{
  printf '1\0007\0%032d\0001790000000\0001790000000\0"etag"\0000\0NONE\0\0' 0
  printf '0\0\0\0000\0000\0\0\0\0\0000\0000\0'
} >"$master/QYUpdates/state"

# The seconds of one start: on the clock, and of the processor.
timed() {  # NAME
  hyperfine -N --runs 1 --export-json round.json "dist/$1.app/Contents/MacOS/$1" >/dev/null 2>&1
  sed -n 's/.*"\(median\|user\|system\)": \([0-9.e-]*\).*/\2/p' round.json | paste -s -d ' ' |
    awk '{ print $1, $2 + $3 }'
}
# The milliseconds from the updater's first class to the application's.
in_jvm() {  # NAME
  JAVA_TOOL_OPTIONS=-Xlog:class+load:file=classes.log:uptimenanos \
    "dist/$1.app/Contents/MacOS/$1" >/dev/null 2>&1
  awk -F '[][n]' '/ io.quillory.updater.Main / { first = $2 } / ShortMain / { last = $2 }
    END { print (last - first) / 1e6 }' classes.log
}
one_round() {  # NUMBER
  if (($1 % 2)); then
    timed Plain >plain.txt
    timed Known >known.txt
  else
    timed Known >known.txt
    timed Plain >plain.txt
  fi
  in_jvm Plain >plain_jvm.txt
  in_jvm Known >known_jvm.txt
  paste -d ' ' plain.txt known.txt plain_jvm.txt known_jvm.txt
}
one_round 0 >/dev/null  # Everything is read from the disk once before it counts.
for ((round = 0; round < rounds; round++)); do one_round $round; done >times.txt

# What an awk expression over a round's times comes to: median [quartiles].
over_rounds() {
  awk "{ print $1 }" times.txt | sort -g | awk -v form="$2" '
    { v[NR] = $1 }
    function at(share) { return sprintf(form, v[int((NR - 1) * share + 1.5)]) }
    END { print at(0.5) " [" at(0.25) " to " at(0.75) "]" }'
}
echo "without updates     $(over_rounds '$1 * 1000' %.1f) ms"
echo "with updates        $(over_rounds '$3 * 1000' %.1f) ms"
echo "added               $(over_rounds '($3 - $1) * 1000' %.2f) ms (bar: at most 1)"
echo "processor's, added  $(over_rounds '($4 - $2) * 1000' %.2f) ms"
echo "in the JVM, added   $(over_rounds '$6 - $5' %.2f) ms"
