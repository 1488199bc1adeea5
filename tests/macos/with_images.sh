#!/usr/bin/env bash
# Usage: with_images.sh LOADER IMAGES COMMAND...
#
# Runs a test program with the macOS executables in the folder IMAGES as the programs under test: each
# is put behind a copy of LOADER, which then runs it wherever it is copied to. elev_mac stays this
# machine's: the image's asks by AppleScript. Status 77 when nothing was built for macOS.
set -euo pipefail
loader=$1
images=$2
shift 2
[ -x "$images/launcher" ] || { echo "skipped: nothing is built for macOS"; exit 77; }
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
# Where this is killed it does so, once whatever ran here has ended.
exec 9> >(exec setsid sh "$(dirname "$0")/../harness/guardian.sh" "$folder" >/dev/null 2>&1)
strip -o "$folder/loader" "$loader"
for program in launcher lzma64 quillory-update; do
  cat "$folder/loader" "$images/$program" >"$folder/$program"
  chmod +x "$folder/$program"
done
# On a display the loader's Cocoa has three threads before the launcher asks for its first.
export QUILLORY_EARLIER_THREADS=3
QUILLORY_LAUNCHER=$folder/launcher QUILLORY_LZMA64=$folder/lzma64 \
  QUILLORY_UPDATE=$folder/quillory-update "$@"
