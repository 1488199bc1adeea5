#!/usr/bin/env bash
# Usage: scripts/demo.sh [--online | --update | --clean]
#
# Sets the machine up, builds, packs the sample application with a Java runtime of its own into
# "build/demo/Hello Quillory.app", and starts it twice: the first start installs it in the home
# folder, the second finds it current. --online packs it without a runtime, which the first start
# gets from a web server of the demo's own. --update goes on from there: version 1 fetches its own
# application, too, is updated while it runs, and goes back from a broken version. --clean removes what
# the demo has made, also there.
set -euo pipefail
cd "$(dirname "$0")/.."
. scripts/steps.sh

demo=$PWD/build/demo
app="$demo/Hello Quillory.app"
export QUILLORY_PACK_CACHE=$demo/packed-before
# Not every system has getent; without it $HOME has to do.
home=$({ getent passwd "$(id -u)" 2>/dev/null || true; } | cut -d: -f6)
master="${home:-$HOME}/Library/Application Support/Quillory-Hello Quillory"

. scripts/demo_update.sh

clean() {
  rm -rf "$demo" "$master"
  echo "Removed $demo"
  echo "Removed $master"
}

# The programs only; what the tests need, and the tests, are left to scripts/test.sh.
build() {
  step "Installing what is missing: $*"
  scripts/setup.sh "$@"
  step "Building the programs"
  mkdir -p build
  cmake --preset programs >build/configure.log || { cat build/configure.log; return 1; }
  cmake --build --preset programs
}

# What a person who ships the application has: its jar, a picture, and quillory.toml.
pack() {
  rm -rf "$demo" "$master"
  mkdir -p "$demo/source"
  cp examples/hello/{quillory.toml,nativesplash.png} build/release/share/quillory/hello.jar \
    "$demo/source"
  build/release/bin/quillory-pack keygen "$demo/source/signing.pem"
  build/release/bin/quillory-pack bundle "$demo/source/quillory.toml" --output "$demo" \
    --compression 1
}

# Starts the application and shows what it printed. The launcher's own lines, which begin with the
# milliseconds since the one before, are in its log.
start() {
  local begin end
  begin=$(clock_ms)
  "$app/Contents/MacOS/HelloQuillory" --close-after=3000 "$@" >"$demo/start.out" 2>"$demo/start.err"
  end=$(clock_ms)
  sed -n '/^Hello from Java/,/^url request/p' "$demo/start.out" | sed '/^+[0-9]/d; s/^/  /'
  echo "  (the whole start took $((end - begin)) ms)"
}

stop_serving() { if kill "$server_process" 2>/dev/null; then wait "$server_process" || true; fi; }

# Serves the release files at $url for as long as this script runs.
serve() {
  local server="$demo/server" port=8480
  while (exec 3<>"/dev/tcp/127.0.0.1/$port") 2>/dev/null; do port=$((port + 1)); done
  url="http://127.0.0.1:$port/"
  mkdir -p "$server"
  cat >"$server/nginx.conf" <<EOT
$([ "$(id -u)" != 0 ] || echo "user $(id -un) $(id -gn);")
daemon off;
pid nginx.pid;
events {}
http {
  log_format short '  \$status \$request_uri (\$body_bytes_sent bytes)';
  access_log access.log short;
  client_body_temp_path body; proxy_temp_path proxy; fastcgi_temp_path fastcgi;
  uwsgi_temp_path uwsgi; scgi_temp_path scgi;
  server { listen 127.0.0.1:$port; root ../release; }
}
EOT
  nginx -p "$server/" -e error.log -c nginx.conf &
  server_process=$!
  trap stop_serving EXIT
  until (exec 3<>"/dev/tcp/127.0.0.1/$port") 2>/dev/null; do
    kill -0 "$server_process" || return 1
    sleep 0.1
  done
}

# The same application without a runtime, and with the address of the release files.
pack_online() {
  local config="$demo/source/online.toml"
  { sed '/^jlink = true/d' "$demo/source/quillory.toml"; printf '[update]\nurl = "%s"\n' "$url"; } \
    >"$config"
  app="$demo/online/Hello Quillory.app"
  build/release/bin/quillory-pack bundle "$config" --output "$demo/online" --compression 1
}

demo_online() {
  plan_steps 7
  build programs online
  step "Packing the sample application, and its runtime for the web server"
  pack
  serve
  pack_online
  du -sh "$demo"/{,online/}*.app | sed "s|$demo/|  |"
  step "First start: gets the runtime from $url, installs everything, and runs it"
  start "first start" "an argument with spaces"
  grep -ahoE '\[JRE(Search|Download)\] (JRE (is valid|Version is).*|JRE Downloaded OK)' \
    "$demo/start.out" | sed 's/^/  /'
  step "What the web server was asked for"
  cat "$demo/server/access.log"
}

demo_offline() {
  plan_steps 6
  build programs
  step "Packing the sample application"
  pack
  step "First start: installs the updater, the runtime and the application, and runs it"
  start "first start" "an argument with spaces"
}

case "${1:-}" in
  --clean) clean; exit ;;
  --online) demo_online ;;
  --update) demo_update ;;
  "") demo_offline ;;
  *) sed -n 2p scripts/demo.sh >&2; exit 2 ;;
esac
if [ "${1:-}" = --update ]; then
  demo_update_end
else
  step "Second start: everything is current"
  start "second start"
fi
step "Where things are"
for newest_log in "$master"/logs/*.log; do :; done  # their names begin with the time
cat <<EOT
  application  $app
  installed    $master
  log          $newest_log
  remove all   scripts/demo.sh --clean
EOT
