"""A root folder of the tests' own, for an installation for all users: /Library, /tmp and the rules of
sudo are then those in it. As tests/harness/private_root.cpp, whose script it uses.
"""

import os
import pathlib
import shutil
import subprocess

from machine import remove

SCRIPT = pathlib.Path(__file__).parents[1] / "harness" / "private_root.sh"
SYSTEM = ("usr", "bin", "sbin", "lib", "lib32", "lib64", "etc", "dev", "proc")
# What a case may change, and what it is put back to.
CHANGED = ("Library", "tmp", "home", "root", "records")

USER, OTHER = 65534, 1234
BUNDLE = "/case/Demo.app/Contents/MacOS/launcher"


def why_impossible():
    """"", or why there can be none here."""
    if os.geteuid() != 0:
        return "only root can have a root folder of its own"
    if not shutil.which("sudo"):
        return "there is no sudo"
    done = subprocess.run(["unshare", "--mount", "--propagation", "private", "mount", "-t", "tmpfs",
                           "none", "/mnt"], check=False, capture_output=True)
    return "" if done.returncode == 0 else "no mount namespace of its own here"


class PrivateRoot:
    def __init__(self, machine, bundle, name="elevated"):
        self.machine = machine
        self.top = machine.top / f"root-{name}"
        self.top.mkdir()
        machine.top.chmod(0o755)
        self.top.chmod(0o755)
        for name in SYSTEM:
            original = pathlib.Path("/") / name
            if original.is_symlink():
                (self.top / name).symlink_to(os.readlink(original))
            elif original.is_dir():
                (self.top / name).mkdir()
        (self.top / "run").mkdir()
        (self.top / "var" / "tmp").mkdir(parents=True)
        (self.top / "case").mkdir()
        shutil.copytree(bundle.parents[2], self.top / "case" / "Demo.app")
        shutil.copy(machine.injector, self.top / "case" / "fault_injector")
        (self.top / "run" / "passwd").write_text(
            f"root:x:0:0:root:/root:/bin/sh\nnobody:x:{USER}:{USER}::/home/user:/bin/sh\n"
            f"other:x:{OTHER}:{OTHER}::/home/other:/bin/sh\n")
        rules = self.top / "run" / "sudoers"
        rules.write_text(f"Defaults env_reset\n#{USER} ALL=(root) NOPASSWD: {BUNDLE}\n")
        rules.chmod(0o440)
        self.clear()

    def clear(self):
        for name in CHANGED:
            remove(self.top / name)
        for name in ("tmp", "home/user", "home/other", "root", "records"):
            (self.top / name).mkdir(parents=True)
        (self.top / "tmp").chmod(0o1777)
        for name, owner in (("user", USER), ("other", OTHER)):
            os.chown(self.top / "home" / name, owner, owner)

    def command(self, words, user=USER, injected=None):
        """To be run outside; inside, `words` run as the user. With `injected`, its options, the
        injector sees all, and writes its report where report() is."""
        inside = [str(word) for word in words]
        if user != 0:
            inside = ["setpriv", f"--reuid={user}", f"--regid={user}", "--clear-groups", *inside]
        if injected is not None:
            inside = ["/case/fault_injector", "--under", "/Library", "--under", "/tmp", "--under",
                      "/home", "--under", "/root", "--ignore", "/logs/", "--report",
                      "/records/report", *map(str, injected), "--", *inside]
        return ["unshare", "--mount", "--propagation", "private", "sh", SCRIPT, self.top,
                os.readlink("/proc/self/ns/mnt"), *inside]

    def report(self):
        return self.top / "records" / "report"

    def run(self, words, user=USER, injected=None):
        home = {USER: "/home/user", OTHER: "/home/other", 0: "/root"}[user]
        return self.machine.run(self.command(words, user, injected), cwd="/", environment={
            "HOME": home, "PATH": "/usr/sbin:/usr/bin:/sbin:/bin", "LC_ALL": "C.UTF-8"})
