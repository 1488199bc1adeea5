"""Configures the whole project, tests and all, as on a Mac: by the toolchain that builds for macOS, with
the libraries for tests of this machine. Nothing is built.

Usage: configure_test.py ROOT BUILD, with the top of the sources and a build folder that
scripts/build-macos.sh has configured.
"""

import pathlib
import re
import subprocess
import sys
import tempfile
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "harness"))
import own_folder  # noqa: E402

own_folder.use()

ROOT, BUILD = pathlib.Path(sys.argv[1]), pathlib.Path(sys.argv[2])
LIBRARIES = "/usr/lib/x86_64-linux-gnu/cmake"


def cached(name):
    """A value that the build's configuration was given."""
    text = (BUILD / "CMakeCache.txt").read_text("utf-8")
    return re.search(rf"^{name}:[A-Z]+=(.*)$", text, flags=re.M)[1]


class Configuration(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(folder.cleanup)
        cls.folder = pathlib.Path(folder.name)
        given = [f"-D{name}={cached(name)}"
                 for name in ("CMAKE_TOOLCHAIN_FILE", "QUILLORY_ZIG", "QUILLORY_ARCH",
                              "QUILLORY_PREFIXES")]
        done = subprocess.run(
            ["cmake", "-G", "Ninja", "-S", str(ROOT), "-B", str(cls.folder),
             "-DCMAKE_BUILD_TYPE=Release", "-DQUILLORY_CONFIGURES_ALL=ON", *given,
             f"-DGTest_DIR={LIBRARIES}/GTest"],
            capture_output=True, text=True, check=False)
        cls.said = done.stdout + done.stderr
        cls.status = done.returncode
        targets = subprocess.run(["ninja", "-C", str(cls.folder), "-t", "targets", "all"],
                                 capture_output=True, text=True, check=False).stdout
        cls.targets = {line.partition(":")[0] for line in targets.splitlines()}

    def test_comes_to_its_end_without_what_only_linux_has(self):
        self.assertEqual(0, self.status, self.said[-3000:])
        cache = (self.folder / "CMakeCache.txt").read_text("utf-8")
        for name in ("X11", "SYSTEMD", "GNUSTEP", "OPENSSL", "benchmark"):
            self.assertNotRegex(cache, rf"(?m)^{name}\w*:", name)

    def test_has_the_tests_that_need_no_linux(self):
        for name in ("support_tests", "formats_tests", "launcher_tests", "launch_tests",
                     "packager_tests", "runner_tests", "splash_demo"):
            self.assertIn(name, self.targets)
        for name in ("ui_cocoa_tests", "e2e_tests", "fault_injector", "replay_archive"):
            self.assertNotIn(name, self.targets)


if __name__ == "__main__":
    if not (BUILD / "CMakeCache.txt").exists():
        print("skipped: nothing is built for macOS")
        sys.exit(77)
    unittest.main(argv=[sys.argv[0], "--verbose"])
