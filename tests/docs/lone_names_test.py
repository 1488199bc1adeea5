#!/usr/bin/env python3
"""lone_names.py finds names that two sources of a folder, or a header, have, and nothing else."""
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[1] / "harness"))
import own_folder  # noqa: E402

own_folder.use()

SCRIPT = Path(__file__).with_name("lone_names.py")


class LoneNames(unittest.TestCase):
    def found(self, sources):
        with tempfile.TemporaryDirectory() as root:
            for name, body in sources.items():
                (Path(root) / name).parent.mkdir(exist_ok=True)
                inner = body if name.endswith(".h") else f"namespace {{\n{body}\n}}  // namespace"
                (Path(root) / name).write_text(f"namespace q {{\n{inner}\n}}  // namespace q\n")
            run = subprocess.run([sys.executable, "-B", SCRIPT, root], capture_output=True, text=True)
            return run.returncode, run.stdout

    def test_names_both_sources(self):
        for body in ("constexpr int kMost = 1;", "struct Most {", "int most(int of) {",
                     "std::string most;", "enum { kOther, kMost };",
                     "enum Most {\n  kOther = 1,  // says the other\n  kMost\n};", "TEST_F(Most, Is) {", "const std::string kMost(6, 'a');"):
            status, said = self.found({"a/b.cpp": body, "a/c.cpp": body})
            self.assertEqual((status, "b.cpp, c.cpp" in said), (1, True), body)

    def test_names_both_sources_of_objects(self):
        self.assertEqual(self.found({"a/b.mm": "constexpr int kMost = 1;",
                                     "a/c.mm": "constexpr int kMost = 1;"})[0], 1)

    def test_tells_what_a_header_declares(self):
        for header in ("int most(int of);", "int most(int of,\n         long by);"):
            status, said = self.found({"a/b.h": header, "c/d.cpp": header.replace(";", " {")})
            self.assertEqual((status, "d.cpp: most is declared by" in said), (1, True), said)
        self.assertEqual(self.found({"a/b.h": "int most(long of);",
                                     "c/d.cpp": "int most(int of) {"})[0], 0)

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
