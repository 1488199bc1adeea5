#!/usr/bin/env bash
# Usage: scripts/class_lists.sh JDK...
#
# Makes the lists of classes anew that come with quillory-pack for applications that nobody has
# trained: packager/class_lists/swing.classlist and javafx.classlist. The samples beside them run once
# on each JDK, under Xvfb; a list has what any of the runs has loaded, without the samples' own
# classes. Give the oldest and the newest Java that applications are packed with: names that a runtime
# does not have are passed over. JavaFX is that of Debian's package openjfx, which is for the oldest,
# the first one.
set -euo pipefail

[ $# -gt 0 ] || { sed -n '2,9s/^# \?//p' "$0" >&2; exit 2; }
lists=$(cd "$(dirname "$0")/../packager/class_lists" && pwd)
javafx=/usr/share/openjfx/lib
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# All classes that a sample loads on a JDK, by its name, which is the beginning of its own classes'.
run_sample() {  # SAMPLE JDK OPTION...
  local sample=$1 jdk=$2
  shift 2
  "$jdk/bin/javac" "$@" -d "$work/classes" "$lists/samples/$sample.java"
  timeout 120 xvfb-run -a "$jdk/bin/java" "$@" -XX:DumpLoadedClassList="$work/loaded" \
    -Duser.home="$work" -cp "$work/classes" "$sample"
  grep -v -e '^[@#[]' -e ' source: ' "$work/loaded" | cut -d ' ' -f 1 |
    grep -v "^$sample" >>"$work/names"
}

write_list() {  # TOOLKIT NAME SAMPLE OPTION...
  local toolkit=$1 name=$2 sample=$3
  shift 3
  local versions=
  : >"$work/names"
  for jdk in "${jdks[@]}"; do
    run_sample "$sample" "$jdk" "$@"
    versions+="${versions:+ and }$(sed -n 's/^JAVA_VERSION="\(.*\)"/\1/p' "$jdk/release")"
  done
  {
    echo "# Classes that a start with $toolkit needs, for applications that nobody has trained."
    echo "# Made by scripts/class_lists.sh with Java $versions, from samples/$sample.java."
    LC_ALL=C sort -u "$work/names"
  } >"$lists/$name.classlist"
  wc -l "$lists/$name.classlist"
}

jdks=("$@")
write_list Swing swing SwingSample
jdks=("$1")
write_list "JavaFX $(sed -n 's/^javafx.version=//p' "$javafx/javafx.properties")" javafx FxSample --module-path "$javafx" --add-modules javafx.controls
