#!/usr/bin/env bash
# Usage: scripts/mutate.sh FOLDER [COUNT [SEED]]
#
# How much the tests of a folder notice: changes one token of its code at random, builds and runs the
# folder's own test programs, and says which changes no test saw. COUNT is 20 unless given, SEED 1; the
# same seed changes the same. Works on a copy in build/mutate, never on these sources.
set -euo pipefail
cd "$(dirname "$0")/.."

folder=${1:-} count=${2:-20} seed=${3:-1}
if [ -z "$folder" ] || [ ! -d "$folder" ] || [ ! -f "tests/$folder/CMakeLists.txt" ]; then
  sed -n 2p scripts/mutate.sh >&2
  exit 2
fi
copy=build/mutate/source tree=build/mutate/build
mkdir -p "$copy"
scripts/mutate.py copy "$copy"
launcher=$(command -v ccache || true)
cmake --preset debug -S "$copy" -B "$tree" ${launcher:+-DCMAKE_CXX_COMPILER_LAUNCHER="$launcher"} \
  >build/mutate/configure.log || { cat build/mutate/configure.log; exit 2; }
exec scripts/mutate.py "$copy" "$tree" "$folder" "$count" "$seed"
