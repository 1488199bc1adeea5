# Sourced by comparisons, in a work folder: short.jar, whose main class prints a line and ends, a key,
# and pack(), which makes dist/NAME.app of them.
export QUILLORY_PACK_CACHE=  # nothing is kept in a user's folder
javac -d classes "$here/ShortMain.java"
jar --create --file short.jar -C classes .
"$bin/quillory-pack" keygen -q --bits 2048 key.pem >/dev/null

pack() {  # NAME COMPRESSION [LINES OF [application]] [OTHER TABLES]
  cat >"$1.toml" <<TOML
[application]
name = "$1"
version = 1
main-class = "ShortMain"
jars = ["short.jar"]
identifier = "com.example.$1"
${3:-}
[runtime]
modules = ["java.base"]
[signing]
key = "key.pem"
${4:-}
TOML
  "$bin/quillory-pack" bundle -q "$1.toml" --compression "$2" >/dev/null
}
