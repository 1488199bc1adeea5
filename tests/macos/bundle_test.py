"""What quillory-pack makes of the sample application with the programs for macOS, read from the
files: nothing here can run one.

Usage: bundle_test.py ROOT QUILLORY_PACK HELLO_JAR UPDATER_JAR IMAGES, with the top of the sources,
files of this build, and the folder of what scripts/build-macos.sh made.
"""

import os
import pathlib
import plistlib
import re
import shutil
import subprocess
import sys
import tempfile
import unittest

import macho
import pages

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "harness"))
import own_folder  # noqa: E402

own_folder.use()

ROOT, PACK, HELLO, UPDATER, IMAGES = map(pathlib.Path, sys.argv[1:6])

# Nothing is kept in a user's folder.
os.environ["QUILLORY_PACK_CACHE"] = ""

ONLINE = '[update]\nurl = "https://example.com/updates/"\n'


class Tail:
    """A tail: the texts of its eleven records, and the content of its entries."""

    def __init__(self, content):
        self.content = content
        self.records = [self.text() for _ in range(11)]
        self.entries = {}
        while self.content:
            kind, path, length = self.text(), self.text(), int(self.text())
            assert kind == "0", kind
            self.entries[path] = self.content[:length]
            self.content = self.content[length:]

    def text(self):
        value, _, self.content = self.content.partition(b"\0")
        return value.decode()


def install(folder):
    """quillory-pack with what it needs, as an installation has it."""
    share = folder / "share" / "quillory"
    (folder / "bin").mkdir()
    (share / "macos").mkdir(parents=True)
    shutil.copy(PACK, folder / "bin")
    shutil.copy(UPDATER, share)
    for name in ("launcher", "lzma64", "elev_mac"):
        shutil.copy(IMAGES / name, share / "macos")
    return folder / "bin" / PACK.name


def make_runtime(folder):
    """A runtime of a few files; its programs are for macOS, though no Java."""
    for path in ("bin/java", "lib/server/libjvm.dylib", "lib/libjli.dylib"):
        (folder / path).parent.mkdir(parents=True, exist_ok=True)
        shutil.copy(IMAGES / "lzma64", folder / path)
    (folder / "release").write_text('JAVA_VERSION="17.0.9"\n', "utf-8")


class Bundle(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        temporary = tempfile.TemporaryDirectory()
        cls.addClassCleanup(temporary.cleanup)
        cls.folder = pathlib.Path(temporary.name)
        cls.pack = install(cls.folder)
        cls.run_pack("keygen", "--bits", "2048", "signing.pem")
        shutil.copy(HELLO, cls.folder / "hello.jar")
        shutil.copy(ROOT / "examples" / "hello" / "nativesplash.png", cls.folder)
        make_runtime(cls.folder / "jre")
        cls.with_runtime = cls.bundle("file", '[runtime]\nfolder = "jre"\n')
        cls.online = cls.bundle("executable", ONLINE)

    @classmethod
    def run_pack(cls, *arguments):
        done = subprocess.run([str(cls.pack), *arguments], cwd=cls.folder, capture_output=True,
                              text=True, check=False)
        assert done.returncode == 0, done.stderr
        return done.stdout + done.stderr

    @classmethod
    def bundle(cls, tail, rest):
        """The sample application's configuration, with another runtime and place of the tail."""
        text = (ROOT / "examples" / "hello" / "quillory.toml").read_text("utf-8")
        text = re.sub(r"\[runtime\]\njlink = true.*\n", f'{rest}[bundle]\ntail = "{tail}"\n', text)
        (cls.folder / "quillory.toml").write_text(text, "utf-8")
        cls.run_pack("bundle", "--target", "macos", "--compression", "0", "--output", tail)
        return cls.folder / tail / "Hello Quillory.app"

    @staticmethod
    def executable(bundle):
        return bundle / "Contents" / "MacOS" / "HelloQuillory"

    def tails(self):
        """Each bundle with its tail."""
        marker = pages.marker_of(ROOT, "wrapper-tail.md")
        parts = self.executable(self.online).read_bytes().split(marker)
        self.assertEqual(2, len(parts), "the marker stands there once")
        self.assertEqual((IMAGES / "launcher").read_bytes(), parts[0])
        resources = self.with_runtime / "Contents" / "Resources"
        return [(self.online, Tail(parts[1])),
                (self.with_runtime, Tail((resources / "Tail").read_bytes()))]

    def test_executable_is_the_launcher_for_macos(self):
        launcher = (IMAGES / "launcher").read_bytes()
        self.assertEqual(launcher, self.executable(self.with_runtime).read_bytes())
        self.assertTrue(self.executable(self.online).read_bytes().startswith(launcher))
        for bundle in (self.with_runtime, self.online):
            slices = list(macho.slices(self.executable(bundle), self.folder))
            self.assertIn("x86_64", [image.architecture for image in slices])
            for image in slices:
                self.assertIn("LC_MAIN", [name for name, _ in image.load_commands()])

    def test_tail_is_that_of_the_application_and_carries_the_tool_for_macos(self):
        for bundle, tail in self.tails():
            with self.subTest(bundle=str(bundle)):
                self.assertEqual("Hello Quillory", tail.records[0])
                self.assertEqual("lzma64", next(iter(tail.entries)))
                self.assertEqual((IMAGES / "lzma64").read_bytes(), tail.entries["lzma64"])
                self.assertEqual(bundle is self.with_runtime, "JRE.p2.l2" in tail.entries)
                self.assertIn("App.p2.l2", tail.entries)

    def test_elevation_tool_is_the_one_for_macos(self):
        tool = self.online / "Contents" / "Resources" / "elev_mac"
        self.assertEqual((IMAGES / "elev_mac").read_bytes(), tool.read_bytes())
        self.assertTrue(tool.stat().st_mode & 0o100)

    def test_asks_for_the_system_that_the_launcher_needs(self):
        with open(self.online / "Contents" / "Info.plist", "rb") as file:
            plist = plistlib.load(file)
        self.assertEqual("HelloQuillory", plist["CFBundleExecutable"])
        for image in macho.slices(IMAGES / "launcher", self.folder):
            versions = [text for name, text in image.load_commands() if name == "LC_BUILD_VERSION"]
            self.assertRegex(versions[0], rf"\bminos {plist['LSMinimumSystemVersion']}\n")

    def test_other_commands_find_it_good(self):
        for bundle in (self.with_runtime, self.online):
            self.assertIn("good\n", self.run_pack("verify", str(bundle)))
            said = self.run_pack("doctor", str(bundle))
            self.assertRegex(said, r"a bundle for macOS \(.*x86_64")
            self.assertNotIn("[platform]", said)
            self.assertIn("\ntarget: macos\n", self.run_pack("inspect", str(bundle)))


if __name__ == "__main__":
    if not IMAGES.exists():
        print("skipped: nothing is built for macOS")
        sys.exit(77)
    unittest.main(argv=[sys.argv[0], "--verbose"])
