#!/usr/bin/env python3
"""Usage: lone_names.py ROOT

Finds names of unnamed namespaces that two sources of one folder have, or that a header has declared for
the namespace around them. Such sources cannot be compiled or checked as one, which takes half of the time
of reading them one by one. An alias of the same thing is no second name, and of files that differ by
their system only one is compiled.
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


OPEN_ENUM = re.compile(r"^enum (?!class)\w*[^{;]*\{(.*?)\};", re.S | re.M)
ENUMERATOR = re.compile(r"(?:^|,)\s*(?://[^\n]*\s*)*(\w+)")
NAMED = re.compile(r"^namespace ([\w:]+) \{$", re.M)


def on_one_line(text):
    """With the parameters of a function beside each other."""
    return re.sub(r",\n\s+", ", ", text)


def names_in(text):
    """Each name with what tells it from another: parameters, or the whole line of an alias."""
    for body in UNNAMED.findall(text):
        for inside in OPEN_ENUM.findall(body):
            for name in ENUMERATOR.findall(inside):
                yield name, ("", "")
        for line in on_one_line(body).splitlines():
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


def namespace_of(text):
    return "::".join(NAMED.findall(text)[:1])


def declared_in(headers):
    """The functions that headers declare, with their parameters, namespace and file."""
    declared = defaultdict(list)
    for header in headers:
        text = header.read_text()
        for line in on_one_line(text).splitlines():
            found = KINDS[3].match(line) if line and line[0] not in " #/}" else None
            if found:
                declared[found["name"]].append((found["parameters"], namespace_of(text), header))
    return declared


def is_around(outer, inner):
    return inner == outer or inner.startswith(outer + "::")


def declared_again(source, declared):
    text = source.read_text()
    own = namespace_of(text)
    for name, (parameters, _) in names_in(text):
        for theirs, namespace, header in declared.get(name, []) if parameters else []:
            if parameters.split() == theirs.split() and is_around(namespace, own):
                yield f"{source}: {name} is declared by {header}"


def doubled_in(folder, kind):
    seen = defaultdict(dict)
    for source in sorted(folder.glob(kind)):
        for name, form in names_in(source.read_text()):
            seen[name].setdefault(without_system(source.stem), (source.name, form))
    for name, places in seen.items():
        files = [file for file, _ in places.values()]
        forms = [form for _, form in places.values()]
        if are_double(forms):
            yield f"{folder}: {name} in {', '.join(files)}"


def main():
    root = Path(sys.argv[1])
    files = [f for f in root.rglob("*.*") if "build" not in f.relative_to(root).parts]
    sources = [f for f in files if f.suffix in (".cpp", ".mm") and f.parent.name not in PROGRAMS]
    doubled = [line for folder in sorted({f.parent for f in sources})
               for kind in ("*.cpp", "*.mm") for line in doubled_in(folder, kind)]
    declared = declared_in(f for f in files if f.suffix == ".h")
    doubled += [line for f in sorted(sources) for line in declared_again(f, declared)]
    print("\n".join(doubled) or "no name that two sources of a folder have, nor a header")
    return 1 if doubled else 0


if __name__ == "__main__":
    sys.exit(main())
