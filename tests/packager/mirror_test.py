#!/usr/bin/env python3
"""Sources without a test of their name, as mirror.py finds them."""
import pathlib
import sys
import tempfile
import unittest

import mirror

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "harness"))
import own_folder  # noqa: E402

own_folder.use()


class Mirror(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.root = pathlib.Path(folder.name)
        self.write("packager/bytes/sink.cpp", "")
        self.write("tests/packager/CMakeLists.txt", "SOURCES bytes/sink_test.cpp\n  LIBRARIES x)\n")
        self.write("tests/packager/bytes/sink_test.cpp", "TEST(Sink, Takes) {}\n")

    def write(self, path, text):
        file = self.root / path
        file.parent.mkdir(parents=True, exist_ok=True)
        file.write_text(text, encoding="utf-8")

    def faults(self):
        return list(mirror.faults(self.root))

    def test_a_source_with_its_test_is_good(self):
        self.assertEqual(self.faults(), [])

    def test_a_source_without_one_is_named(self):
        self.write("packager/keys/pem.cpp", "")
        self.assertEqual(self.faults(),
                         ["packager/keys/pem.cpp has no tests/packager/keys/pem_test.cpp"])

    def test_a_test_in_the_folder_of_another_floor_does_not_count(self):
        self.write("packager/keys/sink.cpp", "")
        self.assertEqual(self.faults(),
                         ["packager/keys/sink.cpp has no tests/packager/keys/sink_test.cpp"])

    def test_the_files_of_each_system_share_a_test(self):
        (self.root / "packager/bytes/sink.cpp").unlink()
        self.write("packager/bytes/sink_linux.cpp", "")
        self.write("packager/bytes/sink_macos.cpp", "")
        self.assertEqual(self.faults(), [])

    def test_a_test_that_is_not_built_is_named(self):
        self.write("tests/packager/CMakeLists.txt", "SOURCES\n")
        self.assertEqual(self.faults(),
                         ["tests/packager/CMakeLists.txt does not build bytes/sink_test.cpp"])

    def test_a_file_without_a_test_is_named(self):
        self.write("tests/packager/bytes/sink_test.cpp", "// TEST(Sink, Takes) {}\n")
        self.assertEqual(self.faults(), ["tests/packager/bytes/sink_test.cpp holds no test"])


if __name__ == "__main__":
    unittest.main()
