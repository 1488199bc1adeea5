"""One scenario, disturbed at its system calls one after another; after each, the next start has to
come up whole.
"""

from machine import differences, lose_content
from results import Result

# A failing call is put in once, where one follows another of the same kind on the same file.
REASONS = ("short", "ENOSPC", "EIO", "EMFILE", "EINTR", "EAGAIN")


def sampled(cases, most):
    """At most so many, spread evenly, the first and the last among them."""
    if most is None or len(cases) <= most:
        return cases
    if most == 1:
        return cases[len(cases) // 2:][:1]
    return [cases[round(index * (len(cases) - 1) / (most - 1))] for index in range(most)]


def list_of_calls(scenario, kinds):
    scenario.set_up()
    outcome, report = scenario.disturbed(["--calls", kinds, "--list"])
    if not scenario.is_good(outcome):
        raise RuntimeError(f"{scenario.name}: fails under fault_injector: {outcome.output}")
    return report.list


def after(scenario, label):
    """Starts once more, and looks at what is there then."""
    outcome = scenario.start()
    if outcome.status is None:
        return Result(label, "hangs", outcome.end())
    if not scenario.is_good(outcome):
        return Result(label, "broken", outcome.end())
    broken, foreign = differences(scenario.expected, scenario.tree())
    if broken:
        return Result(label, "not whole", "; ".join(broken[:5]))
    if foreign:
        return Result(label, "foreign files", "; ".join(foreign[:5]))
    return Result(label, "whole", "")


def label_of(scenario, call):
    where = call.path.replace(str(scenario.machine.folder), "")
    return f"{call.number} {call.name} {where}"


def kills(scenario, most):
    """The whole tree of processes, then only the process that makes the call."""
    calls = list_of_calls(scenario, "change")
    cases = [(fault, call) for fault in ("kill-all", "kill") for call in calls]
    for fault, call in sampled(cases, most):
        scenario.set_up()
        scenario.disturbed(["--calls", "change", "--at", call.number, "--fault", fault])
        yield after(scenario, f"{fault} {label_of(scenario, call)}")


def power_cuts(scenario, most):
    """As a kill of everything, and what was not flushed is lost; also behind the last call."""
    calls = list_of_calls(scenario, "change")
    for number in sampled(list(range(1, len(calls) + 2)), most):
        scenario.set_up()
        _, report = scenario.disturbed(
            ["--calls", "change", "--at", number, "--fault", "kill-all"])
        for folder in scenario.all_folders():
            lose_content(folder, report.dirty)
        label = label_of(scenario, calls[number - 1]) if number <= len(calls) else "behind the end"
        yield after(scenario, "cut " + label)


def failing_cases(calls):
    """(fault, call): of a row of calls alike only the first and the last."""
    cases = []
    for index, call in enumerate(calls):
        same = [other for other in calls[max(0, index - 1):index + 2:2]
                if (other.name, other.path) == (call.name, call.path)]
        if len(same) < 2 or not call.path:
            cases += [(fault, call) for fault in REASONS if fault in call.faults]
    return sorted(cases, key=lambda case: REASONS.index(case[0]))


def failures(scenario, most):
    """One call fails; a disk that is full stays full. The start has to end, and to be honest."""
    for fault, call in sampled(failing_cases(list_of_calls(scenario, "all")), most):
        where = "--from" if fault == "ENOSPC" else "--at"
        scenario.set_up()
        outcome, report = scenario.disturbed(
            ["--calls", "all", where, call.number, "--fault", fault])
        label = f"{fault} {label_of(scenario, call)}"
        if outcome.status is None:
            yield Result(label, "hangs", outcome.end())
        elif outcome.status < 0:
            yield Result(label, "crash", outcome.end())
        elif outcome.status == 0 and not scenario.is_good(outcome):
            yield Result(label, "status 0 for nothing", outcome.end())
        elif not report.hit:
            continue
        else:
            yield after(scenario, label)
