#!/usr/bin/env bash
# Usage: bench/compare_update.sh BIN [ROUNDS]
#
# An update of an application of 33 MB in some eighty jars by a minor release (bench/make_application.py
# says what changes in it), and of JOSM by one changed class: bytes of the delta against those of the
# whole archive; the time to undo it against `tar --lzma -x` of the new version, in turn, ROUNDS times
# (standard 5), medians; memory beside the window. And the bytes of JOSM's archive with its jar stored
# against those with the jar as it came. JOSM comes from Debian's package, which needs no installing.
# BIN is the folder of built programs.
set -euo pipefail

here=$(cd "$(dirname "$0")" && pwd)
bin=$(cd "$1" && pwd)
rounds=${2:-5}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
export QUILLORY_PACK_CACHE=  # nothing is kept in a user's folder
"$bin/quillory-pack" keygen -q --bits 2048 key.pem >/dev/null

bytes() { stat -c %s "$1"; }
ratio() { awk "BEGIN { printf \"%.4f\", $1 / $2 }"; }

# The archive of an application of the jars in FOLDER, packed and plain (NAME-VERSION.p2.l2, .p2).
pack() { # NAME VERSION FOLDER STORED MAIN-CLASS
  cat >"$1.toml" <<TOML
[application]
name = "$1"
version = $2
main-class = "$5"
jars = ["$3/*.jar"]
identifier = "com.example.$1"
jars-stored = $4
[signing]
key = "key.pem"
TOML
  "$bin/quillory-pack" bundle -q "$1.toml" -o out >/dev/null
  mv "out/release/Quillory-$1-$2-archive.p2.l2" "$1-$2.p2.l2"
  xz --format=lzma -dc "$1-$2.p2.l2" >"$1-$2.p2"
  rm -rf out
}

# Seconds on the clock, and of processors.
seconds() {
  local TIMEFORMAT='%3R %3U %3S'
  { time "$@" >/dev/null 2>&1; } 2>&1 | awk '{ print $1, $2 + $3 }'
}
undo() { "$bin/delta_tool" undo "$1.delta" "$1-installed" restored.p2 >undone.txt; }
untar() { rm -rf untarred && mkdir untarred && tar --lzma -xf "$1" -C untarred; }

# From version 1 of NAME to version 2, both packed.
compare() { # NAME
  local whole delta undone
  "$bin/quillory-pack" extract -q "$1-1.p2.l2" "$1-installed" >/dev/null
  "$bin/quillory-pack" extract -q "$1-2.p2.l2" "$1-new" >/dev/null
  tar -cf - "$1-new" | xz --format=lzma -6 >"$1.tar.lzma"
  delta=$("$bin/delta_tool" make "$1" 1 2 "$1-1.p2" "$1-2.p2" "$1-2.p2.l2" "$1.delta")
  whole=$(bytes "$1-2.p2.l2")
  echo "$1: delta $delta bytes of $whole: ratio $(ratio "$delta" "$whole") (bar: at most 0.03)"
  for ((round = 0; round < rounds; round++)); do
    rm -f restored.p2
    undone=$(seconds undo "$1")
    cmp restored.p2 "$1-2.p2"
    echo "$(cat undone.txt) $undone $(seconds untar "$1.tar.lzma")"
  done >times.txt
  # Seconds and memory from within, the window, then clock and processor of both.
  median() { awk "{ print $1 }" times.txt | sort -g | awk '{ v[NR] = $1 } END { print v[int((NR + 1) / 2)] }'; }
  printf '%s: undone in %.2f s, tar --lzma -x in %.2f s: ratio %.2f (bar: at most 0.2); of processor time %.2f\n' \
    "$1" "$(median '$4')" "$(median '$6')" "$(median '$4 / $6')" "$(median '$5 / $7')"
  printf '%s: memory beside the window %.1f MiB (bar: below 64)\n' "$1" "$(median '($2 - $3) / 1048576')"
}

python3 -B "$here/make_application.py" jars
pack Application 1 "$PWD/jars/1" true com.google.common.collect.Maps
pack Application 2 "$PWD/jars/2" true com.google.common.collect.Maps
compare Application

mkdir josm package
if ! (cd package && apt-get download josm >/dev/null 2>&1 && dpkg-deb -x josm_*.deb .); then
  echo "JOSM: not compared, apt-get cannot download its package"
  exit 0
fi
main=org.openstreetmap.josm.gui.MainApplication
cp package/usr/share/josm/josm.jar josm/
pack Plain 1 "$PWD/josm" false "$main"
pack Josm 1 "$PWD/josm" true "$main"
stored=$(bytes Josm-1.p2.l2)
plain=$(bytes Plain-1.p2.l2)
echo "JOSM: first download $stored bytes, with the jar as it came $plain: ratio" \
  "$(ratio "$stored" "$plain") (bar: at most 0.6)"
python3 - josm/josm.jar "${main//.//}.class" <<'PYTHON'
import sys, zipfile
path, changed = sys.argv[1:]
with zipfile.ZipFile(path) as jar:
    entries = [(info, jar.read(info)) for info in jar.infolist()]
with zipfile.ZipFile(path, "w", zipfile.ZIP_DEFLATED) as jar:
    for info, content in entries:
        info.date_time = (2026, 1, 2, 3, 4, 6)
        jar.writestr(info, content[:-40] + b"changed" + content[-20:] if info.filename == changed else content)
PYTHON
pack Josm 2 "$PWD/josm" true "$main"
compare Josm
