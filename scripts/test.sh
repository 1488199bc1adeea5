#!/usr/bin/env bash
# Usage: scripts/test.sh [PRESET...]
#
# Sets the machine up, builds and runs all tests; the presets are "release" (the default), "debug"
# and "sanitize". Ends with one line for each preset, passed or not.
set -uo pipefail
cd "$(dirname "$0")/.."

run_preset() {
  cmake --preset "$1" >"build/$1-configure.log" 2>&1 || { cat "build/$1-configure.log"; return 1; }
  cmake --build --preset "$1" || return 1
  ctest --preset "$1" --parallel "$(getconf _NPROCESSORS_ONLN)"
}

scripts/setup.sh || exit 1
mkdir -p build
status=0
summary=()
for preset in "${@:-release}"; do
  if run_preset "$preset"; then
    summary+=("$preset: all tests passed")
  else
    summary+=("$preset: FAILED")
    status=1
  fi
done
printf '%s\n' "${summary[@]}"
exit $status
