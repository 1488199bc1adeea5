#!/usr/bin/env python3
"""Usage: lone_names.py ROOT

Finds names of unnamed namespaces that two sources of one folder have. Such sources cannot be compiled
or checked as one, which takes half of the time of reading them one by one. An alias of the same thing
is no second name, and of files that differ by their system only one is compiled.
"""
import re
import sys
from collections import defaultdict
from pathlib import Path

# Folders in which each source is a program of its own.
PROGRAMS = ("bench", "fuzz")
UNNAMED = re.compile(r"^namespace \{\n(.*?)^\}  // namespace$", re.S | re.M)
KINDS = [re.compile(r) for r in (
    r"(?:namespace|using) (?P<name>\w+) = .*",
    r"(?:class|struct|enum class|enum) (?P<name>\w+)\b(?!;)",
    r"TEST(?:_F|_P)?\((?P<name>\w+, \w+)\)",
    r"(?:[\w:<>,&*\s\[\]]+[\s&*])(?P<name>\w+)(?P<parameters>\([^)]*)",
    r"(?:[\w:<>,&*\s]+[\s&*])(?P<name>\w+)(?:\[.*?\])*\s*(?:=|;|\{)")]


def names_in(text):
    """Each name with what tells it from another: parameters, or the whole line of an alias."""
    for body in UNNAMED.findall(text):
        for line in body.splitlines():
            if not line or line[0] in " #/}" or line.startswith("template"):
                continue
            found = next((m for m in (kind.match(line) for kind in KINDS) if m), None)
            if found:
                alias = line if line.startswith(("using", "namespace")) else ""
                yield found["name"], (found.groupdict().get("parameters") or "", alias)


def without_system(name):
    return re.sub(r"_(?:macos|linux|other|cocoa|gnustep)$", "", name)


def are_double(forms):
    if len(forms) < 2:
        return False
    parameters, alias = forms[0]
    if parameters:
        return len(set(forms)) < len(forms)
    return not alias or len(set(forms)) > 1


def doubled_in(folder):
    seen = defaultdict(dict)
    for source in sorted(folder.glob("*.cpp")):
        for name, form in names_in(source.read_text()):
            seen[name].setdefault(without_system(source.stem), (source.name, form))
    for name, places in seen.items():
        files = [file for file, _ in places.values()]
        forms = [form for _, form in places.values()]
        if are_double(forms):
            yield f"{folder}: {name} in {', '.join(files)}"


def main():
    root = Path(sys.argv[1])
    sources = [f for f in root.rglob("*.cpp") if "build" not in f.relative_to(root).parts]
    doubled = [line for folder in sorted({f.parent for f in sources})
               if folder.name not in PROGRAMS for line in doubled_in(folder)]
    print("\n".join(doubled) or "no name that two sources of a folder have")
    return 1 if doubled else 0


if __name__ == "__main__":
    sys.exit(main())
