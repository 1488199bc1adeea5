#!/usr/bin/env bash
# Usage: scripts/setup.sh [PURPOSE...]
#
# Installs the packages that are missing, and nothing when all are there. A PURPOSE is
#   programs  building the programs, packing and starting an application (scripts/demo.sh)
#   online    the web server of "scripts/demo.sh --online", beside programs
#   tests     building and running tests and benchmarks, beside programs
#   macos     building the macOS programs on Linux (scripts/build-macos.sh), beside programs
#   fuzz      building the fuzz targets
#   checks    what looks at the sources (scripts/check.sh)
#   applications  other people's applications that are packed and started (scripts/test.sh --applications),
#             beside tests
# Without one it is all of them but the last. Debian 12 as root or with sudo; macOS with Homebrew, all at once.
set -euo pipefail

programs=(
  # compiler, build (make is what gnustep-config asks)
  g++ gobjc++ cmake ninja-build make pkg-config
  # Cocoa on Linux, with the back end that draws
  libgnustep-gui-dev gnustep-back0.29-cairo
  # libraries of the launcher
  libtomcrypt-dev libtommath-dev libcurl4-openssl-dev libsystemd-dev libx11-dev
  # libraries of the tools
  liblzma-dev zlib1g-dev libarchive-dev libtoml11-dev libcli11-dev nlohmann-json3-dev
  # the runtime that is packed, and jlink
  openjdk-17-jdk
)
online=(nginx-light)
tests=(
  git junit4 libgtest-dev libgmock-dev libbenchmark-dev libssl-dev libnss-wrapper openssl xz-utils curl
  python3 python3-pycryptodome locales
  xvfb x11-utils imagemagick xdotool dbus libglib2.0-bin hyperfine sudo
  xauth xxd man-db mandoc zsh fish nginx-light shellcheck
)
macos=(llvm-14 dpkg-dev)
command -v npm >/dev/null || macos+=(npm)
fuzz=(clang-14 libclang-rt-14-dev)
checks=(git clang-format-14 clang-tidy-14 shellcheck python3)
applications=(
  # Swing, JavaFX, SWT
  jedit josm pdfsam stegosuite
  # examples/maven
  maven libexec-maven-plugin-java libmaven-compiler-plugin-java libmaven-dependency-plugin-java
  libmaven-jar-plugin-java libmaven-resources-plugin-java libsurefire-java libcommons-lang3-java
)
homebrew=(cmake ninja pkg-config libtomcrypt libtommath xz toml11 cli11 nlohmann-json googletest
          google-benchmark openjdk@17 hyperfine)

as_root() { if [ "$(id -u)" = 0 ]; then "$@"; else sudo "$@"; fi; }

missing_packages() {
  local package
  for package in "$@"; do
    dpkg-query -W -f '${Status}' "$package" 2>/dev/null | grep -q 'ok installed' || echo "$package"
  done
}

# A package that holds a service starts it at once, unless this file forbids it: the demo and the tests
# start their own.
without_services() {
  local policy=/usr/sbin/policy-rc.d status=0
  [ -e "$policy" ] && { "$@"; return; }
  printf '#!/bin/sh\nexit 101\n' | as_root tee "$policy" >/dev/null
  as_root chmod 755 "$policy"
  "$@" || status=$?
  as_root rm -f "$policy"
  return $status
}

install_packages() {
  local missing
  mapfile -t missing < <(missing_packages "$@")
  [ ${#missing[@]} -gt 0 ] || return 0
  echo "Installing: ${missing[*]}"
  as_root apt-get update -qq
  # Without waiting for the disk after each file, which is for systems that must survive a power cut.
  without_services as_root env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq \
    --no-install-recommends -o DPkg::Options::=--force-unsafe-io "${missing[@]}" >/dev/null
}

usage() { sed -n '2,/^set/{/^set/d; s/^# \{0,1\}//; p}' "$0"; }

[ $# -gt 0 ] || set -- programs online tests macos fuzz checks
packages=()
for purpose in "$@"; do
  case $purpose in
    programs | tests | macos | applications) packages+=("${programs[@]}") ;;&
    online) packages+=("${online[@]}") ;;
    tests) packages+=("${tests[@]}") ;;
    applications) packages+=("${tests[@]}" "${applications[@]}") ;;
    macos) packages+=("${macos[@]}") ;;
    fuzz) packages+=("${fuzz[@]}") ;;
    checks) packages+=("${checks[@]}") ;;
    programs) ;;
    --help) usage; exit ;;
    *) usage >&2; exit 2 ;;
  esac
done

if [ "$(uname)" = Darwin ]; then
  brew install --quiet "${homebrew[@]}"
else
  install_packages "${packages[@]}"
fi
