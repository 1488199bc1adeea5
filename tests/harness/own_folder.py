"""A folder of this run's own for what a test in Python makes: gone with the run, however it ends."""

import atexit
import os
import pathlib
import shutil
import subprocess
import tempfile

GUARDIAN = pathlib.Path(__file__).with_name("guardian.sh")
# Its input goes by way of another descriptor, as a command in the background has none of its own.
START = 'exec 3<&0; setsid sh "$0" "$1" <&3 3<&- >/dev/null 2>&1 &'

_folders = {}


def _remove(folder, owner):
    if os.getpid() == owner:  # and no copy of it
        shutil.rmtree(folder, ignore_errors=True)


def below(parent):
    """The folder of this run below `parent`. When the run is killed, the guardian removes it and ends
    the processes that have its name in QUILLORY_TEST_FOLDER."""
    if parent not in _folders:
        folder = tempfile.mkdtemp(prefix="quillory-tests-", dir=parent)
        os.chmod(folder, 0o1777)  # some tests are another user for a while
        # This process alone has the other end, so that its end is seen.
        end, _ = os.pipe()
        subprocess.run(["sh", "-c", START, GUARDIAN, folder], stdin=end, check=True)
        os.close(end)
        atexit.register(_remove, folder, os.getpid())
        _folders[parent] = folder
    return _folders[parent]


def use():
    """From then on all temporary files are made there, by this process and by those that it starts."""
    folder = below(tempfile.gettempdir())
    tempfile.tempdir = folder
    os.environ["TMPDIR"] = folder
    os.environ["QUILLORY_TEST_FOLDER"] = folder
