# shellcheck shell=bash
# For scripts/demo.sh --update, which sources it: an application that installs itself from a web server,
# gets a new version while it runs, and goes back from a bad one. It uses that script's $demo, $url, serve
# and build.

update_source=$demo/source
releases=$demo/release
runtime=$demo/runtime
quillory_pack=build/release/bin/quillory-pack

# What a person who ships the application has. The data is what most of a real one is: large, and
# hardly changed from version to version.
prepare_update_source() {
  rm -rf "$demo" "$master"
  mkdir -p "$update_source"
  cp examples/hello/nativesplash.png build/release/share/quillory/hello.jar "$update_source"
  head -c 2000000 /dev/urandom >"$update_source/pictures.data"
  "$quillory_pack" keygen --quiet "$update_source/signing.pem" >/dev/null
  "$quillory_pack" keygen --quiet --reserve "$update_source/reserve.pem" >/dev/null
  # A window needs a toolkit, and a screen; without one a smaller runtime does.
  jlink --add-modules "$([ -n "${DISPLAY:-}" ] && echo java.desktop || echo java.base)" \
    --strip-debug --no-header-files --no-man-pages --output "$runtime"
}

# release VERSION [MAIN-CLASS]: makes that version, from a line of data more than the one before.
release() {
  echo "what is new in version $1" >>"$update_source/pictures.data"
  echo "Version $1 has a line more." >"$update_source/notes.md"
  cat >"$update_source/quillory.toml" <<EOT
[application]
name = "Hello Quillory"
version = $1
main-class = "${2:-com.example.hello.Hello}"
jars = ["hello.jar"]
files = ["pictures.data"]
identifier = "com.example.hello"
splash = "nativesplash.png"
[runtime]
folder = "$runtime"
[update]
url = "$url"
mode = "background"
reserve-key = "reserve.public.pem"
notes = "notes.md"
[signing]
key = "signing.pem"
[bundle]
online = true
compression = 1
EOT
  # Without its advice to use https, which is of no use here.
  "$quillory_pack" release "$update_source/quillory.toml" --output "$demo" 2>"$demo/release.err" \
    >/dev/null || { cat "$demo/release.err" >&2; return 1; }
  grep -E '^(Quillory|JRE|Hello Quillory) [0-9]+: ' "$demo/release.err" | sed 's/^/  /'
}

# Starts the application and shows what it says of its version and of updates: run SECONDS [ARGUMENT]...
run() {
  local stay=$(($1 * 1000)) status=0 begin end
  shift
  begin=$(clock_ms)
  "$app/Contents/MacOS/HelloQuillory" "--stay=$stay" "--close-after=$stay" "$@" \
    >"$demo/start.out" 2>"$demo/start.err" || status=$?
  end=$(clock_ms)
  sed -n 's/^class path: .*Quillory-Hello Quillory-\([0-9]*\)-complete.*/version \1 runs/p
    /^Updated from/p; /did not work/p; /^Version .* is /p' "$demo/start.out" | uniq | sed 's/^/  /'
  sed -n 's/^\(\[Updater\] Version .*\)/  \1/p' "$demo/start.err"
  echo "  (ended with status $status after $((end - begin)) ms)"
}

shown_requests=0
# What the web server was asked for since this was asked last.
show_requests() {
  tail -n "+$((shown_requests + 1))" "$demo/server/access.log"
  shown_requests=$(wc -l <"$demo/server/access.log")
}

demo_update() {
  plan_steps 11
  build programs online
  step "Release 1: an installer without runtime and application, and what it fetches"
  prepare_update_source
  mkdir -p "$releases"
  serve
  release 1
  du -sh "$app" | sed "s|$demo/|  |"
  step "First start: fetches the runtime and the application, and runs version 1"
  run 1
  show_requests
  step "Release 2: a few bytes lead there"
  release 2
  step "Version 1 runs, fetches version 2 behind its window, and says so"
  run 6 --update-now
  show_requests
  step "The next start is version 2"
  run 1
  step "Release 3, which is broken"
  release 3 com.example.hello.Launch
  run 6 --update-now
  show_requests
  step "Version 3 fails twice"
  run 1
  run 1
}

# What stands behind "Second start" in the other demonstrations.
demo_update_end() {
  step "Version 2 comes back, and says why"
  run 1
}
