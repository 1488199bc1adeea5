#!/usr/bin/env python3
"""Usage: lint_rules.py SOURCE_DIR

Fails when quillory-pack reports something under a name that docs/packaging.md does not explain, or
when the page names a rule that there is not.
"""
import pathlib
import re
import sys

NAME = r'"([a-z][a-z0-9]*(?:-[a-z0-9]+)*)"'
REPORTS = (
    re.compile(r"Severity::k\w+,\s*" + NAME),  # a finding as it is, and most helpers
    re.compile(r"(?<![.>])\b(?:error|warning)\(\s*" + NAME),  # of the whole configuration
    re.compile(r"[.>]error\([^,;]+,\s*" + NAME),  # of a part of it: first the key
    re.compile(r"\berror\(key,\s*" + NAME),
    re.compile(r'\breject\(config, (?:"[^"]*"|\w+),\s*' + NAME),
)
QUOTED = re.compile(r"`([^`]+)`")


def reported(source):
    names = set()
    for path in sorted((source / "packager").rglob("*.cpp")):
        text = path.read_text()
        for pattern in REPORTS:
            names.update(pattern.findall(text))
    return names


def explained(source):
    """The names in the first column of the table of findings, and in the paragraph behind it."""
    page = (source / "docs/packaging.md").read_text()
    section = page.split("\n## What is checked\n", 1)[1].split("\n## ", 1)[0]
    table, _, rest = section.rpartition("|\n")
    first_cells = [line.split("|")[1] for line in table.splitlines() if line.startswith("|")]
    more = rest.partition("about finished files:")[2]
    return set(QUOTED.findall(" ".join(first_cells) + more))


def main():
    source = pathlib.Path(sys.argv[1])
    rules, page = reported(source), explained(source)
    for name in sorted(rules - page):
        print(f"docs/packaging.md does not explain: {name}")
    for name in sorted(page - rules):
        print(f"docs/packaging.md explains what is never reported: {name}")
    if len(rules) < 40:
        sys.exit(f"only {len(rules)} rules found: the search is broken")
    sys.exit(1 if rules != page else 0)


if __name__ == "__main__":
    main()
