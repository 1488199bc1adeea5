#!/usr/bin/env python3
"""Usage: named_pages.py SOURCE_DIR

Fails when a source, a script or a page names a page of docs/ that is not there.
"""
import pathlib
import re
import sys

PAGE = re.compile(r"\bdocs/[\w/.-]*\w\.md\b")
LINK = re.compile(r"\]\(([^)#:\s]+\.md)(?:#[^)]*)?\)")
SUFFIXES = {".h", ".cpp", ".mm", ".java", ".py", ".sh", ".md", ".txt", ".cmake", ".toml"}
SKIPPED = {"build", ".git", "dist"}


def faults(root):
    for file in sorted(root.rglob("*")):
        path = file.relative_to(root)
        # The checks of this folder name pages of their own making.
        if file.suffix not in SUFFIXES or path.parts[0] in SKIPPED or path.parts[:2] == ("tests", "docs"):
            continue
        text = file.read_text(encoding="utf-8")
        for page in PAGE.findall(text):
            if not (root / page).is_file():
                yield f"{path} names {page}, which is not there"
        if file.suffix == ".md":
            for link in LINK.findall(text):
                if not (file.parent / link).is_file():
                    yield f"{path} links to {link}, which is not there"


def main():
    found = list(faults(pathlib.Path(sys.argv[1])))
    print("\n".join(found) or "every page that is named is there")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
