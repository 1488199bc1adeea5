"""Starts of one bundle at the same moment: each has to bring the application."""

import subprocess

from machine import LIMIT, RUNS, differences, end_group
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
        endings.append((status, RUNS in output, output))
    return endings


def rounds(scenario, count, most):
    for number in range(most):
        label = f"round {number + 1} of {count} starts"
        scenario.set_up()
        endings = start_at_once(scenario, count)
        lost = [ending for ending in endings if ending[0] != 0 or not ending[1]]
        broken, foreign = differences(scenario.expected, scenario.tree())
        if lost:
            detail = lost[0][2][-600:]
            yield Result(label, "starts lost", f"{len(lost)} of {count}: {detail}")
        elif broken:
            yield Result(label, "not whole", "; ".join(broken[:5]))
        elif foreign:
            yield Result(label, "foreign files", "; ".join(foreign[:5]))
        else:
            yield Result(label, "whole", "")
