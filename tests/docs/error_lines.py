#!/usr/bin/env python3
"""Usage: error_lines.py SOURCE_DIR

Fails when a message of the launcher that tells of a failure is not explained in docs/operating.md.
A message is found there by the longest piece of its text between two values.
"""
import pathlib
import re
import sys

# Without runner/, which the shipped start does not reach.
FOLDERS = ["formats", "install", "java", "launcher", "platform", "support", "ui", "update"]
LITERALS = r'((?:\s*"(?:[^"\\]|\\.)*")+)'
ERROR = re.compile(r"\b(?:logError|giveUp)\([^;\"]*?" + LITERALS)
MESSAGE = re.compile(r"\b(?:logMessage|logToSystem|NSLog|printf)\(\s*@?" + LITERALS)
TELLS_OF_FAILURE = re.compile(
    r"\*{5}|error|fail|warning|unable|could ?n[o']t|cannot|invalid|broken|no longer|mismatch|"
    r"does not exist|too long|refus", re.IGNORECASE)
CONVERSION = re.compile(r"%[-+ #0]*[\d.*]*(?:hh|ll|[hlzt])?[a-zA-Z@]")
TAG = re.compile(r"^[\n\t]*(?:\[[^]%]*\] )*|\*{3,}\s*")


def messages(text):
    """The formats of all messages in a source file that tell of a failure."""
    for pattern, is_failure in ((ERROR, True), (MESSAGE, False)):
        for match in pattern.finditer(text):
            literals = re.findall(r'"((?:[^"\\]|\\.)*)"', match.group(1))
            message = "".join(literals).encode().decode("unicode_escape")
            if is_failure or TELLS_OF_FAILURE.search(message):
                yield message


def key_of(message):
    """What the page has to say of a message: its longest constant piece, without its tag."""
    pieces = CONVERSION.split(TAG.sub("", message))
    return max((piece.strip(" \n:.'\"()[]") for piece in pieces), key=len)


def main():
    source = pathlib.Path(sys.argv[1])
    page = " ".join((source / "docs/operating.md").read_text().split())
    missing = set()
    found = 0
    for folder in FOLDERS:
        for path in sorted((source / folder).rglob("*.*")):
            if path.suffix not in (".cpp", ".mm"):
                continue
            for message in messages(path.read_text()):
                found += 1
                if key_of(message) not in page:
                    missing.add(f"{path.relative_to(source)}: {key_of(message)}")
    if found < 50:
        sys.exit(f"only {found} messages were found in the sources: this test no longer reads them")
    if missing:
        sys.exit("not explained in docs/operating.md:\n  " + "\n  ".join(sorted(missing)))


main()
