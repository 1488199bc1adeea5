#!/usr/bin/env bash
# Usage: scripts/test.sh [--all | --applications] [PRESET...]
#
# Sets the machine up, builds and runs the tests; the presets are "release" (the default), "debug",
# "sanitize" and "threads". Left out is what takes minutes and rarely breaks: the tests with the label
# "macos", for which the macOS programs are built, and, of presets other than "release", those with the
# label "whole", most of whose time is that of other programs. --all has them, too; the label
# "macos-whole", every end-to-end test by the macOS launcher, is for ctest alone. --applications runs those
# with the label "real-applications" and no others: applications of the distribution, which are installed
# for it, packed, started and looked at; docs/applications.md tells of them. Ends with one line for each
# preset, passed or not.
set -uo pipefail
cd "$(dirname "$0")/.." || exit
. scripts/steps.sh

purposes=(tests)
all=
applications=
case "${1:-}" in
  --all) shift && purposes+=(macos) && all=1 ;;
  --applications) shift && purposes+=(applications) && applications=1 ;;
esac
case "${1:-}" in -*) sed -n 2p scripts/test.sh >&2; exit 2 ;; esac
[ $# -gt 0 ] || set -- release

# Which of a preset's tests run, as ctest wants to be told.
selected() {
  if [ -n "$applications" ]; then
    echo --label-regex '^real-applications$'
    return
  fi
  local labels='macos-whole|real-applications'
  [ -n "$all" ] || labels+='|macos'
  [ -n "$all" ] || [ "$1" = release ] || labels+='|whole'
  echo --label-exclude "^($labels)\$"
}

run_preset() {
  local selection
  local target=() parallel=$((2 * $(getconf _NPROCESSORS_ONLN)))
  read -ra selection < <(selected "$1")
  # They wait for windows on a clock, and each keeps a processor busy.
  [ -z "$applications" ] || { target=(--target real_applications_tests) && parallel=1; }
  step "Building the programs and their tests ($1)"
  cmake --preset "$1" >"build/$1-configure.log" 2>&1 || { cat "build/$1-configure.log"; return 1; }
  cmake --build --preset "$1" ${target[@]+"${target[@]}"} || return 1
  step "Running the tests ($1)"
  # Many wait for other programs: two for each processor keep it busy.
  ctest --preset "$1" --parallel "$parallel" "${selection[@]}"
}

mkdir -p build
plan_steps $((1 + 2 * $#))
step "Installing what is missing: ${purposes[*]}"
scripts/setup.sh "${purposes[@]}" || exit 1
status=0
summary=()
for preset in "$@"; do
  if run_preset "$preset"; then
    summary+=("$preset: all tests passed")
  else
    summary+=("$preset: FAILED")
    status=1
  fi
done
printf '\n%s\n' "${summary[@]}"
exit $status
