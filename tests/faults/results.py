"""What came of the cases, and the tables that say it in docs/faults.md."""

import collections
import dataclasses
import re

import designed

# Above each table of the page: which group of cases it is of.
TABLE = re.compile(r"(<!-- faults: (\w+) -->\n).*?(<!-- end -->\n)", re.DOTALL)


@dataclasses.dataclass
class Result:
    """One case. `verdict` is "whole" or what is wrong; `detail` says more about that."""

    label: str
    verdict: str
    detail: str

    @property
    def is_good(self):
        return self.verdict == "whole"


class Row:
    """The cases of one scenario or one kind of attack."""

    def __init__(self, group, name):
        self.group = group
        self.name = name
        self.tried = 0
        self.whole = 0
        self.reasons = collections.Counter()
        self.bad = []

    def add(self, result):
        self.tried += 1
        reason = None if result.is_good else designed.reason_for(result)
        if result.is_good:
            self.whole += 1
        elif reason:
            self.reasons[reason] += 1
        else:
            self.bad.append(result)

    def summary(self):
        verdicts = collections.Counter(result.verdict for result in self.bad)
        wrong = ", ".join(f"{count} {verdict}" for verdict, count in verdicts.items())
        return (f"{self.group}: {self.name}: {self.tried} tried, {self.whole} whole, "
                f"{self.reasons.total()} by design{', ' + wrong if wrong else ''}")

    def cells(self):
        by_design = "; ".join(f"{count}: {reason}" for reason, count in self.reasons.items())
        return (self.name, str(self.tried), str(self.whole), by_design or "–", str(len(self.bad)))


HEAD = ("Case", "Tried", "Survived", "By design", "Not survived")


def table_of(rows):
    lines = [HEAD, ("---", "---:", "---:", "---", "---:"), *(row.cells() for row in rows)]
    return "".join("| " + " | ".join(line) + " |\n" for line in lines)


def write_page(path, rows):
    """Writes each table whose cases were tried; the others stay as they are."""
    def fill(match):
        own = [row for row in rows if row.group == match[2]]
        return match[1] + table_of(own) + match[3] if own else match[0]

    text = path.read_text("utf-8")
    path.write_text(TABLE.sub(fill, text), "utf-8")
