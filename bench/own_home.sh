# Sourced by comparisons that install: a home folder of their own in $work, for every child.
mkdir -p "$work/home"
printf 'bench:x:%s:%s::%s:/bin/sh\n' "$(id -u)" "$(id -g)" "$work/home" >"$work/passwd"
printf 'bench:x:%s:\n' "$(id -g)" >"$work/group"
export HOME="$work/home" NSS_WRAPPER_PASSWD="$work/passwd" NSS_WRAPPER_GROUP="$work/group"
export LD_PRELOAD=libnss_wrapper.so
unset DISPLAY WAYLAND_DISPLAY DBUS_SESSION_BUS_ADDRESS
