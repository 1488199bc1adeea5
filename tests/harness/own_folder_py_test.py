"""Temporary files of a test in Python, after its end and after it was killed."""

import os
import pathlib
import signal
import subprocess
import sys
import time
import unittest

import own_folder

own_folder.use()

ABANDON = """
import subprocess, sys, tempfile, time
sys.path.insert(0, sys.argv[1])
import own_folder
own_folder.use()
tempfile.TemporaryDirectory()
sleeper = subprocess.Popen(["sleep", "60"], start_new_session=True)
print(tempfile.gettempdir(), sleeper.pid, flush=True)
if sys.argv[2] == "wait":
    time.sleep(60)
sleeper.kill()
sleeper.wait()
"""


def within_seconds(condition):
    end = time.monotonic() + 20
    while not condition():
        if time.monotonic() > end:
            return False
        time.sleep(0.02)
    return True


class OwnFolder(unittest.TestCase):
    def run_until_it_has_its_folder(self, mode):
        run = subprocess.Popen([sys.executable, "-B", "-c", ABANDON,
                                pathlib.Path(own_folder.__file__).parent, mode],
                               stdout=subprocess.PIPE, text=True)
        self.addCleanup(run.stdout.close)
        folder, sleeper = run.stdout.readline().split()
        return run, pathlib.Path(folder), pathlib.Path("/proc") / sleeper

    def test_is_below_the_temporary_folder_of_whoever_started_it(self):
        run, folder, _ = self.run_until_it_has_its_folder("end")
        self.assertEqual(folder.parent, pathlib.Path(os.environ["TMPDIR"]))
        self.assertEqual(run.wait(), 0)

    def test_is_gone_with_the_run(self):
        run, folder, _ = self.run_until_it_has_its_folder("end")
        self.assertEqual(run.wait(), 0)
        self.assertFalse(folder.exists())

    def test_is_gone_with_the_processes_that_were_left_when_the_run_is_killed(self):
        run, folder, sleeper = self.run_until_it_has_its_folder("wait")
        self.assertTrue(folder.exists() and sleeper.exists())
        run.send_signal(signal.SIGKILL)
        self.assertEqual(run.wait(), -signal.SIGKILL)
        self.assertTrue(within_seconds(lambda: not folder.exists() and not sleeper.exists()))


if __name__ == "__main__":
    unittest.main()
