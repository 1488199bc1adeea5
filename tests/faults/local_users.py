"""Other users of the machine, who mean harm. One of them tries to change what another user starts; or
has planted links under the names that the next start writes, to have a file that is none of his
changed. He must not succeed, and must not keep the application from starting.
"""

import os
import shutil
import time

from machine import PASSING, describe, tree_of
from private_root import BUNDLE as LAUNCHER
from private_root import OTHER, USER, PrivateRoot
from results import Result

JRE = "Quillory-JRE-170000900-complete"
GU = "Quillory-Quillory-1-complete"
APP = "Quillory-Demo-1-complete"
HARM = "harm\n"


def as_other(action, *arguments):
    """Does it as the other user, in a process of its own; whether it could be done."""
    child = os.fork()
    if child == 0:
        try:
            os.setgroups([])
            os.setgid(OTHER)
            os.setuid(OTHER)
            os.umask(0)
            action(*arguments)
            os._exit(0)
        except OSError:
            os._exit(1)
    return os.waitpid(child, 0)[1] == 0


def first_writable(paths):
    """The first that the other user may write, or ""; logs, which are nobody's orders, do not count."""
    for path in sorted(paths):
        is_log = path.endswith("/logs") or "/logs/" in path
        if not is_log and not os.path.islink(path) and as_other(must_be_writable, path):
            return path
    return ""


def must_be_writable(path):
    if not os.access(path, os.W_OK):
        raise PermissionError(path)


def must_be_readable(path):
    if not os.access(path, os.R_OK):
        raise PermissionError(path)


def append(path):
    with open(path, "a", encoding="utf-8") as file:
        file.write(HARM)


def replace(path):
    os.unlink(path)
    append(path)


def make_folder(path):
    os.makedirs(path)
    append(os.path.join(path, "QuilloryLaunch"))


def move_away(path):
    os.rename(path, path + ".old")


def make_link(path):
    os.symlink("/etc/passwd", path)


# What somebody might do to an installation, as a path in the master folder.
CHANGES = {
    "appends to the updater's jar": (append, GU + "/updater.jar"),
    "replaces the updater's jar": (replace, GU + "/updater.jar"),
    "replaces the updater's launch file": (replace, GU + "/QuilloryLaunch"),
    "replaces lzma64": (replace, GU + "/lzma64"),
    "replaces the splash picture": (replace, GU + "/nativesplash.png"),
    "plants launch properties": (append, GU + "/QYLaunchProperties-1-1"),
    "replaces the application's jar": (replace, APP + "/lib/demo.jar"),
    "replaces the application's launch file": (replace, APP + "/QuilloryLaunch"),
    "replaces java": (replace, JRE + "/bin/java"),
    "replaces the copy of java": (replace, JRE + "/bin/Demo"),
    "replaces the trust store": (replace, JRE + "/lib/security/cacerts"),
    "plants an archive of classes": (replace, JRE + "/lib/classes.jsa"),
    "moves the runtime's link away": (move_away, JRE + ".plugin"),
    "moves the runtime away": (move_away, JRE),
    "plants a newer updater": (make_folder, "Quillory-Quillory-99-complete"),
    "plants a newer runtime": (make_folder, "Quillory-JRE-990000000-complete"),
    "plants a newer application": (make_folder, "Quillory-Demo-99-complete"),
    "moves the application away": (move_away, APP),
    "plants remembered options": (append, "QYApps/QYRememberedOptions-" + JRE),
    "chooses another runtime": (append, "QYApps/JreNameOverride"),
    "makes the folder of the options": (make_folder, "QYApps"),
    "plants a temporary folder": (make_folder, "QuilloryTemp-1-1-app"),
    "moves the whole installation away": (move_away, "."),
}

# Names that a start writes, or makes: what if they lead elsewhere?
LINKED_FOLDERS = ("logs", "QYAppsSharedConfig", "QYApps", GU, APP, JRE, JRE + ".plugin")


def planted_names(now):
    """Of files whose names hold the time, those of the next seconds."""
    milliseconds = [round(now * 1000) + number for number in range(4000)]
    for moment in milliseconds:
        stamp = time.strftime("%Y-%m-%d-%H-%M-%S", time.localtime(moment // 1000))
        yield "log files", f"logs/Wrapper-{stamp}-{moment % 1000:03d}.log"
        for number in range(4, 9):
            yield "launch properties", f"{GU}/QYLaunchProperties-{moment}-{number}"
    for second in range(5):
        for number in range(1, 13):
            yield "temporary folders", f"QuilloryTemp-{round(now) + second}-{number}-app"


PLANTED = ("log files", "launch properties", "temporary folders")


class Neighbourhood:
    """An installation of one user or for all, and the other user's ways to it."""

    def __init__(self, machine, packer, name, **choices):
        self.name = name
        self.is_for_all = choices.get("whom") == "all-users"
        self.root = PrivateRoot(machine, packer.bundle("local-" + name, **choices), name)
        base = "Library" if self.is_for_all else "home/user/Library"
        self.master = self.root.top / base / "Application Support" / "Quillory-Demo"
        self.private = self.root.top / "home/user/private"

    def start(self, user=USER):
        return self.root.run([LAUNCHER, "argument"], user)

    def install(self):
        self.root.clear()
        outcome = self.start()
        if not outcome.runs():
            raise RuntimeError(f"cannot be installed: {outcome.output}")

    def make_private(self):
        """What only the user should be able to change, and nothing that he starts changes."""
        folder = self.private
        folder.mkdir()
        (folder / "file").write_text("private\n")
        for path in (folder, folder / "file"):
            os.chown(path, USER, USER)
        (folder / "file").chmod(0o600)
        folder.chmod(0o700)
        return self.seal()

    def seal(self):
        return describe(self.private), tree_of(self.private)

    def result(self, label, is_changed, detail=""):
        """Of an attack that has been tried, by what it changed and what a start does then."""
        if is_changed:
            return Result(label, "succeeds", detail)
        outcome = self.start()
        if not outcome.runs():
            return Result(label, "keeps from starting", outcome.end())
        return Result(label, "whole", "")

    def changes(self):
        self.install()
        for name, (action, place) in CHANGES.items():
            path = os.path.normpath(self.master / place)
            is_done = as_other(action, path)
            yield self.result(name, is_done)
            if is_done:
                self.install()
        yield from self.moments()

    def moments(self):
        """While it is installed: at some calls it is stopped, and looked at what others may write."""
        for number in range(10, 200, 20):
            self.root.clear()
            self.root.run([LAUNCHER],
                          injected=["--calls", "change", "--at", number, "--fault", "kill-all"])
            found = first_writable(self.installed())
            yield Result(f"writes in the middle of the set-up, call {number}",
                         "succeeds" if found else "whole", found)

    def installed(self):
        for parent, folders, files in os.walk(self.master.parents[1]):
            for name in folders + files:
                yield os.path.join(parent, name)

    def links(self):
        for name in LINKED_FOLDERS:
            yield from self.linked(f"a link for {name}", lambda: [name])
        for kind in PLANTED:
            yield from self.linked(
                f"links for the next {kind}",
                lambda kind=kind: [name for of, name in planted_names(time.time()) if of == kind])

    def linked(self, label, names):
        self.install()
        before = self.make_private()
        is_folder = "temporary" in label or label.startswith("a link")
        target = "/home/user/private" + ("" if is_folder else "/file")
        for name in names():
            path = self.master / name
            if path.is_dir() and not path.is_symlink():
                shutil.rmtree(path)
            elif path.is_symlink():
                path.unlink()
            path.parent.mkdir(exist_ok=True)
            os.symlink(target, path)
            os.lchown(path, OTHER, OTHER)
        self.start()
        after = self.seal()
        # The application itself may be gone: that is what a link in its place does.
        if after == before:
            yield Result(label, "whole", "")
        else:
            yield Result(label, "succeeds", f"{before} is {after}"[:600])

    def temporary_names(self):
        """What elevation puts where every user may: names that are taken already."""
        for name in ("lzma64", "nativesplash.png"):
            for kind, action in (("file", append), ("folder", os.mkdir), ("link", make_link)):
                self.root.clear()
                path = self.root.top / "tmp" / name
                as_other(action, path)
                yield self.result(f"has a {kind} at /tmp/{name} before", False)

    def other_user(self):
        self.install()
        yield self.other_start("another user starts the same installation")
        # What the elevated set-up makes, it makes with the umask of who asked for it.
        self.root.clear()
        self.root.run(["sh", "-c", "umask 077; exec \"$@\"", "sh", LAUNCHER])
        yield self.other_start("the same after an installation with the umask 077")

    def other_start(self, label):
        unreadable = [path for path in self.installed() if not PASSING.search(path) and
                      not os.path.islink(path) and not as_other(must_be_readable, path)]
        if unreadable:
            return Result(label, "cannot read", "; ".join(sorted(unreadable)[:5]))
        outcome = self.start(OTHER)
        return Result(label, "whole" if outcome.runs() else "keeps from starting", outcome.end())


def attacks(machine, packer):
    """(name, function that yields results)"""
    for whom, choices in (("one user", {}), ("all users", {"whom": "all-users"})):
        place = Neighbourhood(machine, packer, whom.split()[0], **choices)
        yield f"changes to an installation of {whom}", place.changes
        yield f"links in an installation of {whom}", place.links
        if place.is_for_all:
            yield "names in the temporary folder of all users", place.temporary_names
            yield "another user of an installation of all users", place.other_user
