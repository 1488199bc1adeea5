"""Usage: injector_test.py FAULT_INJECTOR

What fault_injector says it does, it does.
"""

import os
import pathlib
import subprocess
import sys
import tempfile
import unittest

sys.dont_write_bytecode = True

from machine import lose_content, own_folder, read_report  # noqa: E402

own_folder.use()

INJECTOR = pathlib.Path(sys.argv.pop(1)).resolve()


class Injector(unittest.TestCase):
    def setUp(self):
        owner = tempfile.TemporaryDirectory()
        self.addCleanup(owner.cleanup)
        self.top = pathlib.Path(owner.name).resolve()
        self.folder = self.top / "folder"
        self.folder.mkdir()

    def run_with(self, *arguments, script):
        done = subprocess.run([INJECTOR, "--under", self.folder, "--ignore", "ignored", "--report",
                               self.top / "report", "--list", *arguments, "--", "/bin/sh", "-c",
                               script], cwd=self.folder, capture_output=True, check=False)
        return done.returncode, read_report(self.top / "report")

    def names(self):
        return sorted(os.listdir(self.folder))

    def test_lists_what_changes_something_with_its_path(self):
        status, report = self.run_with(
            script="mkdir a; echo hello >a/b; mv a/b c; cat c; echo >ignored; echo >/dev/null")
        self.assertEqual(status, 0)
        self.assertEqual([(call.number, call.name, call.path[len(str(self.folder)):])
                          for call in report.list],
                         [(1, "mkdir", "/a"), (2, "openat", "/a/b"), (3, "write", "/a/b"),
                          (4, "renameat2", "/c")])
        self.assertEqual(report.calls, 4)
        self.assertFalse(report.hit)

    def test_lists_what_reads_and_makes_as_well(self):
        (self.folder / "a").write_text("text")
        _, report = self.run_with("--calls", "all", script="cat a; true")
        kinds = {(call.name, call.kind) for call in report.list}
        self.assertLessEqual({("openat", "read"), ("read", "read")}, kinds)
        self.assertIn("make", {kind for _, kind in kinds})

    def test_returns_the_status_of_the_command(self):
        self.assertEqual(self.run_with(script="exit 7")[0], 7)
        status, report = self.run_with(script="kill -TERM $$")
        self.assertEqual((status, report.signal), (143, 15))

    def test_kills_before_the_call(self):
        status, report = self.run_with("--at", "2", "--fault", "kill",
                                       script="mkdir a; mkdir b; mkdir c")
        self.assertEqual(status, 0)
        self.assertEqual(self.names(), ["a", "c"])
        self.assertTrue(report.hit)

    def test_kills_all_before_the_call(self):
        status, _ = self.run_with("--at", "2", "--fault", "kill-all",
                                  script="mkdir a; mkdir b; mkdir c")
        self.assertEqual(status, 137)
        self.assertEqual(self.names(), ["a"])

    def test_lets_one_call_fail(self):
        script = "mkdir a || echo $? >failed; mkdir b"
        self.run_with("--at", "1", "--fault", "ENOSPC", script=script)
        self.assertEqual(self.names(), ["b", "failed"])

    def test_lets_all_calls_from_one_on_fail(self):
        self.run_with("--from", "2", "--fault", "ENOSPC",
                      script="mkdir a; mkdir b; mkdir c; rmdir a")
        self.assertEqual(self.names(), [])

    def test_puts_a_fault_only_where_it_can_happen(self):
        (self.folder / "a").mkdir()
        _, report = self.run_with("--at", "1", "--fault", "ENOSPC", script="rmdir a")
        self.assertFalse(report.hit)
        self.assertEqual(self.names(), [])

    def test_halves_a_write(self):
        write = "import os; os.write(os.open('a', os.O_CREAT | os.O_WRONLY), b'12345678')"
        self.run_with("--at", "2", "--fault", "short", script=f'exec python3 -c "{write}"')
        self.assertEqual((self.folder / "a").read_text(), "1234")

    def test_refuses_a_process(self):
        status, report = self.run_with("--calls", "all", "--from", "1", "--fault", "EAGAIN",
                                       script="/bin/true; exit 3")
        self.assertNotEqual(status, 3)
        self.assertTrue(report.hit)

    def test_does_not_wait_for_long_sleeps(self):
        _, report = self.run_with(script="sleep 500")
        self.assertEqual(report.slept, 500)

    def test_knows_whose_content_is_not_flushed(self):
        _, report = self.run_with(script="echo a >a; echo b >b; sync b; echo c >c")
        lose_content(self.folder, report.dirty)
        self.assertEqual([(self.folder / name).read_text() for name in "abc"], ["", "b\n", ""])

    def test_takes_all_for_flushed_behind_a_sync_of_the_file_system(self):
        _, report = self.run_with(script="echo a >a; echo b >b; sync -f .; echo c >c")
        lose_content(self.folder, report.dirty)
        self.assertEqual([(self.folder / name).read_text() for name in "abc"], ["a\n", "b\n", ""])


if __name__ == "__main__":
    unittest.main()
