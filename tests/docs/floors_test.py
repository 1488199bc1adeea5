#!/usr/bin/env python3
"""Usage: floors_test.py

Shows floors.py small trees in which something is wrong, and expects it to name it.
"""
import pathlib
import subprocess
import sys
import tempfile
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "harness"))
import own_folder  # noqa: E402

own_folder.use()

CHECK = pathlib.Path(__file__).with_name("floors.py")
FILLER = "".join(f"| `f{c}` | a floor | |\n" for c in "abcdefghij")


class Floors(unittest.TestCase):
    def check(self, table, files):
        with tempfile.TemporaryDirectory() as folder:
            root = pathlib.Path(folder)
            for name, text in {"docs/architecture.md": FILLER + table, **files}.items():
                (root / name).parent.mkdir(parents=True, exist_ok=True)
                (root / name).write_text(text, encoding="utf-8")
            result = subprocess.run([sys.executable, "-B", CHECK, root], capture_output=True,
                                    text=True, check=False)
            return result.returncode, result.stdout

    def test_accepts_what_the_table_allows(self):
        status, text = self.check(
            "| `low` | | |\n| `high` | | `low` |\n",
            {"low/a.h": "", "high/b.cpp": '#include "low/a.h"\n#include "high/c.h"\n', "high/c.h": ""})
        self.assertEqual((status, text), (0, "12 floors, no arrow that runs up\n"))

    def test_names_both_files_of_an_arrow_that_runs_up(self):
        status, text = self.check("| `low` | | |\n| `high` | | `low` |\n",
                                  {"low/a.cpp": '#import "high/c.h"\n', "high/c.h": ""})
        self.assertEqual((status, text), (1, "low/a.cpp includes high/c.h: low may not know high\n"))

    def test_keeps_floors_apart_that_do_not_know_each_other(self):
        status, text = self.check("| `one` | | |\n| `two` | | |\n",
                                  {"one/a.h": "", "two/b.h": '#include "one/a.h"\n'})
        self.assertEqual((status, text), (1, "two/b.h includes one/a.h: two may not know one\n"))

    def test_knows_floors_inside_a_folder(self):
        status, text = self.check("| `p/low` | | |\n| `p/high` | | `p/low` |\n",
                                  {"p/low/a.h": '#include "p/high/b.h"\n', "p/high/b.h": ""})
        self.assertEqual((status, text),
                         (1, "p/low/a.h includes p/high/b.h: p/low may not know p/high\n"))

    def test_refuses_a_table_that_lets_a_floor_look_up(self):
        status, text = self.check("| `low` | | `high` |\n| `high` | | |\n", {})
        self.assertEqual(status, 1)
        self.assertIn("low may know high, which does not stand above it", text)

    def test_misses_a_folder_that_is_not_in_the_table(self):
        status, text = self.check("| `low` | | |\n", {"new/a.cpp": ""})
        self.assertEqual((status, text),
                         (1, "new/a.cpp: its folder is no floor of docs/architecture.md\n"))

    def test_misses_a_header_that_is_not_there(self):
        status, text = self.check("| `low` | | |\n", {"low/a.cpp": '#include "low/gone.h"\n'})
        self.assertEqual((status, text), (1, "low/a.cpp includes low/gone.h, which is not there\n"))

    def test_fails_without_a_table(self):
        status, _ = self.check("", {"docs/architecture.md": "# Architecture\n"})
        self.assertEqual(status, 1)


if __name__ == "__main__":
    unittest.main()
