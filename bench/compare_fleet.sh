#!/usr/bin/env bash
# Usage: bench/compare_fleet.sh FOLDER [CLIENTS]
#
# 2,000 installations follow five releases against a real nginx, with connections that are dropped and
# cut: whether all arrive, and what they ask for, beside what the arithmetic says. FOLDER has the built
# programs. The installations lie in memory, where the system has a place for that.
set -euo pipefail
if [ ! -x /usr/sbin/nginx ]; then
  echo "there is no nginx: scripts/setup.sh online"
  exit 0
fi
if [ -w /dev/shm ]; then export TMPDIR=/dev/shm; fi
"$1/update_fleet" "${2:-2000}"
