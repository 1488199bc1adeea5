#!/usr/bin/env python3
"""Usage: bench/compare_rest_time.py COMMAND...

Runs a command in a terminal of its own that shows the bar of quillory-pack, and judges what the bar
says of the time that is left: of all redraws in the second half of the packing, how many are right
within 20 % of what was really left, or within the second that is shown. Prints each change too.
"""
import os
import pty
import re
import sys
import time

BAR = re.compile(rb"packing \[[^\r]*?\] \d+% of [^\r,]*(?:, (\d+) (s|min) left)?")


def redraws(command):
    """The seconds since the start of each redraw, with the seconds that it promises, or None."""
    pid, terminal = pty.fork()
    if pid == 0:
        os.execvp(command[0], command)
    start = time.monotonic()
    seen = []
    pending = b""
    while True:
        try:
            data = os.read(terminal, 65536)
        except OSError:  # its end, on Linux
            break
        if not data:
            break
        # A redraw begins at the left; what is read last may be the first half of one.
        *whole, pending = (pending + data).split(b"\r")
        for match in filter(None, map(BAR.search, whole)):
            seconds = match[1] and int(match[1]) * (60 if match[2] == b"min" else 1)
            seen.append((time.monotonic() - start, seconds))
    if os.waitstatus_to_exitcode(os.waitpid(pid, 0)[1]) != 0:
        sys.exit("the command failed")
    return seen


def main():
    seen = redraws(sys.argv[1:])
    if not seen:
        sys.exit("there was no bar")
    first, last = seen[0][0], seen[-1][0]
    half = [(at, promised) for at, promised in seen if at >= (first + last) / 2]
    right = 0
    shown = None
    for at, promised in half:
        actual = last - at
        good = promised is not None and abs(promised - actual) <= max(0.2 * actual, 1)
        right += good
        if promised != shown:
            print(f"{at - first:.1f} s: {promised} s left, in fact {actual:.1f}{'' if good else ' !'}")
            shown = promised
    print(f"packing took {last - first:.1f} s; right in its second half: ratio {right / len(half):.2f}"
          " (bar: all)")


main()
