"""Starts of one bundle at the same moment: each has to bring the application."""

import subprocess

from machine import LIMIT, Outcome, differences, end_group
from results import Result


def start_at_once(scenario, count):
    machine = scenario.machine
    processes = [subprocess.Popen([str(word) for word in scenario.command()],
                                  start_new_session=True, stdin=subprocess.DEVNULL,
                                  stdout=open(machine.top / f"output-{number}", "wb"),
                                  stderr=subprocess.STDOUT, cwd=machine.folder,
                                  env=scenario.environment()) for number in range(count)]
    endings = []
    for number, process in enumerate(processes):
        try:
            status = process.wait(LIMIT)
        except subprocess.TimeoutExpired:
            end_group(process)
            status = process.wait()
        output = (machine.top / f"output-{number}").read_text("utf-8", "replace")
        endings.append(Outcome(status, output))
    return endings


def rounds(scenario, count, most):
    for number in range(most):
        label = f"round {number + 1} of {count} starts"
        scenario.set_up()
        endings = start_at_once(scenario, count)
        lost = [outcome for outcome in endings if not outcome.runs()]
        broken, foreign = differences(scenario.expected, scenario.tree())
        if lost:
            yield Result(label, "starts lost", f"{len(lost)} of {count}: {lost[0].end()}")
        elif broken:
            yield Result(label, "not whole", "; ".join(broken[:5]))
        elif foreign:
            yield Result(label, "foreign files", "; ".join(foreign[:5]))
        else:
            yield Result(label, "whole", "")
