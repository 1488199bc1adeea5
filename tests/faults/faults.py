#!/usr/bin/env python3
"""Usage: faults.py --injector FILE --pack FILE --splash FILE [--most N] [--only PATTERN]
                 [--page FILE] [--verbose]

Disturbs installations, updates and packing runs in every way that the groups below know, and looks
whether they recover. --most limits the cases of a row, which are then spread evenly; --only takes the
rows in whose "group: name" a pattern is found; --page writes the tables of docs/faults.md. One line a row, and
what is not as it should be; status 1 when there is any of that, 77 when nothing can be tried here.
"""

import argparse
import itertools
import pathlib
import re
import signal
import subprocess
import sys

sys.dont_write_bytecode = True

import bundles  # noqa: E402
import local_users  # noqa: E402
import scenarios  # noqa: E402
import servers  # noqa: E402
import surroundings  # noqa: E402
import sweep  # noqa: E402
import together  # noqa: E402
from machine import Machine  # noqa: E402
from private_root import why_impossible  # noqa: E402
from results import Row, write_page  # noqa: E402
from web_server import WebServer  # noqa: E402

SWEEPS = {"kills": sweep.kills, "cuts": sweep.power_cuts, "failures": sweep.failures}
MANY = (2, 3, 4, 8)
ROUNDS = 10
# Of what is not as it should be, a row. The option --verbose shows all.
MOST_SHOWN = 10


class Faults:
    def __init__(self, options):
        self.options = options
        self.machine = Machine(options.injector)
        self.server = WebServer()
        self.packer = bundles.Packer(options.pack, self.machine.shared / "pack", options.splash)
        self.made = {}
        self.rows = []

    def close(self):
        self.server.close()
        self.machine.close()

    def scenario(self, kind):
        if kind not in self.made:
            self.made[kind] = kind(self.machine, self.packer, self.server)
        return self.made[kind]

    def row(self, group, name, cases):
        """`cases` is a function that yields results."""
        if not re.search(self.options.only, f"{group}: {name}"):
            return
        row = Row(group, name)
        for result in cases():
            row.add(result)
        self.rows.append(row)
        print(row.summary(), flush=True)
        for result in row.bad[:None if self.options.verbose else MOST_SHOWN]:
            print(f"  {result.verdict}: {result.label}\n    {result.detail}", flush=True)

    def sweeps(self):
        most = self.options.most
        for group, cases in SWEEPS.items():
            for kind in scenarios.ALL:
                self.row(group, kind.table_name,
                         lambda cases=cases, kind=kind: cases(self.scenario(kind), most))

    def starts_at_once(self):
        rounds = min(ROUNDS, self.options.most or ROUNDS)
        for count in MANY:
            self.row("together", f"{count} first starts",
                     lambda count=count: together.rounds(self.scenario(scenarios.FirstInstall),
                                                         count, rounds))

    def servers(self):
        for part in ("version file", "archive"):
            # The slow ones take minutes: a sample does without.
            cases = [case for case in servers.cases(with_slow=self.options.most is None)
                     if case[0].startswith(part)]
            chosen = sweep.sampled(cases, self.options.most)
            self.row("servers", f"instead of the {part}",
                     lambda chosen=chosen: (
                         servers.run_case(self.scenario(scenarios.RuntimeDownload), *case)
                         for case in chosen))

    def local_users(self):
        if why_impossible():
            print(f"users: none are tried: {why_impossible()}")
            return
        for name, cases in local_users.attacks(self.machine, self.packer):
            self.row("users", name, lambda cases=cases: self.some(cases()))

    def some(self, results):
        """As many of them as the options allow; the others are not even tried."""
        return itertools.islice(results, self.options.most)

    def surroundings(self):
        def cases():
            scenario = self.scenario(scenarios.FirstInstall)
            for case in sweep.sampled(list(surroundings.cases(scenario)), self.options.most):
                yield surroundings.run_case(scenario, *case)
            yield surroundings.pipe_case(scenario)

        self.row("surroundings", "first start", cases)


def can_trace(injector):
    try:
        return subprocess.run([injector, "--under", "/nowhere", "--", "true"], check=False,
                              capture_output=True).returncode == 0
    except OSError:
        return False


def read_options():
    parser = argparse.ArgumentParser(usage=__doc__)
    for name in ("injector", "pack", "splash"):
        parser.add_argument("--" + name, type=lambda path: pathlib.Path(path).resolve(),
                            required=True)
    parser.add_argument("--most", type=int)
    parser.add_argument("--only", default="")
    parser.add_argument("--page", type=pathlib.Path)
    parser.add_argument("--verbose", action="store_true")
    return parser.parse_args()


def main():
    options = read_options()
    # So that the folder of the machine is removed then, too.
    signal.signal(signal.SIGTERM, lambda *_: sys.exit(1))
    if not can_trace(options.injector):
        print("processes cannot be traced here: nothing is tried")
        return 77
    faults = Faults(options)
    try:
        faults.sweeps()
        faults.starts_at_once()
        faults.servers()
        faults.local_users()
        faults.surroundings()
    finally:
        faults.close()
    if options.page:
        write_page(options.page, faults.rows)
    return 1 if any(row.bad for row in faults.rows) else 0


if __name__ == "__main__":
    sys.exit(main())
