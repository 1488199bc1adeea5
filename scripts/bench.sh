#!/usr/bin/env bash
# Usage: scripts/bench.sh
#
# Builds the release preset and runs every benchmark: first the programs of bench/ (bench_*), which
# print their comparisons as "ratio", then the comparisons of whole processes (bench/compare_*.sh,
# each given the folder of the built programs). For figures worth keeping leave the machine idle.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/setup.sh tests
cmake --preset release >/dev/null
cmake --build --preset release

shopt -s nullglob
for benchmark in build/release/bin/bench_*; do
  echo "== $(basename "$benchmark")"
  "$benchmark"
done
for comparison in bench/compare_*.sh; do
  echo "== $(basename "$comparison")"
  "$comparison" "$PWD/build/release/bin"
done
