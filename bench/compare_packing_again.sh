#!/usr/bin/env bash
# Usage: bench/compare_packing_again.sh BIN
#
# Packs jEdit, which Debian has, twice with the cache of quillory-pack: for the first time, and with one
# class of its largest jar written anew. Prints what the second time takes of the first. On a busy machine
# "sudo chrt -r 20 bench/compare_packing_again.sh BIN" keeps other work out of it. BIN is the folder of
# built programs.
set -euo pipefail

bin=$(cd "$1" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
export QUILLORY_PACK_CACHE=$work/cache

apt-get download jedit >/dev/null 2>&1 || { echo "not compared, apt-get cannot download jEdit"; exit 0; }
dpkg-deb -x jedit_*.deb root
mkdir app
tar -chf - --exclude=doc --exclude='*.sh' -C root/usr/share/jedit . | tar -xf - -C app
cd app
"$bin/quillory-pack" init -q >/dev/null
"$bin/quillory-pack" keygen -q --bits 2048 signing.pem >/dev/null

# Wall-clock seconds of packing, with three digits.
packed() {
  local TIMEFORMAT=%3R
  { time "$bin/quillory-pack" bundle -q >/dev/null 2>&1; } 2>&1
}

first=$(packed)
class=org/gjt/sp/jedit/jEdit.class
(cd .. && jar --extract --file app/jedit.jar "$class" && touch "$class")
jar --update --file jedit.jar -C .. "$class"
again=$(packed)
awk -v a="$first" -v b="$again" 'BEGIN {
  printf "first time %.2f s, with one class changed %.2f s: ratio %.2f (bar: at most 0.15)\n", a, b, b / a }'
