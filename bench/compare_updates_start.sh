#!/usr/bin/env bash
# Usage: bench/compare_updates_start.sh BIN [ROUNDS]
#
# What updates add to a warm start: the whole process of an installed application without a display,
# until its Java main class has printed and all is over, without settings for updates, and with them
# and a version that is known to be good. The two run in turn, ROUNDS times (standard 60), and are
# compared round by round; medians, with the quartiles in brackets. On a busy machine
# "sudo chrt -r 20 bench/compare_updates_start.sh BIN" keeps other work out of it. BIN is the folder of
# built programs.
set -euo pipefail

here=$(cd "$(dirname "$0")" && pwd)
bin=$(cd "$1" && pwd)
rounds=${2:-60}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"

. "$here/short_app.sh"
pack Short 0

. "$here/own_home.sh"
launcher=$(echo "$work"/dist/Short.app/Contents/MacOS/*)
"$launcher" >first-start.log 2>&1
master=$(echo "$work"/home/Library/*/Quillory-Short)
updater=$(echo "$master"/Quillory-Quillory-*-complete)

# As an installation has them that is up to date: settings, what is known of the version that runs, and
# what the last check has left.
mkdir -p kept/QYUpdates
printf '1\0stable\0background\00020\00024\0002\0000\0000\0' >kept/QuilloryUpdate
printf '1\0001\0Quillory-Short-1-complete\0\0000\0GOOD\0' >kept/QYUpdates/trials
{
  printf '1\0007\0%032d\0001790000000\0001790000000\0"etag"\0000\0NONE\0\0' 0
  printf '0\0\0\0000\0000\0\0\0\0\0000\0000\0'
} >kept/QYUpdates/state

without() { rm -rf "$master/QYUpdates" "$updater/QuilloryUpdate"; }
with() { cp -R kept/QYUpdates "$master/" && cp kept/QuilloryUpdate "$updater/"; }
# The milliseconds of one start.
timed() {
  hyperfine -N --runs 1 --export-json round.json "'$launcher'" >/dev/null 2>&1
  sed -n 's/.*"median": \([0-9.]*\).*/\1/p' round.json
}
one_round() {
  without
  timed
  with
  timed
}
one_round >/dev/null  # Everything is read from the disk once before it counts.
for ((round = 0; round < rounds; round++)); do one_round | paste -s -d ' '; done >times.txt

# What an awk expression over a round's times comes to: median [quartiles].
over_rounds() {
  awk "{ print $1 }" times.txt | sort -g | awk -v form="$2" '
    { v[NR] = $1 }
    function at(share) { return sprintf(form, v[int((NR - 1) * share + 1.5)]) }
    END { print at(0.5) " [" at(0.25) " to " at(0.75) "]" }'
}
echo "without updates  $(over_rounds '$1 * 1000' %.1f) ms"
echo "with updates     $(over_rounds '$2 * 1000' %.1f) ms"
echo "added            $(over_rounds '($2 - $1) * 1000' %.2f) ms (bar: at most 1)"
