#!/usr/bin/env python3
"""Usage: mirror.py SOURCE_DIR

Fails when a source of packager/FLOOR/ has no test of its name in tests/packager/FLOOR/: name.cpp wants
name_test.cpp, with a test in it, and built. The files that one source has for each system
("name_linux.cpp", "name_macos.cpp") share the test of their name.
"""
import pathlib
import re
import sys

SYSTEM = re.compile(r"_(linux|macos|cocoa)$")
TEST = re.compile(r"^TEST(_F|_P)?\(", re.MULTILINE)


def names_of(folder):
    """The sources of a floor: each name once."""
    return sorted({SYSTEM.sub("", file.stem) for file in folder.glob("*.cpp")})


def faults(root):
    packager, tests = root / "packager", root / "tests/packager"
    built = (tests / "CMakeLists.txt").read_text(encoding="utf-8").split()
    for floor in sorted(folder for folder in packager.iterdir() if folder.is_dir()):
        for name in names_of(floor):
            test = f"{floor.name}/{name}_test.cpp"
            if not (tests / test).is_file():
                yield f"packager/{floor.name}/{name}.cpp has no tests/packager/{test}"
                continue
            if not TEST.search((tests / test).read_text(encoding="utf-8")):
                yield f"tests/packager/{test} holds no test"
            if test not in built:
                yield f"tests/packager/CMakeLists.txt does not build {test}"


def main():
    root = pathlib.Path(sys.argv[1])
    found = list(faults(root))
    if not any((root / "packager").glob("*/*.cpp")):
        found.append("packager: no sources were found")
    print("\n".join(found) or "every source of the packager has a test of its name")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
