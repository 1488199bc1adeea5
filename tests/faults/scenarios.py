"""What is disturbed: installations, updates and packing runs, each from a state that is prepared once,
with what an undisturbed run makes of it.
"""

import shutil

import bundles
from machine import Outcome, read_report, remove, tree_of
from private_root import BUNDLE, PrivateRoot, why_impossible


class Scenario:
    """A start of a bundle. `executable` is what is started; `prepare` makes the state before it."""

    name = ""
    table_name = ""

    def __init__(self, machine, packer, server):
        self.machine = machine
        self.packer = packer
        self.server = server
        self.served = None
        self.saved = machine.top / ("state-" + self.name)
        machine.clear()
        self.executable = self.make()
        self.prepare()
        shutil.copytree(machine.folder, self.saved, symlinks=True)
        self.expected = self.undisturbed()

    def make(self):
        """Makes the bundle; returns its executable."""
        raise NotImplementedError

    def prepare(self):
        """Brings the machine into the state from which the scenario goes on."""

    def undisturbed(self):
        self.set_up()
        for _ in range(2):
            outcome = self.start()
            if not self.is_good(outcome):
                raise RuntimeError(f"{self.name}: an undisturbed run fails: {outcome.output}")
        return self.tree()

    def serve(self, folder):
        """What the web server has for this scenario; others, which have it in turn, have something else."""
        self.served = folder
        self.server.serve(folder)

    def set_up(self):
        if self.served is not None:
            self.server.serve(self.served)
        remove(self.machine.folder)
        shutil.copytree(self.saved, self.machine.folder, symlinks=True)

    def command(self):
        return [self.executable, "argument"]

    def environment(self):
        return self.machine.environment()

    def start(self):
        return self.machine.run(self.command(), environment=self.environment())

    def disturbed(self, arguments):
        return self.machine.run_with(arguments, self.command(), environment=self.environment())

    def is_good(self, outcome: Outcome):
        return outcome.runs()

    def tree(self):
        return tree_of(self.machine.home)

    def all_folders(self):
        """Where content can be lost when the power goes."""
        return [self.machine.folder]

    def must_run(self, executable):
        outcome = self.machine.run([executable], environment=self.environment())
        if not outcome.runs():
            raise RuntimeError(f"{self.name}: cannot be prepared: {outcome.output}")


class FirstInstall(Scenario):
    name = "first-install"
    table_name = "first start, with a runtime"

    def make(self):
        return self.packer.bundle("first")


class Reinstall(FirstInstall):
    name = "re-install"
    table_name = "start of the same bundle after damage to the runtime"

    def prepare(self):
        self.must_run(self.executable)
        (self.machine.master / "Quillory-JRE-170000900-complete" / "lib" / "rt.jar").unlink()


class UpdaterUpdate(Scenario):
    name = "updater-update"
    table_name = "update of the updater alone"

    def make(self):
        self.before = self.packer.bundle("first")
        return self.packer.bundle("updater-2", updater=2)

    def prepare(self):
        self.must_run(self.before)


class WholeUpdate(UpdaterUpdate):
    name = "whole-update"
    table_name = "update of updater, runtime and application"

    def make(self):
        self.before = self.packer.bundle("first")
        return self.packer.bundle("all-2", app=2, updater=2, runtime="17.0.10")


class RuntimeDownload(Scenario):
    name = "runtime-download"
    table_name = "first start, which downloads a runtime"

    def make(self):
        self.serve(bundles.release_of(self.packer.bundle("first")))
        return self.packer.bundle("online", runtime=None, url=self.server.url)

    def environment(self):
        # No Java that could be copied.
        tools = self.machine.shared / "tools"
        if not tools.exists():
            make_tools(tools)
        return self.machine.environment(PATH=str(tools))


class SystemRuntime(RuntimeDownload):
    name = "system-runtime"
    table_name = "first start, which copies a runtime of the system"

    def make(self):
        # Where there is none to be had: a start that cannot copy would have another one.
        return self.packer.bundle("online-in-vain", runtime=None, url=self.server.url + "nothing/")

    def environment(self):
        tools = self.machine.shared / "tools-with-java"
        home = self.machine.shared / "java-8"
        if not tools.exists():
            make_tools(tools)
            bundles.make_java_home(home, "1.8.0_202", unpack200=True)
            (tools / "java").symlink_to(home / "bin" / "java")
        return self.machine.environment(PATH=str(tools))


class NetworkUpdate(Scenario):
    """quillory-update installs a release while the application is there; then the application is started,
    and the update run again: the version that starts is the old or the new one, whole."""

    name = "network-update"
    table_name = "quillory-update install, of updater, runtime and application"

    def make(self):
        self.before = self.packer.release("released", self.server.url)
        executable = self.packer.release("released", self.server.url, app=2, updater=2,
                                         runtime="17.0.10")
        self.serve(bundles.release_of(executable))
        first = self.packer.folder / "first-release"
        if not first.exists():
            raise RuntimeError("the first release is gone")
        return first / "Demo.app" / "Contents" / "MacOS" / "launcher"

    def prepare(self):
        self.must_run(self.executable)

    def properties(self):
        return sorted(self.machine.master.glob("Quillory-Quillory-1-complete/QYLaunchProperties-*"))[0]

    def update(self):
        return [self.packer.update, "install", "--properties", self.properties()]

    def disturbed(self, arguments):
        return self.machine.run_with(arguments, self.update())

    def start(self):
        started = self.machine.run([self.executable], environment=self.environment())
        if not started.runs():
            return started
        updated = self.machine.run(self.update())
        if updated.status != 0:
            return updated
        return self.machine.run([self.executable], environment=self.environment())

    def is_good(self, outcome):
        return outcome.status == 0 and (outcome.runs() or "done version=2" in outcome.output)

    def tree(self):
        # It holds times, and a number that is drawn.
        return {place: text for place, text in super().tree().items()
                if not place.endswith("QYUpdates/state")}


def make_tools(folder):
    folder.mkdir()
    for tool in ("chmod", "cp", "mv", "rm", "sh", "which"):
        (folder / tool).symlink_to(shutil.which(tool, path="/usr/bin:/bin"))


class ElevatedSetUp(Scenario):
    """By a user who may not write there; sudo lets him become root for this executable."""

    name = "elevated"
    table_name = "first start, which installs for all users with an administrator's rights"

    def make(self):
        self.root = PrivateRoot(self.machine, self.packer.bundle("for-all", whom="all-users"))
        return BUNDLE

    def set_up(self):
        self.root.clear()

    def start(self):
        return self.root.run(self.command())

    def disturbed(self, arguments):
        self.root.report().unlink(missing_ok=True)
        outcome = self.root.run(self.command(), injected=arguments)
        report = read_report(self.root.report())
        if outcome.status is not None and report.signal:
            outcome.status = -report.signal
        return outcome, report

    def tree(self):
        found = {}
        for folder in ("Library", "tmp", "home", "root"):
            inside = tree_of(self.root.top / folder)
            found.update({f"/{folder}/{place}": text for place, text in inside.items()})
        return found

    def all_folders(self):
        return [self.root.top / folder for folder in ("Library", "tmp", "home", "root")]


class Packing(Scenario):
    """A run of quillory-pack in a project that has been packed before, with an older version."""

    name = "pack-bundle"
    table_name = "quillory-pack bundle, over an earlier bundle"

    def make(self):
        return self.packer.pack

    def project(self):
        return self.machine.folder / "project"

    def prepare(self):
        shutil.copytree(self.packer.folder, self.project(), symlinks=True,
                        ignore=shutil.ignore_patterns("*.toml", "first", "online", "*-2"))
        first, second = self.packer.config("pack-1"), self.packer.config("pack-2", app=2, updater=2)
        shutil.copy(second, self.project() / "quillory.toml")
        shutil.copy(first, self.project() / "first.toml")
        self.must_pack("first.toml")

    def must_pack(self, config):
        outcome = self.machine.run([self.packer.pack, "bundle", config], cwd=self.project())
        if outcome.status != 0:
            raise RuntimeError(outcome.output)

    def command(self):
        return [self.executable, "bundle"]

    def start(self):
        return self.machine.run(self.command(), cwd=self.project())

    def disturbed(self, arguments):
        return self.machine.run_with(arguments, self.command(), cwd=self.project())

    def is_good(self, outcome):
        return outcome.status == 0

    def tree(self):
        return tree_of(self.project())


class Setting(Packing):
    name = "pack-set"
    table_name = "quillory-pack set"

    def command(self):
        return [self.executable, "set", "dist/Demo.app", "channel=stable"]


class Releasing(Packing):
    """A release in a folder that has one already. Whatever a killed run has left, the next one makes a
    release that a client takes, step by step, as `verify-release` does."""

    name = "pack-release"
    table_name = "quillory-pack release, behind an earlier release"

    def prepare(self):
        shutil.copytree(self.packer.folder, self.project(), symlinks=True,
                        ignore=shutil.ignore_patterns("*.toml", "first*", "online", "*-2", "released"))
        url = "https://example.com/updates/"
        first = self.packer.config("release-1", url=url, updates=True)
        second = self.packer.config("release-2", app=2, url=url, updates=True)
        shutil.copy(second, self.project() / "quillory.toml")
        shutil.copy(first, self.project() / "first.toml")
        outcome = self.machine.run([self.packer.pack, "release", "first.toml"], cwd=self.project())
        if outcome.status != 0:
            raise RuntimeError(outcome.output)

    def command(self):
        return [self.executable, "release"]

    def start(self):
        made = super().start()
        if made.status != 0:
            return made
        return self.machine.run([self.executable, "verify-release", "dist/release", "--as", "1"],
                                cwd=self.project())

    def tree(self):
        # Lists hold times, and one more of them is there where a run was killed behind its last one.
        return {place: text for place, text in super().tree().items() if "-releases" not in place}


class KeyMaking(Packing):
    """The next run says that there is a key, or makes one; a key that is there has to be one."""

    name = "keygen"
    table_name = "quillory-pack keygen"

    def prepare(self):
        self.project().mkdir()

    def command(self):
        return [self.executable, "keygen", "--bits", "2048", "new.pem"]

    def start(self):
        outcome = super().start()
        shown = self.machine.run([self.executable, "inspect", "new.pem"], cwd=self.project())
        return Outcome(shown.status, outcome.output + shown.output)

    def tree(self):
        # Each key is another one.
        return {place: "a key" for place in tree_of(self.project())}


ALL = (FirstInstall, Reinstall, UpdaterUpdate, WholeUpdate, RuntimeDownload, SystemRuntime,
       NetworkUpdate,
       *((ElevatedSetUp,) if not why_impossible() else ()), Packing, Setting,
       Releasing, KeyMaking)
