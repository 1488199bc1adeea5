#!/usr/bin/env bash
# Usage: scripts/setup.sh [--online]
#
# Installs every package that building, testing and the demo use. --online adds the web server of
# "scripts/demo.sh --online". Debian 12 as root or with sudo; macOS with Homebrew. Does nothing when
# all of them are there.
set -euo pipefail

packages=(
  # compiler, build
  g++ gobjc++ cmake ninja-build pkg-config git
  # Cocoa on Linux, with the back end that draws
  libgnustep-gui-dev gnustep-back0.29-cairo
  # libraries of the launcher
  libtomcrypt-dev libtommath-dev libcurl4-openssl-dev libsystemd-dev libx11-dev
  # libraries of the tools
  liblzma-dev zlib1g-dev libtoml11-dev libcli11-dev nlohmann-json3-dev
  # Java: the runtime that is packed, and the tests of the Java programs
  openjdk-17-jdk junit4
  # tests and benchmarks
  libgtest-dev libgmock-dev libbenchmark-dev libssl-dev libnss-wrapper openssl xz-utils curl
  python3 python3-pycryptodome locales
  xvfb x11-utils imagemagick xdotool dbus libglib2.0-bin hyperfine sudo
)
# The macOS programs (scripts/build-macos.sh), and the fuzz preset.
packages+=(llvm-14 dpkg-dev clang-14 libclang-rt-14-dev)
command -v npm >/dev/null || packages+=(npm)
web_server=(nginx-light)
homebrew=(cmake ninja pkg-config libtomcrypt libtommath xz toml11 cli11 nlohmann-json googletest
          google-benchmark openjdk@17 hyperfine)

as_root() { if [ "$(id -u)" = 0 ]; then "$@"; else sudo "$@"; fi; }

missing_packages() {
  for package in "$@"; do
    dpkg-query -W -f '${Status}' "$package" 2>/dev/null | grep -q 'ok installed' || echo "$package"
  done
}

install_packages() {
  local missing
  missing=$(missing_packages "$@")
  [ -z "$missing" ] && return
  echo "Installing:" $missing
  as_root apt-get update -qq
  as_root env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends \
    $missing >/dev/null
}

# A package that holds a service starts it at once; the demo starts its own, on the loopback only.
without_services() {
  local policy=/usr/sbin/policy-rc.d
  [ -e "$policy" ] && { "$@"; return; }
  printf '#!/bin/sh\nexit 101\n' | as_root tee "$policy" >/dev/null
  as_root chmod 755 "$policy"
  local status=0
  "$@" || status=$?
  as_root rm -f "$policy"
  return $status
}

if [ "$(uname)" = Darwin ]; then
  brew install --quiet "${homebrew[@]}"
  exit
fi
install_packages "${packages[@]}"
if [ "${1:-}" = --online ]; then without_services install_packages "${web_server[@]}"; fi
