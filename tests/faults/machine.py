"""A machine of the faults' own: a home folder, a search path and an environment in a temporary
folder, and starts in them. Nothing outside the folder is changed.
"""

import dataclasses
import hashlib
import os
import pathlib
import re
import shutil
import signal
import stat
import subprocess
import sys
import tempfile

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "harness"))
import own_folder  # noqa: E402

# A start that takes longer hangs: whatever it waits for is bounded by less.
LIMIT = 60

# What starts leave on purpose, each its own: logs, launch properties, which the real updater deletes,
# and the version file of a start that downloaded.
PASSING = re.compile(r"(^|/)(logs/.*|QYLaunchProperties-[^/]*|Quillory-[^/]*-version\.txt)$")

# The line of the stand-in for Java, bundles.py.
RUNS = "The application runs"

STAMPED = re.compile(r"\d{4}-\d\d-\d\d |\+\d+ +(---+|\+\+\++|\*\*\*+)?$")
MOST_LINES = 4


@dataclasses.dataclass
class Outcome:
    """How a command ended. `status` is negative for a signal, and None when it had to be ended."""

    status: int | None
    output: str

    def runs(self):
        """Whether it was a start that brought the application."""
        return self.status == 0 and RUNS in self.output

    def end(self):
        """How it ended, and the last that was said, without what the system log repeats."""
        lines = [line for line in self.output.splitlines() if line and not STAMPED.match(line)]
        return f"status {self.status}: " + " / ".join(lines[-MOST_LINES:])


@dataclasses.dataclass
class Report:
    """What fault_injector says; its source has the meaning of each."""

    status: int = 0
    signal: int = 0
    calls: int = 0
    hit: bool = False
    slept: int = 0
    dirty: set = dataclasses.field(default_factory=set)
    list: list = dataclasses.field(default_factory=list)


@dataclasses.dataclass
class Call:
    number: int
    name: str
    kind: str
    faults: list
    path: str


def read_report(path):
    report = Report()
    if not path.exists():
        return report
    for line in path.read_text("utf-8", "surrogateescape").splitlines():
        word, *rest = line.split(" ", 5)
        if word == "call":
            path_text = rest[4] if len(rest) > 4 else ""
            report.list.append(Call(int(rest[0]), rest[1], rest[2], rest[3].split(","), path_text))
        elif word == "dirty":
            report.dirty.add((int(rest[0]), int(rest[1])))
        elif word in ("status", "signal", "calls", "hit", "slept"):
            setattr(report, word, int(rest[0]))
    return report


def end_group(process):
    try:
        os.killpg(process.pid, signal.SIGKILL)
    except ProcessLookupError:
        pass


def remove(path):
    """Whatever is there, also folders without any mode."""
    if path.is_symlink() or path.is_file():
        path.unlink()
    elif path.exists():
        try:
            shutil.rmtree(path)
        except PermissionError:
            for folder, _, _ in os.walk(path):
                os.chmod(folder, 0o700)
            shutil.rmtree(path)


class Machine:
    """`folder` has the home folder and all that a start may change; what stays the same for all
    starts stands in `shared`."""

    def __init__(self, injector, injector_folder=None):
        parent = injector_folder or next(
            (place for place in ("/dev/shm",) if os.access(place, os.W_OK)), None)
        self.own_folder = own_folder.below(parent or tempfile.gettempdir())
        self._owner = tempfile.TemporaryDirectory(prefix="quillory-faults-", dir=self.own_folder)
        self.top = pathlib.Path(self._owner.name).resolve()
        self.folder = self.top / "machine"
        self.home = self.folder / "home"
        self.shared = self.top / "shared"
        self.shared.mkdir()
        self.injector = injector
        ids = f"{os.getuid()}:{os.getgid()}"
        (self.shared / "passwd").write_text(f"tester:x:{ids}:Tester:{self.home}:/bin/sh\n")
        (self.shared / "group").write_text(f"testers:x:{os.getgid()}:\n")
        self.clear()

    def close(self):
        remove(self.folder)
        self._owner.cleanup()

    @property
    def support(self):
        return self.home / "Library" / "Application Support"

    @property
    def master(self):
        return self.support / "Quillory-Demo"

    def clear(self):
        remove(self.folder)
        self.home.mkdir(parents=True)
        (self.folder / "tmp").mkdir()

    def environment(self, **changes):
        """Of a start: `None` takes a variable away."""
        values = {"HOME": str(self.home), "PATH": "/usr/bin:/bin", "LC_ALL": "C.UTF-8",
                  "TMPDIR": str(self.folder / "tmp"), "LD_PRELOAD": "libnss_wrapper.so",
                  "NSS_WRAPPER_PASSWD": str(self.shared / "passwd"),
                  "NSS_WRAPPER_GROUP": str(self.shared / "group"),
                  "NSS_WRAPPER_DISABLE_DEEPBIND": "1", "QUILLORY_PACK_CACHE": "",
                  "QUILLORY_TEST_FOLDER": self.own_folder}
        values.update(changes)
        return {name: value for name, value in values.items() if value is not None}

    def run(self, command, limit=LIMIT, environment=None, **options):
        """Runs to its end, with everything that it started."""
        options.setdefault("cwd", self.folder)
        options.setdefault("stdin", subprocess.DEVNULL)
        with subprocess.Popen([str(word) for word in command], start_new_session=True,
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                              env=environment or self.environment(), **options) as process:
            try:
                output = process.communicate(timeout=limit)[0]
                status = process.returncode
            except subprocess.TimeoutExpired:
                end_group(process)
                output, status = process.communicate()[0], None
            return Outcome(status, output.decode("utf-8", "replace"))

    def run_with(self, arguments, command, under=None, **options):
        """Runs it under fault_injector; returns the outcome and the report."""
        report = self.top / "report"
        report.unlink(missing_ok=True)
        folders = [word for folder in under or [self.folder] for word in ("--under", folder)]
        outcome = self.run([self.injector, *folders, "--ignore", "/logs/", "--report", report,
                            *arguments, "--", *command], **options)
        found = read_report(report)
        if outcome.status is not None and found.signal:
            outcome.status = -found.signal
        return outcome, found


def tree_of(folder):
    """One text for each thing in a folder, by its path: kind, mode and content."""
    found = {}
    for parent, folders, files in os.walk(folder):
        for name in folders + files:
            path = os.path.join(parent, name)
            place = os.path.relpath(path, folder)
            if not PASSING.search(place):
                found[place] = describe(path)
    return found


def describe(path):
    status = os.lstat(path)
    if stat.S_ISLNK(status.st_mode):
        return "link to " + os.readlink(path)
    mode = f"{stat.S_IMODE(status.st_mode):o}"
    if status.st_uid != os.getuid():
        mode += f" of {status.st_uid}"
    if stat.S_ISDIR(status.st_mode):
        return f"folder {mode}"
    try:
        with open(path, "rb") as file:
            content = file.read()
    except OSError as problem:
        return f"file {mode} {problem.strerror}"
    return f"file {mode} {len(content)} {hashlib.sha256(content).hexdigest()[:16]}"


def differences(expected, found):
    """What is missing or other than expected, and what nobody expects."""
    broken = [f"{place}: {found.get(place, 'missing')} instead of {text}"
              for place, text in expected.items() if found.get(place) != text]
    foreign = sorted(place for place in found if place not in expected)
    return broken, foreign


def lose_content(folder, dirty):
    """The power goes: content that was not on the disk is lost, names stay."""
    for parent, _, files in os.walk(folder):
        for name in files:
            path = os.path.join(parent, name)
            status = os.lstat(path)
            if stat.S_ISREG(status.st_mode) and (status.st_dev, status.st_ino) in dirty:
                os.truncate(path, 0)
