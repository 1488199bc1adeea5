#!/usr/bin/env python3
"""lone_names.py finds names that two sources of a folder have, and nothing else."""
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

SCRIPT = Path(__file__).with_name("lone_names.py")


class LoneNames(unittest.TestCase):
    def found(self, sources):
        with tempfile.TemporaryDirectory() as root:
            for name, body in sources.items():
                (Path(root) / name).parent.mkdir(exist_ok=True)
                (Path(root) / name).write_text(f"namespace {{\n{body}\n}}  // namespace\n")
            run = subprocess.run([sys.executable, "-B", SCRIPT, root], capture_output=True, text=True)
            return run.returncode, run.stdout

    def test_names_both_sources(self):
        for body in ("constexpr int kMost = 1;", "struct Most {", "int most(int of) {",
                     "std::string most;", "TEST_F(Most, Is) {", "const std::string kMost(6, 'a');"):
            status, said = self.found({"a/b.cpp": body, "a/c.cpp": body})
            self.assertEqual((status, "b.cpp, c.cpp" in said), (1, True), body)

    def test_leaves_other_folders_overloads_aliases_and_twins(self):
        for sources in ({"a/b.cpp": "int most(int of) {", "c/b.cpp": "int most(int of) {"},
                        {"a/b.cpp": "int most(int of) {", "a/c.cpp": "int most(long of) {"},
                        {"a/b.cpp": "namespace fs = std::filesystem;",
                         "a/c.cpp": "namespace fs = std::filesystem;"},
                        {"a/b_linux.cpp": "int most(int of) {", "a/b_macos.cpp": "int most(int of) {"},
                        {"a/b.cpp": "int f() {\n  int most = 1;\n}",
                         "a/c.cpp": "int g() {\n  int most = 1;\n}"}):
            self.assertEqual(self.found(sources)[0], 0, sources)

    def test_tells_an_alias_of_something_else(self):
        self.assertEqual(self.found({"a/b.cpp": "using Json = nlohmann::json;",
                                     "a/c.cpp": "using Json = nlohmann::ordered_json;"})[0], 1)


if __name__ == "__main__":
    unittest.main()
