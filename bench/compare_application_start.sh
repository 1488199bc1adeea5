#!/usr/bin/env bash
# Usage: bench/compare_application_start.sh BIN [ROUNDS] [FIGURES] [APPLICATION]
#
# Warm starts of real applications, from the start of the process to their window on the display of an
# Xvfb: jEdit and JOSM (Debian's packages, what is not installed is passed over), packed with a linked
# runtime and started by the launcher, with the archive of classes that their first starts have left;
# packed without that archive, so that the runtime's own is used, with the list of classes that comes
# with us; and by `java` with the same runtime, jars and options without archives. They run in turn,
# ROUNDS times (standard 20), and are compared round by round. With FIGURES, a line for each start is
# added to that file: application, how it was started, milliseconds on the clock, milliseconds of
# processor time, memory in KiB. APPLICATION is one of the two instead of both. BIN is the folder of
# built programs; JAVA_HOME chooses the Java.
set -euo pipefail

[ -n "${DISPLAY:-}" ] || exec xvfb-run -a "$0" "$@"
here=$(cd "$(dirname "$0")" && pwd)
bin=$(cd "$1" && pwd)
rounds=${2:-20}
figures=${3:+$(realpath "$3")}
wanted=${4:-jEdit JOSM}
display=$DISPLAY
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
. "$here/own_home.sh"
export DISPLAY=$display QUILLORY_PACK_CACHE="$work/cache"
mkdir -m 700 cache
"$bin/quillory-pack" keygen -q --bits 2048 key.pem >/dev/null

pack() {  # NAME MAIN-CLASS LINES OTHER-TABLES
  cat >"$1.toml" <<TOML
[application]
name = "$1"
version = 1
main-class = "$2"
identifier = "com.example.$1"
executable = "$1"
$3
[runtime]
jlink = true
[signing]
key = "key.pem"
$4
TOML
  "$bin/quillory-pack" bundle -q "$1.toml" --compression 0 >pack.log 2>&1 || { cat pack.log >&2; exit 1; }
}

launcher() { echo "$work/dist/$1.app/Contents/MacOS/$1"; }
installed() { echo "$work/home/Library/Application Support/Quillory-$1"; }
timed() {
  "$bin/window_time" "$title" 120 "$@" 2>"$work/application.log" && return
  tail -n 20 "$work/application.log" >&2
  return 1
}

# A start that installs and lists the classes; behind its end their archive is made.
prepare() {  # NAME
  timed "$(launcher "$1")" "${arguments[@]}" >/dev/null
  local wait=0
  until [ -n "$(find "$(installed "$1")" -name 'StartupArchive-*.guard' -print -quit)" ]; do
    sleep 1
    if ((++wait == 120)); then
      echo "$1: no archive was made" >&2
      exit 1
    fi
  done
  timed "$(launcher "$1")" "${arguments[@]}" >/dev/null
}

note() {  # HOW: adds what the command behind it printed
  local line
  line=$(cat)
  echo "$1 $line" >>"$name.times"
  if [ -n "$figures" ]; then echo "$name $1 $line" >>"$figures"; fi
}

# What an awk expression over a round comes to, l, s and j being the columns of the three: median
# [least to most].
over_rounds() {
  awk -v column="$3" '{ v[$1, ++n[$1]] = $column }
    END { for (i = 1; i <= n["java"]; i++) print v["launcher", i], v["list", i], v["java", i] }' \
    "$name.times" | awk "{ l = \$1; s = \$2; j = \$3; print $1 }" | sort -g | awk -v form="$2" '
      { v[NR] = $1 }
      function at(share) { return sprintf(form, v[int((NR - 1) * share + 1.5)]) }
      END { print at(0.5) " [" at(0) " to " at(1) "]" }'
}

compare() {  # NAME MAIN-CLASS LINES CLASS-PATH
  name=$1
  pack "$name" "$2" "$3" ""
  pack "${name}List" "$2" "$3" $'[jvm]\nstartup-archive = false'
  prepare "$name"
  timed "$(launcher "${name}List")" "${arguments[@]}" >/dev/null
  local home
  home=$(dirname "$(dirname "$(find "$(installed "$name")" -path '*/bin/java' -print -quit)")")
  cp -rL "$home" "$name.runtime"
  find "$name.runtime" -name '*.jsa' -delete
  local application
  application=$(find "$(installed "$name")" -maxdepth 1 -name "Quillory-$name-1-complete")
  for ((round = 0; round < rounds; round++)); do
    timed "$(launcher "$name")" "${arguments[@]}" | note launcher
    timed "$(launcher "${name}List")" "${arguments[@]}" | note list
    (cd "$application" && timed "$work/$name.runtime/bin/java" -cp "$4" "$2" "${arguments[@]}") | note java
  done
  echo "$name, $rounds rounds, load $(cut -d ' ' -f 1 /proc/loadavg):"
  echo "  launcher            $(over_rounds l %.0f 2) ms, processor $(over_rounds l %.0f 3) ms"
  echo "  the list alone      $(over_rounds s %.0f 2) ms, processor $(over_rounds s %.0f 3) ms"
  echo "  java, no archives   $(over_rounds j %.0f 2) ms, processor $(over_rounds j %.0f 3) ms"
  echo "  launcher / java: ratio $(over_rounds 'l / j' %.3f 2), processor $(over_rounds 'l / j' %.3f 3) (bar: at most 0.80)"
  echo "  list / java: ratio $(over_rounds 's / j' %.3f 2), processor $(over_rounds 's / j' %.3f 3)"
}

if [[ $wanted == *jEdit* ]] && [ -f /usr/share/jedit/jedit.jar ]; then
  cp -rL /usr/share/jedit jedit
  arguments=("-settings=$work/jedit-settings" -noserver)
  title='jEdit - '
  compare jEdit org.gjt.sp.jedit.jEdit $'root = "jedit"\njars = ["jedit.jar"]' jedit.jar
fi
if [[ $wanted == *JOSM* ]] && [ -f /usr/share/josm/josm.jar ]; then
  mkdir josm && cp -L /usr/share/josm/josm.jar josm
  cp -L /usr/share/java/{commons-compress,gettext-commons,jmapviewer}.jar josm
  arguments=()
  title='Java OpenStreetMap Editor'
  compare JOSM org.openstreetmap.josm.gui.MainApplication \
    $'root = "josm"\njars = ["josm.jar", "commons-compress.jar", "gettext-commons.jar", "jmapviewer.jar"]' \
    josm.jar:commons-compress.jar:gettext-commons.jar:jmapviewer.jar
fi
