#!/usr/bin/env bash
# Usage: scripts/faults.sh [--quick] [OPTION...]
#
# Builds the programs, puts faults into installations, updates and packing runs, and looks whether they
# recover: kills and power cuts at every call that changes something, calls that fail, starts at the
# same moment, servers and users that mean harm, odd surroundings. Writes the tables of docs/faults.md.
# Takes about an hour; --quick tries a sample in about a minute, and writes nothing. More options are
# those of tests/faults/faults.py.
set -euo pipefail
cd "$(dirname "$0")/.."
. scripts/steps.sh

limits=(--page docs/faults.md)
if [ "${1:-}" = --quick ]; then
  shift
  limits=(--most 4)
fi
plan_steps 3
step "Installing what is missing: tests"
scripts/setup.sh tests
step "Building what is tried"
mkdir -p build
cmake --preset release >build/configure.log || { cat build/configure.log; exit 1; }
cmake --build --preset release --target launcher quillory-pack quillory-update \
  quillory-update-window lzma64 elev_mac updater_jar fault_injector
step "Trying"
exec python3 tests/faults/faults.py --injector build/release/tests/fault_injector \
  --pack build/release/bin/quillory-pack --splash examples/hello/nativesplash.png "${limits[@]}" "$@"
