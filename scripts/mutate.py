#!/usr/bin/env python3
"""Usage: mutate.py copy SOURCES
       mutate.py SOURCES BUILD FOLDER COUNT SEED

For scripts/mutate.sh. The first form copies the files of the working folder that git knows, and writes
only what differs. In the second SOURCES is such a copy, BUILD its configured build tree: it changes one
token in FOLDER's code, builds the folder's test programs and runs them; COUNT times, each time from what
stands in the copy at first. Prints a line a mutation: "killed" when a test failed, "SURVIVED" when none
did. The same SEED gives the same mutations of the same sources. Status 1 when one survived.
"""

import pathlib
import random
import re
import shutil
import subprocess
import sys
import time

# Comments and texts are tokens too, so that nothing inside them is taken for one.
TOKEN = re.compile(r"""
    (?P<comment> //[^\n]* | /\*.*?\*/ )
  | (?P<directive> ^[ \t]*\#(?:[^\n\\]|\\.|\\\n)* | \bstatic_assert\b[^;]*; )
  | (?P<raw> R"(?P<mark>[^(]*)\(.*?\)(?P=mark)" )
  | (?P<text> "(?:[^"\\\n]|\\.)*" )
  | (?P<char> '(?:[^'\\\n]|\\.)+' )
  | (?P<number> \b\d[\w'.]* )
  | (?P<word> \b[A-Za-z_]\w* )
  | (?P<operator> (?<=\s)(?:==|!=|<=|>=|<|>|&&|\|\||\+|-|\?)(?=\s) | \+\+ | -- | \+= | -=
                  | !(?=[\w(]) )
""", re.VERBOSE | re.DOTALL | re.MULTILINE)

OTHERS = {
    "==": ("!=",), "!=": ("==",), "<": ("<=", ">"), "<=": ("<", ">"), ">": (">=", "<"),
    ">=": (">", "<"), "&&": ("||",), "||": ("&&",), "+": ("-",), "-": ("+",), "++": ("--",),
    "--": ("++",), "+=": ("-=",), "-=": ("+=",), "!": ("",), "true": ("false",),
    "false": ("true",), "break": ("continue",), "continue": ("break",), "0": ("1",), "1": ("0", "2"),
}


def others_for(match):
    """What may stand there instead."""
    token = match.group()
    kind = match.lastgroup
    if kind in ("number", "word", "operator") and token in OTHERS:
        return OTHERS[token]
    if kind == "number" and token.isdigit():
        return (str(int(token) + 1), str(int(token) - 1))
    if kind == "text" and len(token) > 3 and "/" not in token:  # no #include, no path of a header
        return (token[:-2] + '"' if token[-3] != "\\" else token,)
    return ()


def mutations_of(path):
    text = path.read_text("utf-8")
    for match in TOKEN.finditer(text):
        for other in others_for(match):
            if other != match.group():
                yield path, match.start(), match.end(), other


def show(sources, mutation):
    path, start, end, other = mutation
    text = path.read_text("utf-8")
    line = text.count("\n", 0, start) + 1
    begin = text.rfind("\n", 0, start) + 1
    stop = text.find("\n", end)
    return (f"{path.relative_to(sources)}:{line}: {text[start:end]} -> {other or 'nothing'}\n"
            f"      {(text[begin:start] + '[' + text[start:end] + ']' + text[end:stop]).strip()}")


def test_programs(sources, folder):
    """By the names that the CMake files of tests/FOLDER give them."""
    lists = sorted((sources / "tests" / folder).glob("*.cmake"))
    lists.append(sources / "tests" / folder / "CMakeLists.txt")
    found = [name for path in lists
             for name in re.findall(r"^ *quillory_test\((\w+)", path.read_text("utf-8"),
                                    re.MULTILINE)]
    return [name for name in found if "macos" not in name]


def build(tree, programs):
    done = subprocess.run(["cmake", "--build", tree, "--target", *programs], check=False,
                          stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
    return done.returncode == 0, done.stdout.decode("utf-8", "replace")


def passes(tree, programs, limit):
    for program in programs:
        try:
            done = subprocess.run([tree / "tests" / program, "--gtest_brief=1", "--gtest_fail_fast"],
                                  cwd=tree / "tests", check=False, timeout=limit,
                                  stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                                  stderr=subprocess.DEVNULL)
        except subprocess.TimeoutExpired:
            return False
        if done.returncode != 0:
            return False
    return True


def try_one(tree, programs, mutation, limit):
    """"killed", "SURVIVED", or None where it is no program any more, or nothing that is built here."""
    path, start, end, other = mutation
    before = path.read_text("utf-8")
    path.write_text(before[:start] + other + before[end:], "utf-8")
    try:
        is_built, output = build(tree, programs)
        if not is_built or "no work to do" in output:  # a file of another system's
            return None
        return "SURVIVED" if passes(tree, programs, limit) else "killed"
    finally:
        path.write_text(before, "utf-8")


def copy_sources(copy):
    listed = subprocess.run(["git", "ls-files", "--cached", "--others", "--exclude-standard", "-z"],
                            check=True, stdout=subprocess.PIPE).stdout.decode().split("\0")
    names = {name for name in listed if name and pathlib.Path(name).is_file()}
    for name in names:
        there = copy / name
        if not there.is_file() or there.read_bytes() != pathlib.Path(name).read_bytes():
            there.parent.mkdir(parents=True, exist_ok=True)
            shutil.copy(name, there)
    for path in copy.rglob("*"):
        if path.is_file() and str(path.relative_to(copy)) not in names:
            path.unlink()


def main():
    if sys.argv[1] == "copy":
        copy_sources(pathlib.Path(sys.argv[2]))
        return 0
    sources, tree = (pathlib.Path(argument).resolve() for argument in sys.argv[1:3])
    folder, count, seed = sys.argv[3], int(sys.argv[4]), int(sys.argv[5])
    programs = test_programs(sources, folder)
    is_built, output = build(tree, programs)
    begin = time.monotonic()
    if not is_built or not passes(tree, programs, 900):
        print(output, "\nthe tests of", folder, "fail without any mutation")
        return 2
    limit = 30 + 4 * (time.monotonic() - begin)
    everything = [mutation for path in sorted((sources / folder).glob("*.cpp"))
                  for mutation in mutations_of(path)]
    random.Random(seed).shuffle(everything)
    survivors = tried = 0
    for mutation in everything:
        if tried == count:
            break
        line = show(sources, mutation)
        verdict = try_one(tree, programs, mutation, limit)
        if verdict is None:
            continue
        tried += 1
        survivors += verdict == "SURVIVED"
        print(f"{tried:3} {verdict}: {line if verdict == 'SURVIVED' else line.splitlines()[0]}",
              flush=True)
    print(f"{folder}: {tried} mutations, {survivors} survived (seed {seed}, programs "
          f"{', '.join(programs)})")
    return 1 if survivors else 0


if __name__ == "__main__":
    sys.exit(main())
