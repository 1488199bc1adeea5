"""Starts in odd surroundings: environment variables, standard streams, limits, modes, folders. Each ends
in time, not by a crash, and is honest about what it did; and the next start in good surroundings comes
up whole.
"""

import os
import resource
import signal
import subprocess

from machine import differences
from results import Result

LONG = "x" * 100_000
ODD = "a b\"c'd$e`f\\g;h&i|j\n\xff"

VARIABLES = {
    "HOME": (None, "", "/", "/nonexistent", "relative", ".", LONG, ODD, "/dev/null", "/etc/passwd"),
    "PATH": (None, "", ":", ".", "/nonexistent", LONG, ODD, "/dev/null"),
    "TMPDIR": (None, "", "/nonexistent", "relative", "/dev/null", LONG, ODD, "/proc"),
    "LANG": ("", "C", "de_DE.UTF-8", "nonsense", "../../etc", LONG, ODD),
    "LC_ALL": (None, "", "C", "POSIX", "tr_TR.UTF-8", "nonsense", LONG, ODD),
    "TZ": ("", "nonsense", "/etc/passwd", ":/nonexistent", LONG, ODD),
    "USER": ("", "root", "nobody", LONG, ODD), "LOGNAME": ("", LONG, ODD),
    "SHELL": ("", "/nonexistent", "/bin/false", LONG),
    "IFS": ("", "/", "abc"), "ENV": ("/nonexistent", "/dev/null"), "CDPATH": ("/", ODD),
    "BASH_ENV": ("/nonexistent",), "PWD": ("", "/nonexistent", LONG),
    "JAVA_HOME": ("", "/nonexistent", ODD), "JAVA_TOOL_OPTIONS": ("", "-version", "-Xmx1k", ODD),
    "_JAVA_OPTIONS": ("-version",), "JDK_JAVA_OPTIONS": ("-version", "@/dev/zero"),
    "CLASSPATH": ("", "/nonexistent", LONG),
    "http_proxy": ("http://127.0.0.1:1", "nonsense"), "DISPLAY": ("", ":9999", "nonsense", LONG, ODD),
    "WAYLAND_DISPLAY": ("nonsense",), "DBUS_SESSION_BUS_ADDRESS": ("", "nonsense", "unix:path=/x"),
    "XDG_RUNTIME_DIR": ("", "/nonexistent"), "XDG_DATA_DIRS": (LONG,),
    "GNUSTEP_CONFIG_FILE": ("/nonexistent", "/dev/null"), "GNUSTEP_USER_ROOT": ("/nonexistent", ODD),
    "NSZombieEnabled": ("YES",), "MALLOC_PERTURB_": ("165",), "POSIXLY_CORRECT": ("1",),
    "LD_BIND_NOW": ("1",), "GCONV_PATH": ("/nonexistent",), "NLSPATH": (ODD,),
    "QYPREPARE_FOR_LAUNCH_ONLY": ("1",), "QUILLORY": (LONG,),
}

STREAMS = {
    "no standard input": "exec 0<&-", "no standard output": "exec 1>&-",
    "no standard error": "exec 2>&-", "no standard streams": "exec 0<&- 1>&- 2>&-",
    "standard output on a full disk": "exec >/dev/full",
    "all output on a full disk": "exec >/dev/full 2>&1",
    "output that cannot be written": "exec </dev/null >/dev/zero",
    "an endless standard input": "exec </dev/zero",
    "a folder as standard input": "exec </",
}

LIMITS = {
    **{f"{count} descriptors": (resource.RLIMIT_NOFILE, count) for count in range(3, 21)},
    **{f"files of {count} bytes": (resource.RLIMIT_FSIZE, count)
       for count in (0, 1, 100, 1000, 10_000, 100_000, 1_000_000)},
    **{f"{count} MiB of memory": (resource.RLIMIT_AS, count << 20)
       for count in (8, 16, 32, 64, 128, 256, 512)},
    **{f"a stack of {count} KiB": (resource.RLIMIT_STACK, count << 10) for count in (64, 256, 1024)},
    "no core": (resource.RLIMIT_CORE, 0), "2 s of processor time": (resource.RLIMIT_CPU, 2),
    "no locked memory": (resource.RLIMIT_MEMLOCK, 0),
    "1 MiB of data": (resource.RLIMIT_DATA, 1 << 20),
}


def limited(limit):
    def apply():
        resource.setrlimit(limit[0], (limit[1], resource.getrlimit(limit[0])[1]))
    return apply


def removed_folder(scenario):
    folder = scenario.machine.folder / "gone"
    return ["/bin/sh", "-c", f"mkdir '{folder}' && cd '{folder}' && rmdir '{folder}' && "
            "exec \"$0\" \"$@\"", *scenario.command()]


def shell(first):
    return lambda scenario: ["/bin/sh", "-c", f"{first}\nexec \"$0\" \"$@\"", *scenario.command()]


def with_name(name):
    """The same executable under another name of its own (argv[0])."""
    return lambda scenario: ["python3", "-c", "import os, sys; os.execv(sys.argv[1], sys.argv[2:])",
                             scenario.command()[0], name, "argument"]


def arguments(*words):
    return lambda scenario: [scenario.executable, *words]


COMMANDS = {
    **{name: shell(first) for name, first in STREAMS.items()},
    **{f"the umask {mask}": shell(f"umask {mask}") for mask in ("0", "077", "0277", "0777")},
    "a working folder that is removed": removed_folder,
    **{f"the name {name[:20]!r}": with_name(name) for name in ("launcher", "/", "-", " ", "../x", LONG)},
    "all signals ignored": shell("trap '' HUP INT QUIT PIPE TERM CHLD USR1 USR2 ALRM"),
    "SIGCHLD ignored": shell("trap '' CHLD"), "SIGPIPE ignored": shell("trap '' PIPE"),
    "a thousand arguments": arguments(*["x"] * 1000), "an argument of 100,000 bytes": arguments(LONG),
    "empty arguments": arguments("", "", ""), "arguments with ends of lines": arguments("a\nb", "\n"),
    "options of programs": arguments("--help", "--version", "-h", "--", "-psn_0_1"),
    "options of Java": arguments("-Xmx1k", "-cp", "/nonexistent"),
}


def broken_pipe(scenario):
    """Nobody reads the output any more."""
    reader, writer = os.pipe()
    os.close(reader)
    try:
        process = subprocess.Popen([str(word) for word in scenario.command()], stdout=writer,
                                   stderr=writer, stdin=subprocess.DEVNULL, start_new_session=True,
                                   cwd=scenario.machine.folder, env=scenario.environment())
        return process.wait(60)
    finally:
        os.close(writer)


def cases(scenario):
    """(name, how it is started): a function that returns an outcome."""
    machine = scenario.machine
    for name, values in VARIABLES.items():
        for value in values:
            shown = "absent" if value is None else repr(value[:20])
            yield f"{name}={shown}", lambda name=name, value=value: machine.run(
                scenario.command(), environment=machine.environment(**{name: value}))
    for name, limit in LIMITS.items():
        yield name, lambda limit=limit: machine.run(
            scenario.command(), environment=scenario.environment(), preexec_fn=limited(limit))
    for name, command in COMMANDS.items():
        yield name, lambda command=command: machine.run(
            command(scenario), environment=scenario.environment())


# How a system ends a process that has used up what the user allows it.
USED_UP = (-signal.SIGXFSZ, -signal.SIGXCPU)


def judge(label, outcome):
    """What is wrong with how the start ended, or None."""
    if outcome.status is None:
        return Result(label, "hangs", outcome.end())
    if outcome.status < 0 and outcome.status not in USED_UP:
        return Result(label, "crash", outcome.end())
    # Of some streams nothing is heard; that the next start is whole then has to do.
    if outcome.status == 0 and label not in STREAMS and not outcome.runs():
        return Result(label, "status 0 for nothing", outcome.end())
    return None


def run_case(scenario, label, start):
    scenario.set_up()
    outcome = start()
    fault = judge(label, outcome)
    if fault:
        return fault
    again = scenario.start()
    if not scenario.is_good(again):
        return Result(label, "broken", again.end())
    broken, foreign = differences(scenario.expected, scenario.tree())
    if broken or foreign:
        return Result(label, "not whole", "; ".join((broken + foreign)[:5]))
    return Result(label, "whole", f"status {outcome.status}")


def pipe_case(scenario):
    label = "a pipe that nobody reads"
    scenario.set_up()
    status = broken_pipe(scenario)
    broken, foreign = differences(scenario.expected, scenario.tree())
    if status != 0 or broken or foreign:
        return Result(label, "not whole", f"status {status}; " + "; ".join((broken + foreign)[:5]))
    return Result(label, "whole", "")
