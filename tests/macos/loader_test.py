"""The loader that runs macOS executables on this machine, on what it may meet: a small program built
for this test, and images with something wrong, which must be said and not run.

Usage: loader_test.py LOADER BUILD IMAGES FRAMEWORKS, with the loader, the build folder of
scripts/build-macos.sh for x86_64, the folder with its programs, and one with a stand-in for a framework.
"""

import json
import os
import pathlib
import shlex
import signal
import struct
import subprocess
import sys
import tempfile
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "harness"))
import own_folder  # noqa: E402

own_folder.use()

LOADER, BUILD, IMAGES, FRAMEWORKS = (
    pathlib.Path(argument).absolute() for argument in sys.argv[1:5])
HERE = pathlib.Path(__file__).absolute().parent / "loader"
FAILED = 86  # the loader's own status


def run(*command, **environment):
    return subprocess.run([str(part) for part in command], capture_output=True, text=True,
                          timeout=60, env={**os.environ, **environment})


def compiler():
    """Compiler and options of a program's source, without what belongs to that one."""
    commands = json.loads((BUILD / "compile_commands.json").read_text("utf-8"))
    words = shlex.split(next(entry["command"] for entry in commands
                             if "/lzma64.dir/" in entry["command"]))
    kept = words[:words.index("-o")]
    return [word for word in kept if not word.startswith(("-W", "-D"))]


class Probe(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.TemporaryDirectory()
        cls.probe = pathlib.Path(cls.folder.name) / "probe"
        cache = {"ZIG_GLOBAL_CACHE_DIR": str(next(
            pathlib.Path(word).parents[1] for word in compiler() if word.endswith("/zig"))
            / "zig-cache"), "ZIG_LOCAL_CACHE_DIR": cls.folder.name + "/zig-cache"}
        object_file = cls.folder.name + "/probe.o"
        built = run(*compiler(), "-c", HERE / "probe.cpp", "-o", object_file, **cache)
        assert built.returncode == 0, built.stderr
        # As the programs are linked: for other options the C++ library would be built anew.
        linked = run(*compiler(), "-s", object_file, "-o", cls.probe, **cache)
        assert linked.returncode == 0, linked.stderr

    @classmethod
    def tearDownClass(cls):
        cls.folder.cleanup()

    def check_output(self, result):
        self.assertEqual((HERE / "probe.expected").read_text("utf-8"), result.stdout,
                         result.stderr)
        self.assertEqual(-signal.SIGABRT, result.returncode)
        self.assertIn("nobody catches this", result.stderr)

    def test_cpp_works_wherever_the_image_is_mapped(self):
        for slide in ("0", "0x1000", "0x200000000000"):
            with self.subTest(slide=slide):
                self.check_output(run(LOADER, self.probe, "argument", MACHO_LOADER_SLIDE=slide))

    def test_a_loader_with_an_image_behind_it_is_that_program(self):
        carrier = pathlib.Path(self.folder.name) / "carrier"
        carrier.write_bytes(LOADER.read_bytes() + self.probe.read_bytes() + b"something behind it")
        carrier.chmod(0o755)
        self.check_output(run(carrier, "argument"))

    def refusal_of(self, content):
        path = pathlib.Path(self.folder.name) / "wrong"
        path.write_bytes(content)
        result = run(LOADER, path, "argument")
        self.assertEqual((FAILED, ""), (result.returncode, result.stdout), result.stderr)
        return result.stderr

    def fixups(self):
        """Offset and size of each of the four lists of fixups."""
        content = self.probe.read_bytes()
        at = 32
        for _ in range(struct.unpack_from("<I", content, 16)[0]):
            command, size = struct.unpack_from("<II", content, at)
            if command & 0x7FFFFFFF == 0x22:
                numbers = struct.unpack_from("<8I", content, at + 8)
                return list(zip(numbers[::2], numbers[1::2]))
            at += size
        self.fail("no fixups")

    def test_every_missing_symbol_is_named(self):
        content = self.probe.read_bytes()
        for name in (b"_mkdtemp", b"_pthread_join"):
            self.assertIn(b"@" + name + b"\0", content)
            content = content.replace(b"@" + name + b"\0", b"@" + name[:-1] + b"?\0")
        said = self.refusal_of(content)
        for name in ("_mkdtem? (/usr/lib/libSystem.B.dylib)", "_pthread_joi? "):
            self.assertIn(name, said)

    def test_fixups_that_make_no_sense_are_refused(self):
        content = self.probe.read_bytes()
        for offset, size in self.fixups():
            if size == 0:
                continue
            with self.subTest(offset=offset):
                broken = bytearray(content)
                broken[offset:offset + size] = b"\xf0" * size
                self.assertIn("opcode 240", self.refusal_of(bytes(broken)))
                # A place far behind the segment.
                broken[offset:offset + 6] = b"\x72\xff\xff\xff\xff\x7f"
                broken[offset + 6:offset + 7] = b"\x51"
                self.refusal_of(bytes(broken))

    def test_an_image_that_is_cut_anywhere_is_refused(self):
        content = self.probe.read_bytes()
        end = max(offset + size for offset, size in self.fixups())
        for size in (0, 3, 31, 32, 200, 0x1000, len(content) // 2, end - 1):
            with self.subTest(size=size):
                self.refusal_of(content[:size])

    def test_another_form_of_fixups_is_refused(self):
        content = bytearray(self.probe.read_bytes())
        at = content.index(struct.pack("<II", 0x80000022, 48))
        content[at:at + 4] = struct.pack("<I", 0x80000034)
        self.assertIn("load command 0x80000034", self.refusal_of(bytes(content)))


class Programs(unittest.TestCase):
    """What the programs that are shipped import, all of which the loader has."""

    def test_all_start(self):
        for name, status in (("lzma64", 2), ("elev_mac", 64), ("quillory-update", 2)):
            with self.subTest(name=name):
                result = run(LOADER, IMAGES / name)
                self.assertEqual(status, result.returncode, result.stderr)
                self.assertIn("usage: " + name, result.stderr)

    def test_quillory_update_asks_the_frameworks_for_proxies(self):
        result = run(LOADER, IMAGES / "quillory-update", "proxies", "https://app.example/",
                     LD_LIBRARY_PATH=str(FRAMEWORKS))
        self.assertEqual("http://web.example:3128\nsocks5h://socks.example:1080\ndirect\n",
                         result.stdout, result.stderr)

    def test_lzma64_packs_and_unpacks(self):
        with tempfile.TemporaryDirectory() as folder:
            plain, packed, again = (pathlib.Path(folder) / name for name in "abc")
            plain.write_bytes(bytes(range(256)) * 1000)
            for command, source, target in (("e", plain, packed), ("d", packed, again)):
                result = run(LOADER, IMAGES / "lzma64", command, source, target)
                self.assertEqual(0, result.returncode, result.stderr)
            self.assertEqual(plain.read_bytes(), again.read_bytes())
            self.assertLess(packed.stat().st_size, plain.stat().st_size)


if __name__ == "__main__":
    if not (IMAGES / "lzma64").exists():
        print("skipped: nothing is built for macOS")
        sys.exit(77)
    unittest.main(argv=[sys.argv[0], "--verbose"])
