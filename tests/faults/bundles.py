"""The bundles that the faults are put into: small ones of quillory-pack's, whose Java is a script
that looks whether its class path is whole, and says that the application runs.
"""

import os
import pathlib
import shutil
import subprocess
import zipfile

# What was packed before is not looked for: each run does all of its work, and none in a user's folder.
os.environ["QUILLORY_PACK_CACHE"] = ""

JAVA = """#!/bin/sh
case "$*" in
-version) echo 'java version "1.8.0_202"'; exit ;;
*JreCompatibility*) exit 72 ;;
-Xshare:dump) echo 'classes' >"${0%/bin/*}/lib/classes.jsa"; exit ;;
esac
while [ $# -gt 0 ] && [ "$1" != -cp ]; do shift; done
path=$2
shift $(($# > 2 ? 2 : $#))
set -f
IFS=:
for entry in $path; do [ -s "$entry" ] || { echo "no class path: $entry"; exit 1; }; done
[ -n "$path" ] || { echo "no class path"; exit 1; }
# Behind further options the main class, and behind that the properties.
while [ "${1#-}" != "$1" ]; do shift; done
[ -s "$2" ] || { echo "no launch properties: $2"; exit 1; }
echo "The application runs"
"""

# Of a size that takes more than one write, and does not compress away.
FILLING = "".join(f"{number * 7919 % 10007:05d}\n" for number in range(4000))


def write(path, text, mode=0o644):
    path.parent.mkdir(parents=True, exist_ok=True)
    path.write_text(text, "utf-8")
    path.chmod(mode)


def make_java_home(folder, version="17.0.9", unpack200=False):
    write(folder / "bin" / "java", JAVA, 0o755)
    if unpack200:
        write(folder / "bin" / "unpack200", "#!/bin/sh\nexit 1\n", 0o755)
        write(folder / "lib" / "rt.jar", "not looked into")
    write(folder / "lib" / "security" / "cacerts", "the runtime's own\n")
    write(folder / "lib" / "modules", FILLING)
    write(folder / "release", f'JAVA_VERSION="{version}"\n')


def make_jar(path):
    with zipfile.ZipFile(path, "w") as jar:
        for name in ("META-INF/MANIFEST.MF", "com/example/Main.class"):
            info = zipfile.ZipInfo(name, (2020, 1, 1, 0, 0, 0))
            content = b"Manifest-Version: 1.0\n\n" if name.endswith("MF") else CLASS
            jar.writestr(info, content)


# The least that is a class file: magic, version, and an empty table.
CLASS = bytes.fromhex("cafebabe0000003d0001")

CONFIG = """[application]
name = "Demo"
version = {app}
main-class = "com.example.Main"
jars = ["demo.jar"]
files = ["data"]
splash = "splash.png"
identifier = "com.example.demo"
executable = "launcher"
[jvm]
force-spawn = true
[updater]
version = {updater}
cacerts = "cacerts"
[install]
for = "{whom}"
[signing]
key = "signing.pem"
salt = "derived"
[bundle]
compression = 0
{more}
"""


class Packer:
    """Makes bundles in a folder of its own, each once."""

    def __init__(self, pack, folder, splash):
        self.pack = pack
        self.folder = folder
        folder.mkdir()
        shutil.copy(splash, folder / "splash.png")
        make_jar(folder / "demo.jar")
        write(folder / "data" / "filling.txt", FILLING)
        write(folder / "cacerts", "the shipped trust store\n")
        for version in ("17.0.9", "17.0.10"):
            make_java_home(folder / f"jre-{version}", version)
        self.run("keygen", "--bits", "2048", "signing.pem")

    def run(self, *arguments):
        done = subprocess.run([str(self.pack), *map(str, arguments)], cwd=self.folder,
                              capture_output=True, text=True, check=False)
        if done.returncode != 0:
            raise RuntimeError(f"quillory-pack {arguments}: {done.stdout}{done.stderr}")

    def config(self, name, app=1, updater=1, runtime="17.0.9", url=None, whom="user",
               updates=False):
        more = f'[runtime]\nfolder = "jre-{runtime}"\n' if runtime else ""
        if url:
            more += f'[update]\nurl = "{url}"\n'
        if updates:
            more += 'mode = "background"\n'
        path = self.folder / f"{name}.toml"
        path.write_text(CONFIG.format(app=app, updater=updater, whom=whom, more=more),
                        "utf-8")
        return path

    def release(self, name, url, **choices):
        """As bundle(), of a release that quillory-update takes; each stays beside the next one, in a
        folder of its own, and the release files of all are in the last one's."""
        path = self.config(name, url=url, updates=True, **choices)
        output = self.folder / name
        first = self.folder / "first-release"
        if output.exists() and not first.exists():
            shutil.copytree(output, first, symlinks=True)
        self.run("release", "--quiet", path, "--output", output)
        return output / "Demo.app" / "Contents" / "MacOS" / "launcher"

    @property
    def update(self):
        """quillory-update, which is built beside quillory-pack."""
        return self.pack.parent / "quillory-update"

    def bundle(self, name, **choices):
        """The executable of the bundle; release files lie beside it in "release"."""
        path = self.config(name, **choices)
        output = self.folder / name
        self.run("bundle", "--quiet", path, "--output", output)
        return output / "Demo.app" / "Contents" / "MacOS" / "launcher"


def release_of(executable):
    return pathlib.Path(executable).parents[3] / "release"
