#!/usr/bin/env bash
# Usage: scripts/fuzz.sh [HOURS]
#
# Runs every fuzz target over its corpus, HOURS divided among them (1 by default, 0.1 for six
# minutes), and ends with 0 when nothing was found. What is found lies in build/fuzz/found, and new
# inputs that reach more code in build/fuzz/corpus. scripts/setup.sh programs fuzz installs what it needs.
set -euo pipefail
cd "$(dirname "$0")/.."

case ${1:-1} in
  *[!0-9.]* | '' | *.*.*) sed -n 's/^# Usage/Usage/p' "$0" >&2; exit 2 ;;
esac
cmake --preset fuzz >/dev/null
targets=(tests/fuzz/*_fuzz.cpp)
names=("${targets[@]##*/}")
names=("${names[@]%_fuzz.cpp}")
cmake --build --preset fuzz --target "${names[@]/#/fuzz_}"

seconds=$(awk -v hours="${1:-1}" -v targets=${#names[@]} 'BEGIN { print int(hours * 3600 / targets) }')
[ "$seconds" -gt 0 ] || seconds=1
mkdir -p build/fuzz/found
status=0
for name in "${names[@]}"; do
  echo "fuzz: $name, $seconds s"
  mkdir -p "build/fuzz/corpus/$name"
  "build/fuzz/bin/fuzz_$name" -max_total_time="$seconds" -timeout=20 -rss_limit_mb=2048 \
    -artifact_prefix="build/fuzz/found/$name-" "build/fuzz/corpus/$name" "tests/fuzz/corpus/$name" \
    >"build/fuzz/$name.log" 2>&1 || { status=1; echo "fuzz: $name: FOUND, see build/fuzz/$name.log"; }
  grep -E '^Done|DONE' "build/fuzz/$name.log" | tail -n 1
done
exit $status
