"""Starts of one bundle at the same moment: each has to bring the application."""

import concurrent.futures

from machine import differences
from results import Result


def start_at_once(scenario, count):
    """Each to its end, with the application that it has started."""
    with concurrent.futures.ThreadPoolExecutor(count) as threads:
        return list(threads.map(lambda _: scenario.start(), range(count)))


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
