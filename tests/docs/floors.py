#!/usr/bin/env python3
"""Usage: floors.py SOURCE_DIR

Fails when a source file includes a header of a floor that the table in docs/architecture.md does not
let its own floor know, naming both files; when the table lets a floor know one that stands below it;
and when a folder with sources is missing there.
"""
import pathlib
import re
import sys

ROW = re.compile(r"^\| `([a-z_/]+)` \|[^|]*\|([^|]*)\|$", re.MULTILINE)
INCLUDE = re.compile(r'^\s*#\s*(?:include|import)\s+"([^"]+)"', re.MULTILINE)
SOURCES = {".h", ".cpp", ".mm", ".m"}
# Beside the floors.
NOT_A_FLOOR = {"bench", "build", "tests"}


def read_table(page):
    """What each floor may know, in the order of the page."""
    table = {}
    for name, known in ROW.findall(page):
        table[name] = re.findall(r"`([a-z_/]+)`", known)
    return table


def floor_of(path, table):
    """The floor that a path below the source folder belongs to, or None."""
    parts = pathlib.PurePosixPath(path).parts
    for length in (2, 1):
        name = "/".join(parts[:length])
        if len(parts) > length and name in table:
            return name
    return None


def table_faults(table):
    seen = []
    for floor, known in table.items():
        for other in known:
            if other not in seen:
                yield f"docs/architecture.md: {floor} may know {other}, which does not stand above it"
        seen.append(floor)


def include_faults(root, table):
    for file in sorted(root.rglob("*")):
        path = file.relative_to(root)
        if file.suffix not in SOURCES or path.parts[0] in NOT_A_FLOOR or path.parts[0].startswith("."):
            continue
        if path.parts[:2] == ("platform", "macos-sdk"):
            continue
        own = floor_of(path.as_posix(), table)
        if own is None:
            yield f"{path}: its folder is no floor of docs/architecture.md"
            continue
        for header in INCLUDE.findall(file.read_text(encoding="utf-8")):
            # A header of the file's own folder may be named alone ("cocoa.h").
            if "/" not in header:
                continue
            if not (root / header).is_file():
                yield f"{path} includes {header}, which is not there"
                continue
            other = floor_of(header, table)
            if other != own and other not in table[own]:
                yield f"{path} includes {header}: {own} may not know {other}"


def main():
    root = pathlib.Path(sys.argv[1])
    table = read_table((root / "docs/architecture.md").read_text(encoding="utf-8"))
    faults = list(table_faults(table)) + list(include_faults(root, table))
    if len(table) < 10:
        faults.append("docs/architecture.md: the table of floors was not found")
    print("\n".join(faults) or f"{len(table)} floors, no arrow that runs up")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
