"""quillory-pack for macOS, which the loader runs here, packs the same bytes as that of Linux: bundles
for both systems, and what a server has, from one configuration.

Usage: packing_test.py ROOT LOADER QUILLORY_PACK HELLO_JAR UPDATER_JAR PROGRAMS IMAGES, with the top of
the sources, files of this build, the folder of its programs, and that of what scripts/build-macos.sh
made. Status 77 when no quillory-pack was made for macOS.
"""

import os
import pathlib
import shutil
import stat
import subprocess
import sys
import tempfile
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "harness"))
import own_folder  # noqa: E402

own_folder.use()

ROOT, LOADER, PACK, HELLO, UPDATER, PROGRAMS, IMAGES = map(pathlib.Path, sys.argv[1:8])

# Nothing is kept in a user's folder, nor taken from what the other one has packed.
os.environ["QUILLORY_PACK_CACHE"] = ""

PACKED_PROGRAMS = ("launcher", "lzma64", "elev_mac")
CONFIGURATION = """
[application]
name = "Hello Quillory"
version = 1
main-class = "com.example.hello.Hello"
jars = ["hello.jar"]
splash = "nativesplash.png"
url-schemes = ["hello-quillory"]

[runtime]
folder = "{runtime}"

[update]
url = "https://example.com/updates/"

[signing]
key = "signing.pem"
salt = "derived"
"""


def described(folder):
    """Everything below: its kind, its mode, and what is in it."""
    found = {}
    for path in sorted(folder.rglob("*")):
        mode = path.lstat().st_mode
        if path.is_symlink():
            content = os.readlink(path)
        else:
            content = path.read_bytes() if path.is_file() else None
        found[str(path.relative_to(folder))] = (oct(stat.S_IMODE(mode)), content)
    return found


class Packing(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        temporary = tempfile.TemporaryDirectory()
        cls.addClassCleanup(temporary.cleanup)
        cls.folder = pathlib.Path(temporary.name)
        cls.packers = {"linux": cls.install("linux", PACK, None),
                       "macos": cls.install("macos", IMAGES / "quillory-pack", LOADER)}
        shutil.copy(HELLO, cls.folder / "hello.jar")
        shutil.copy(ROOT / "examples" / "hello" / "nativesplash.png", cls.folder)
        # The key that one of them makes is one for the other, too.
        cls.run_pack("macos", "keygen", "--bits", "2048", "signing.pem")
        for target, program in (("macos", IMAGES / "lzma64"), ("linux", PROGRAMS / "lzma64")):
            suffix = "dylib" if target == "macos" else "so"
            for place in ("bin/java", f"lib/server/libjvm.{suffix}", f"lib/libjli.{suffix}"):
                path = cls.folder / f"jre-{target}" / place
                path.parent.mkdir(parents=True, exist_ok=True)
                shutil.copy(program, path)
            (cls.folder / f"jre-{target}" / "release").write_text('JAVA_VERSION="17.0.9"\n', "utf-8")
            (cls.folder / f"jre-{target}" / "lib" / "link").symlink_to("../release")
            (cls.folder / f"{target}.toml").write_text(
                CONFIGURATION.format(runtime=f"jre-{target}"), "utf-8")

    @classmethod
    def install(cls, name, packer, loader):
        """That quillory-pack with what it needs, of both systems, as an installation has it."""
        place = cls.folder / f"installed-{name}"
        for target, programs in (("macos", IMAGES), ("linux", PROGRAMS)):
            share = place / "share" / "quillory" / target
            share.mkdir(parents=True)
            for program in PACKED_PROGRAMS:
                shutil.copy(programs / program, share)
        (place / "bin").mkdir()
        own = IMAGES if loader else PROGRAMS
        for program in PACKED_PROGRAMS:
            shutil.copy(own / program, place / "bin")
        shutil.copy(UPDATER, place / "share" / "quillory")
        parts = [loader.read_bytes()] if loader else []
        program = place / "bin" / "quillory-pack"
        program.write_bytes(b"".join([*parts, packer.read_bytes()]))
        program.chmod(0o755)
        return program

    @classmethod
    def run_pack(cls, name, *arguments):
        done = subprocess.run([str(cls.packers[name]), *arguments], cwd=cls.folder,
                              capture_output=True, text=True, check=False, timeout=120)
        assert done.returncode == 0, f"{name}: {done.stdout}{done.stderr}"
        return done.stdout

    def compare(self, target):
        made = {}
        for name in self.packers:
            self.run_pack(name, "bundle", f"{target}.toml", "--target", target, "--output",
                          f"{target}-by-{name}")
            made[name] = described(self.folder / f"{target}-by-{name}")
        self.assertEqual(sorted(made["linux"]), sorted(made["macos"]))
        for path, its in made["linux"].items():
            # Not the bytes themselves, which nobody wants to see.
            self.assertTrue(its == made["macos"][path], f"{target}: {path}")
        self.assertTrue(any(path.endswith("App.p2.l2") or "-archive.p2" in path
                            for path in made["linux"]), sorted(made["linux"]))

    # Without --archive: on a Mac that takes the Mac's own tar, which has other options than this one's.
    def test_packs_the_same_bundle_for_macs(self):
        self.compare("macos")

    def test_packs_the_same_bundle_for_linux(self):
        self.compare("linux")

    def test_says_the_same_of_it(self):
        self.run_pack("linux", "bundle", "macos.toml", "--target", "macos", "--output", "seen")
        bundle = "seen/Hello Quillory.app"
        for command in ("inspect", "verify"):
            with self.subTest(command=command):
                said = {name: self.run_pack(name, command, bundle) for name in self.packers}
                self.assertEqual(said["linux"], said["macos"])


if __name__ == "__main__":
    if not (IMAGES / "quillory-pack").exists():
        print("skipped: no quillory-pack is built for macOS")
        sys.exit(77)
    unittest.main(argv=sys.argv[:1], verbosity=2)
