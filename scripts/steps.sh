# shellcheck shell=bash
# For scripts that take minutes; they source it. plan_steps COUNT, and before each of them step HEADING:
# it says which one of how many begins, and how long the script has been running.
# Milliseconds on a clock, for the time that something takes. Not every system's date knows "%N".
clock_ms() {
  local nanoseconds
  nanoseconds=$(date +%s%N)
  case $nanoseconds in
    *N) python3 -c 'import time; print(int(time.time() * 1000))' ;;
    *) echo $((nanoseconds / 1000000)) ;;
  esac
}

planned_steps=0
begun_steps=0

plan_steps() { planned_steps=$1; }

step() {
  local bold='' plain=''
  if [ -t 1 ]; then bold=$'\033[1m' plain=$'\033[0m'; fi
  begun_steps=$((begun_steps + 1))
  printf '\n%s[%d/%d, %d:%02d] %s%s\n' "$bold" "$begun_steps" "$planned_steps" \
    $((SECONDS / 60)) $((SECONDS % 60)) "$*" "$plain"
}
