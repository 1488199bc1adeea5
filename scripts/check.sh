#!/usr/bin/env bash
# Usage: scripts/check.sh [--changed]
#
# Looks at the sources without building or running anything: clang-format, shellcheck, and clang-tidy
# over what is compiled (tests apart). --changed looks only at files that differ from origin/main, or
# without one from main, and at sources that include such a header. Ends with one line for each tool.
set -uo pipefail
cd "$(dirname "$0")/.." || exit

for tool in clang-format-14 clang-tidy-14 shellcheck; do
  command -v "$tool" >/dev/null || { echo "there is no $tool; scripts/setup.sh has it" >&2; exit 2; }
done

changed_files() {
  local base
  base=$(git merge-base HEAD origin/main 2>/dev/null || git merge-base HEAD main) || exit
  { git diff --name-only --diff-filter=d "$base"; git ls-files --others --exclude-standard; } | sort -u
}

# A header is looked at through a source that includes it.
with_includers() {
  local file
  for file in "$@"; do
    echo "$file"
    case $file in *.h) git grep -lF "#include \"$file\"" -- '*.cpp' '*.mm' ;; esac
  done | sort -u
}

if [ "${1:-}" = --changed ]; then
  mapfile -t files < <(changed_files)
else
  mapfile -t files < <(git ls-files)
fi

sources=() scripts=()
for file in "${files[@]}"; do
  case $file in
    *.cpp | *.h | *.mm | *.m) sources+=("$file") ;;
    *) [ -f "$file" ] && head -n 1 "$file" | grep -qaE '^#!.*[/ ](ba)?sh$' && scripts+=("$file") ;;
  esac
done

format() { [ ${#sources[@]} -eq 0 ] || clang-format-14 --dry-run --Werror "${sources[@]}"; }

shell() { [ ${#scripts[@]} -eq 0 ] || shellcheck --external-sources --check-sourced "${scripts[@]}"; }

# Its own build folder, which is only configured: what is compiled, and how.
tidy() {
  local only=()
  if [ "${1:-}" = --changed ]; then
    mapfile -t only < <(with_includers "${sources[@]}")
    [ ${#sources[@]} -gt 0 ] || return 0
  fi
  mkdir -p build
  cmake --preset debug -B build/check -DCMAKE_DISABLE_PRECOMPILE_HEADERS=ON \
    -DCMAKE_UNITY_BUILD=OFF >build/check.log 2>&1 || { cat build/check.log; return 1; }
  scripts/tidy.py build/check "${only[@]}"
}

status=0 summary=()
look() {
  if "${@:2}"; then
    summary+=("$1: good")
  else
    summary+=("$1: FAILED")
    status=1
  fi
}
look clang-format format
look shellcheck shell
look clang-tidy tidy "$@"
printf '%s\n' "${summary[@]}"
exit $status
