#!/bin/sh
# Usage: private_root.sh ROOT NAMESPACE COMMAND...
#
# Shows the system's own folders inside ROOT, read-only, and runs COMMAND with ROOT as its root
# folder. For private_root.cpp, which starts this in a mount namespace of its own; NAMESPACE names
# the one that it came from, in which nothing may be mounted.
set -eu
root=$1 origin=$2
shift 2
if [ "$(readlink /proc/self/ns/mnt)" = "$origin" ]; then
  echo "private_root.sh: not in a mount namespace of its own" >&2
  exit 125
fi
for folder in usr bin sbin lib lib32 lib64 etc dev proc; do
  if [ -d "/$folder" ] && [ ! -L "/$folder" ]; then
    mount --rbind "/$folder" "$root/$folder"
    mount -o remount,bind,ro "$root/$folder"
  fi
done
for file in passwd sudoers; do mount --bind "$root/run/$file" "$root/etc/$file"; done
exec chroot "$root" "$@"
