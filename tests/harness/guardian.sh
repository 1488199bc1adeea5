#!/bin/sh
# Usage: guardian.sh FOLDER <PIPE
#
# Waits for the end of PIPE, which comes with the end of the test program that holds the other side.
# Where the program could not remove its FOLDER itself, ends the processes that it left and removes
# it. For own_folder.cpp, which says how such a process is known.
set -u
cd /
folder=$1

left_behind() {
  for process in /proc/[0-9]*; do
    case $(readlink "$process/root" 2>/dev/null) in
      "$folder"/*) echo "${process#/proc/}" ;;
    esac
  done
  grep --files-with-matches --null-data --line-regexp --fixed-strings \
    "QUILLORY_TEST_FOLDER=$folder" /proc/[0-9]*/environ 2>/dev/null | cut -d/ -f3
}

while read -r _; do :; done
[ -d "$folder" ] || exit 0
# More than once: one of them may have started another in between.
for _ in 1 2 3 4 5; do
  processes=$(left_behind)
  [ -n "$processes" ] || break
  # shellcheck disable=SC2086  # a number each
  kill -KILL $processes 2>/dev/null
  sleep 0.1
done
chmod -R u+rwX "$folder" 2>/dev/null
rm -rf "$folder"
