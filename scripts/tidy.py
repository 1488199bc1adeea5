#!/usr/bin/env python3
"""Usage: tidy.py BUILD [FILE...]

Runs clang-tidy, with the list of /.clang-tidy, over what a configured build folder compiles of our own
code, tests apart; with FILEs over those only. Prints each finding once; the exit status is 1 when
there is one.

Most of the time would go into the same headers again and again, so the sources of one library are
read as one. Where two of them cannot stand together (a name that both use) each is read alone, as
the FILEs are.
"""
import concurrent.futures
import json
import os
import re
import shlex
import subprocess
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
FOLDERS = sorted(f.parent.name for f in ROOT.glob("*/CMakeLists.txt") if f.parent.name != "tests")
CLANG_TIDY = next((p for p in ("clang-tidy-14", "clang-tidy")
                   if subprocess.run(["which", p], capture_output=True).returncode == 0), None)
# GNUstep stands on gcc's Objective-C, whose headers clang does not look for.
GNUSTEP = [] if sys.platform == "darwin" else [
    "-fobjc-runtime=gcc", "-idirafter",
    subprocess.run(["g++", "-print-file-name=include"], capture_output=True, text=True,
                   check=True).stdout.strip()]
# A finding begins with its place, and goes on to the next one's.
PLACE = r"/[^:\n]+:\d+:\d+: (?:warning|error): "
FINDING = re.compile(rf"^({PLACE}.*(?:\n(?!{PLACE}).*)*)", re.M)


def arguments_of(entry):
    """The compiler's arguments without source and object: what its neighbours share."""
    given = shlex.split(entry["command"])
    kept, skip = [], False
    for argument in given:
        if skip or argument in ("-c", entry["file"]):
            skip = False
        elif argument == "-o":
            skip = True
        else:
            kept.append(argument)
    return kept + GNUSTEP


def is_ours(entry):
    path = Path(entry["file"])
    return path.is_relative_to(ROOT) and path.relative_to(ROOT).parts[0] in FOLDERS


def target_of(entry):
    """The folder of a target's objects: "support/CMakeFiles/quillory_support.dir"."""
    given = shlex.split(entry["command"])
    return re.match(r".*?CMakeFiles/[^/]+", given[given.index("-o") + 1]).group()


def sources_of(build):
    """Each source that is compiled, once, with its target and its arguments."""
    sources = {}
    for entry in json.loads((build / "compile_commands.json").read_text()):
        if is_ours(entry):
            sources.setdefault(entry["file"], (target_of(entry), arguments_of(entry)))
    return sources


def libraries_of(sources):
    """Sources by what they share: target, language and arguments."""
    libraries = {}
    for source, (target, arguments) in sources.items():
        key = (target, os.path.splitext(source)[1], tuple(arguments))
        libraries.setdefault(key, []).append(source)
    return [(files, list(key[2])) for key, files in libraries.items()]


def read(unit, arguments):
    """What clang-tidy says of one source."""
    command = [CLANG_TIDY, "--quiet", f"--config-file={ROOT}/.clang-tidy",
               f"--header-filter=^{ROOT}/({'|'.join(FOLDERS)})/", unit, "--"]
    run = subprocess.run(command + arguments[1:] + ["-Wno-unknown-warning-option"],
                         capture_output=True, text=True)
    if run.returncode != 0 and "error:" not in run.stdout:
        sys.exit(f"{CLANG_TIDY} failed on {unit}:\n{run.stdout}{run.stderr}")
    return run.stdout


def check(folder, number, files, arguments):
    if len(files) > 1:
        suffix = os.path.splitext(files[0])[1]
        together = folder / f"{number}{suffix}"
        together.write_text("".join(f'#include "{f}"  // NOLINT\n' for f in files))
        said = read(str(together), arguments)
        errors = [line for line in said.splitlines() if " error: " in line]
        if not errors:
            return said
        print(f"{os.path.dirname(files[0])}: {len(files)} sources are read one by one, which takes "
              f"longer, because of\n  {errors[0]}", file=sys.stderr)
    return "".join(read(f, arguments) for f in files)


def main():
    build = Path(sys.argv[1])
    only = {str(Path(f).resolve()) for f in sys.argv[2:]}
    if CLANG_TIDY is None:
        sys.exit("tidy.py: there is no clang-tidy; scripts/setup.sh installs it")
    sources = sources_of(build)
    if only:
        work = [([f], arguments) for f, (_, arguments) in sources.items() if f in only]
    else:
        work = sorted(libraries_of(sources), key=lambda w: -len(w[0]))
    folder = build / "tidy"
    folder.mkdir(exist_ok=True)
    findings = set()
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        for said in pool.map(lambda w: check(folder, *w), ((n, *w) for n, w in enumerate(work))):
            for finding in FINDING.findall(said):
                if finding.startswith(f"{ROOT}/") and finding not in findings:
                    findings.add(finding)
                    print(finding.rstrip().replace(f"{ROOT}/", ""), flush=True)
    print(f"clang-tidy: {len(findings)} findings in {sum(len(w[0]) for w in work)} sources",
          file=sys.stderr)
    return 1 if findings else 0


if __name__ == "__main__":
    sys.exit(main())
