#!/usr/bin/env bash
# Usage: scripts/java_versions.sh [VERSION...]
#
# Runs the end-to-end tests with the runtimes of Java 8, 11, 17, 21 and 25, or with those that are named,
# as the one that the bundles carry. Debian 12 as root. The runtimes come from other suites of the
# distribution, by the mirror and with the keys of this machine, and are unpacked in build/java-versions:
# nothing is installed, and what is there already is not fetched again. Runtimes of newer suites need their
# C library, which the tests then see in the place of this machine's, in a mount namespace of their own.
# Ends with one line for each version, passed or not.
set -uo pipefail
cd "$(dirname "$0")/.." || exit
. scripts/steps.sh

place=$PWD/build/java-versions
tests=$PWD/build/debug/tests
programs=(first_start_tests e2e_tests going_back_tests)
triplet=$(dpkg-architecture -qDEB_HOST_MULTIARCH)
architecture=$(dpkg --print-architecture)
own_suite=$(sed -n 's/^VERSION_CODENAME=//p' /etc/os-release)

usage() { sed -n '2,/^set/{/^set/d; s/^# \{0,1\}//; p}' "$0"; }

# Where the distribution has each of them: what is not in a release any more is in the unstable suite.
suite_of() {
  case $1 in
    8) echo sid ;;
    11) echo bullseye ;;
    17) echo "$own_suite" ;;
    *) echo trixie ;;
  esac
}

# apt-get or apt-cache with lists of its own, for one suite.
apt_of() {
  local suite=$1 program=$2 apt=$place/$1/apt
  shift 2
  "$program" -qq -o "Dir::Etc::sourcelist=$apt/sources.list" -o Dir::Etc::sourceparts=/dev/null \
    -o "Dir::State=$apt" -o Dir::State::status=/dev/null -o "Dir::Cache=$apt" \
    -o APT::Sandbox::User=root "$@"
}

# The lists of a suite, from the mirror that this machine's own come from.
update_suite() {
  local apt=$place/$1/apt mirror
  [ -e "$apt/updated" ] && return
  mkdir -p "$apt/lists/partial" "$apt/archives/partial"
  mirror=$(apt-get indextargets --format '$(REPO_URI) $(CODENAME)' 'Created-By: Packages' |
    awk -v suite="$own_suite" '$2 == suite { print $1; exit }')
  echo "deb [signed-by=/usr/share/keyrings/debian-archive-keyring.gpg] $mirror $1 main" \
    >"$apt/sources.list"
  apt_of "$1" apt-get update && touch "$apt/updated"
}

# Unpacks packages of a suite below a folder.
unpack() {
  local suite=$1 folder=$2 package deb
  shift 2
  update_suite "$suite" || return 1
  mkdir -p "$folder/deb"
  (cd "$folder/deb" && apt_of "$suite" apt-get download "$@") || return 1
  for package in "$@"; do
    for deb in "$folder/deb/$package"_*.deb; do
      dpkg -x "$deb" "$folder" || return 1
    done
  done
}

# A package's configuration lies in /etc, and links lead there: they become what they lead to.
resolve_links() {
  local root=$1 link target
  find "$root/usr/lib/jvm" -lname '/*' -print0 | while IFS= read -r -d '' link; do
    target=$(readlink "$link")
    rm "$link"
    if [ -e "$root$target" ]; then
      cp -rL "$root$target" "$link"
    elif [ -e "$target" ]; then
      cp -rL "$target" "$link"
    fi
  done
}

# Makes $place/VERSION/runtime, as tests/test_runtime.cmake makes the tests' own.
make_runtime() {
  local version=$1 root=$place/$1 suite home strip=--strip-java-debug-attributes
  suite=$(suite_of "$version")
  [ -e "$root/runtime" ] && return
  if [ "$version" = 8 ]; then
    unpack "$suite" "$root" openjdk-8-jre-headless || return 1
  else
    unpack "$suite" "$root" "openjdk-$version-jre-headless" "openjdk-$version-jdk-headless" || return 1
  fi
  resolve_links "$root"
  home=$root/usr/lib/jvm/java-$version-openjdk-$architecture
  rm -rf "$root/runtime.new"
  if [ "$version" = 8 ]; then
    cp -r "$home/jre" "$root/runtime.new"
    cp "$home/release" "$root/runtime.new/" 2>/dev/null
  else
    [ "$version" != 11 ] || strip=--strip-debug  # as all of them had it before Java 13
    beside_library "$suite" "$home/bin/jlink" --add-modules java.base "$strip" --no-man-pages \
      --no-header-files --output "$root/runtime.new" || return 1
  fi
  beside_library "$suite" "$root/runtime.new/bin/java" -Xshare:dump >"$root/dump.log" 2>&1
  mv "$root/runtime.new" "$root/runtime"
}

# Runs a command with the C library of a suite, all of it at once: parts of two do not go together.
beside_library() {
  local suite=$1
  shift
  if [ "$suite" = "$own_suite" ] || [ "$suite" = bullseye ]; then
    "$@"
    return
  fi
  local library=$place/$suite/library
  if [ ! -e "$library/complete" ]; then
    unpack "$suite" "$library" libc6 libgcc-s1 libstdc++6 || return 1
    # Where the machine has merged the two.
    if [ -d "$library/lib/$triplet" ]; then
      mkdir -p "$library/usr/lib/$triplet"
      cp -a "$library/lib/$triplet/." "$library/usr/lib/$triplet/"
    fi
    touch "$library/complete"
  fi
  unshare --mount bash -c '
    mount -t overlay overlay -o "lowerdir=$1:/usr/lib/$2" "/usr/lib/$2" || exit
    shift 2
    exec "$@"' bash "$library/usr/lib/$triplet" "$triplet" "$@"
}

# In a mount namespace in which the tests' runtime is another one.
run_tests() {
  local version=$1 status=0 program
  cd "$place/$version" || return 1  # where a JVM that dies writes of it
  for program in "${programs[@]}"; do
    beside_library "$(suite_of "$version")" unshare --mount bash -c '
      mount --bind "$1" "$2" || exit
      shift 2
      exec "$@"' bash "$place/$version/runtime" "$tests/runtime" \
      timeout 1200 "$tests/$program" --gtest_brief=1 >"$place/$version/$program.log" 2>&1 || {
      status=1
      grep -E '^\[  (FAILED|PASSED)|^Killed' "$place/$version/$program.log"
    }
    grep -h 'tests\? from .* ran' "$place/$version/$program.log" | sed "s/^/$program: /"
  done
  cd "$OLDPWD" || return 1
  return $status
}

case ${1-} in -*) usage; exit 2 ;; esac
[ $# -gt 0 ] || set -- 8 11 17 21 25
plan_steps $((2 + 2 * $#))
step "Installing what is missing"
scripts/setup.sh tests || exit 1
step "Building the tests"
cmake --preset debug >/dev/null && cmake --build --preset debug --target "${programs[@]}" || exit 1

summary=()
failed=0
for version in "$@"; do
  step "A runtime of Java $version, from $(suite_of "$version")"
  if ! make_runtime "$version"; then
    summary+=("Java $version: no runtime")
    failed=1
    continue
  fi
  what=$(beside_library "$(suite_of "$version")" "$place/$version/runtime/bin/java" -version 2>&1 |
    sed -n 's/.*(build \(.*\))$/\1/p' | head -1)
  step "The tests with $what"
  if run_tests "$version"; then
    summary+=("Java $version ($what): all tests passed")
  else
    summary+=("Java $version ($what): FAILED")
    failed=1
  fi
done
printf '\n%s\n' "${summary[@]}"
exit $failed
