#!/usr/bin/python3
"""Does what osascript does with the one statement that elev_mac gives it, except for the rights:
reads its two text constants, and gives the first to a shell. Keeps the prompt beside itself."""
import os
import re
import subprocess
import sys

CONSTANT = r'"((?:[^"\\\n\r]|\\.)*)"'
STATEMENT = (
    f"do shell script {CONSTANT} with prompt {CONSTANT}"
    " with administrator privileges without altering line endings"
)
ESCAPED = {"n": "\n", "r": "\r", "t": "\t", '"': '"', "\\": "\\"}


def text_of(constant):
    return os.fsencode(re.sub(r"\\(.)", lambda match: ESCAPED[match.group(1)], constant))


statement = re.fullmatch(STATEMENT, sys.argv[2]) if len(sys.argv) == 3 else None
if statement is None or sys.argv[1] != "-e":
    sys.exit("osascript: syntax error")
with open(sys.argv[0] + ".prompt", "wb") as prompt:
    prompt.write(text_of(statement.group(2)))
shell = subprocess.run(["/bin/sh", "-c", text_of(statement.group(1))], capture_output=True)
if shell.returncode != 0:
    sys.exit(f"0:1: execution error: {os.fsdecode(shell.stderr)} ({shell.returncode})")
sys.stdout.buffer.write(shell.stdout + b"\n")
