#!/usr/bin/env bash
# Usage: bench/compare_size.sh BIN
#
# What people download for Linux, runtime included: the .tar.xz of `quillory-pack bundle --archive`, of
# jEdit and JOSM with what `quillory-pack init` writes for them, against jpackage's image of the same
# files, packed as .zip and as .tar.xz. The runtime in that image is what jlink links of the same
# modules, without archives of classes; what quillory-pack does to a linked runtime is ours. Both come
# from Debian's packages, which need no installing. BIN is the folder of built programs.
set -euo pipefail

bin=$(cd "$1" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
export QUILLORY_PACK_CACHE=  # nothing is kept in a user's folder

bytes() { stat -c %s "$1"; }
ratio() { awk "BEGIN { printf \"%.3f\", $1 / $2 }"; }

# NAME, and the packages that it needs: "files" has what the package of NAME has in /usr/share/NAME.
fetch() {
  local package
  for package in "$@"; do
    apt-get download "$package" >/dev/null 2>&1 || return 1
  done
  for package in ./*.deb; do
    dpkg-deb -x "$package" root
  done
  mkdir files
  tar -chf - --exclude=doc --exclude='*.sh' -C "root/usr/share/$1" . | tar -xf - -C files
  rm -f "files/$1"-*.jar
}

modules_of() { "$1/bin/java" --list-modules | sed 's/@.*//' | paste -s -d ,; }

compare() { # NAME ZIP-BAR XZ-BAR PACKAGES...
  local name=$1 zip_bar=$2 xz_bar=$3
  shift 3
  mkdir "$name"
  cd "$name"
  if ! fetch "$@"; then
    echo "$name: not compared, apt-get cannot download its packages"
    cd ..
    return
  fi
  cd files
  "$bin/quillory-pack" init -q >/dev/null
  "$bin/quillory-pack" keygen -q --bits 2048 signing.pem >/dev/null
  "$bin/quillory-pack" bundle -q --archive >/dev/null
  mv dist ..
  rm signing* quillory.toml
  cd ..

  "$bin/quillory-pack" extract -q dist/release/Quillory-JRE-*-archive.p2.l2 packed >/dev/null
  chmod -R u+x packed/Contents/Home/bin packed/Contents/Home/lib
  jlink --add-modules "$(modules_of packed/Contents/Home)" --no-header-files --no-man-pages \
    --output runtime
  find runtime -name '*.jsa' -delete
  # The jars that the manifest names elsewhere are among ours, too.
  find root/usr/share/java -name '*.jar' -type l -exec cp -L {} files/ \; 2>/dev/null || :
  jpackage --type app-image --name "$name" --input files --main-jar "$name.jar" \
    --runtime-image runtime --dest image >/dev/null
  (cd image && zip -q -r -X ../image.zip "$name")
  tar --owner 0 --group 0 -cf - -C image "$name" | xz -6 >image.tar.xz

  local ours zip xz
  ours=$(bytes dist/*.tar.xz)
  zip=$(bytes image.zip)
  xz=$(bytes image.tar.xz)
  echo "$name: $ours bytes; the bundle's files themselves $(find dist/*.app -type f -printf '%s\n' |
    awk '{ all += $1 } END { print all }')"
  echo "$name: against jpackage's zip of $zip bytes: ratio $(ratio "$ours" "$zip") (bar: at most $zip_bar)"
  echo "$name: against its .tar.xz of $xz bytes: ratio $(ratio "$ours" "$xz") (bar: at most $xz_bar)"
  cd ..
}

compare jedit 0.66 0.97 jedit
compare josm 0.62 0.85 josm libcommons-compress-java libgettext-commons-java jmapviewer
