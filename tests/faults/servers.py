"""Servers that mean harm, or are out of order, in the place of the one at the update URL: a start ends
in time, leaves no half of a runtime, and the next start, with a good server, comes up whole.
"""

import gzip
import socket
import struct
import time

from machine import differences
from results import Result

# What a start may take at most: the longest of the launcher's own limits, and room for a slow machine.
LIMIT = 90

VERSION = "Quillory-JRE-version.txt"


def body_of(handler):
    path = handler.server.owner.folder / handler.path.split("?")[0].lstrip("/")
    return path.read_bytes() if path.is_file() else b""


def send(handler, head, body=b""):
    handler.wfile.write(head.replace("\n", "\r\n").encode("latin-1") + b"\r\n" + body)


def length(handler, count):
    return f"HTTP/1.1 200 OK\nContent-Length: {count}\n"


def reset(handler):
    handler.wfile.flush()
    handler.connection.setsockopt(socket.SOL_SOCKET, socket.SO_LINGER, struct.pack("ii", 1, 0))
    handler.connection.close()


def without_end(handler, piece):
    """As fast as a disk has room for as long as a start may take."""
    while True:
        handler.wfile.write(piece * (65536 // len(piece)))
        time.sleep(0.05)


def endless(handler):
    send(handler, "HTTP/1.1 200 OK\n")
    without_end(handler, b"9")


def endless_lines(handler):
    send(handler, "HTTP/1.1 200 OK\n")
    without_end(handler, b"17\n")


def drip(handler):
    send(handler, length(handler, 100000))
    while True:
        handler.wfile.write(b"1")
        time.sleep(3)


def drip_of_head(handler):
    handler.wfile.write(b"HTTP/1.1 200 OK\r\n")
    while True:
        handler.wfile.write(b"X")
        time.sleep(3)


def silence(handler):
    time.sleep(LIMIT + 30)


def silence_behind_head(handler):
    send(handler, length(handler, 100000))
    time.sleep(LIMIT + 30)


def huge_head(handler):
    handler.wfile.write(b"HTTP/1.1 200 OK\r\n")
    without_end(handler, b"X-Filling: " + b"x" * 8000 + b"\r\n")


def nothing(handler):
    handler.connection.shutdown(socket.SHUT_RDWR)


def garbage(handler):
    handler.wfile.write(bytes(range(256)) * 100)


def continues(handler):
    without_end(handler, b"HTTP/1.1 100 Continue\r\n\r\n")


def bomb(handler):
    body = gzip.compress(b"0" * (200 << 20), 1)
    send(handler, f"HTTP/1.1 200 OK\nContent-Encoding: gzip\nContent-Length: {len(body)}\n", body)


def page(handler):
    body = b"<!DOCTYPE html><html><body>Please sign in.</body></html>\n" * 50
    send(handler, "HTTP/1.1 200 OK\nContent-Type: text/html\n"
                  f"Content-Length: {len(body)}\n", body)


def redirect_to(where):
    def answer(handler):
        send(handler, f"HTTP/1.1 302 Found\nLocation: {where}\nContent-Length: 0\n")
    return answer


def status_of(number):
    def answer(handler):
        body = b"<html>no</html>"
        send(handler, f"HTTP/1.1 {number} Sorry\nContent-Length: {len(body)}\n", body)
    return answer


def content(body):
    def answer(handler):
        send(handler, length(handler, len(body)), body)
    return answer


def cut_at(part, ending):
    """Of the true answer only a part comes: of a thousand parts."""
    def answer(handler):
        body = body_of(handler)
        send(handler, length(handler, len(body)), body[:len(body) * part // 1000])
        if ending == "reset":
            reset(handler)
    return answer


def wrong_length(change):
    def answer(handler):
        body = body_of(handler)
        send(handler, length(handler, len(body) + change), body)
    return answer


def changed_at(part):
    """One bit of the true answer is another."""
    def answer(handler):
        body = bytearray(body_of(handler))
        if body:
            body[(len(body) - 1) * part // 1000] ^= 4
        send(handler, length(handler, len(body)), bytes(body))
    return answer


def lengths(text):
    def answer(handler):
        send(handler, f"HTTP/1.1 200 OK\n{text}\n", body_of(handler))
    return answer


def bad_chunks(handler):
    send(handler, "HTTP/1.1 200 OK\nTransfer-Encoding: chunked\n", b"zz\r\nfoo\r\n")


def huge_chunk(handler):
    send(handler, "HTTP/1.1 200 OK\nTransfer-Encoding: chunked\n", b"7fffffffffffffff\r\n17")


# What either file may be answered with. Slow ones, which a start may rightly wait for, are apart.
QUICK = {
    "endless": endless, "endless lines": endless_lines, "endless head": huge_head,
    "endless interim answers": continues, "no byte": nothing, "garbage": garbage,
    "a gzip bomb": bomb, "a page to sign in": page, "chunks that are none": bad_chunks,
    "a chunk of 2^63": huge_chunk, "empty": content(b""), "one blank": content(b" "),
    "zero bytes": content(b"\0" * 10), "a redirect in circles": redirect_to("?again"),
    "a redirect to a file": redirect_to("file:///etc/hostname"),
    "a redirect to nobody": redirect_to("http://127.0.0.1:1/"),
    "a redirect to ftp": redirect_to("ftp://127.0.0.1/x"),
    "a redirect to nothing": redirect_to(""),
    "a redirect of 100,000 bytes": redirect_to("/" + "x" * 100000),
    "one byte too long": wrong_length(1), "one byte too short": wrong_length(-1),
    "a length of -1": lengths("Content-Length: -1"),
    "a length of 10^30": lengths("Content-Length: 1" + "0" * 30),
    "two lengths": lengths("Content-Length: 3\nContent-Length: 4"),
    "a length that is a word": lengths("Content-Length: many"),
    **{f"status {number}": status_of(number)
       for number in (204, 206, 301, 304, 401, 403, 404, 407, 410, 429, 500, 502, 503, 999)},
    **{f"cut at {part} of 1000": cut_at(part, "close") for part in (0, 1, 250, 500, 750, 999)},
    **{f"reset at {part} of 1000": cut_at(part, "reset") for part in (0, 1, 250, 500, 750, 999)},
    **{f"a bit changed at {part} of 1000": changed_at(part)
       for part in (0, 10, 250, 500, 750, 990, 1000)},
}

SLOW = {"a byte every 3 seconds": drip, "a head by a byte every 3 seconds": drip_of_head,
        "silence": silence, "silence behind the head": silence_behind_head}

VERSIONS = {
    "a version with a path": content(b"../../evil"),
    "a version of 10^6 digits": content(b"1" * 10**6),
    "a version of words": content(b"seventeen"), "a negative version": content(b"-5"),
    "a version of 65 digits": content(b"1" * 65), "a version with a quote": content(b'1"2'),
    "a version with a NUL": content(b"1\0007"), "a version that is a dot": content(b"."),
    "two dots as version": content(b".."), "a version beyond ASCII": content("1\u00e9".encode()),
    "a version with $(touch x)": content(b"$(touch${IFS}x)"),
}


def cases(with_slow):
    slow = SLOW if with_slow else {}
    for where, answers in (("version file", {**QUICK, **VERSIONS, **slow}),
                           ("archive", {**QUICK, **slow})):
        for name, answer in answers.items():
            yield f"{where}: {name}", (VERSION if where == "version file" else "archive.p2"), answer


def run_case(scenario, label, part, hostile):
    """Of all requests only those whose path holds `part` meet the hostile answer."""
    server = scenario.server
    scenario.set_up()

    def answer(handler):
        if part in handler.path:
            hostile(handler)
        else:
            body = body_of(handler)
            send(handler, length(handler, len(body)), body)

    server.answer = answer
    begin = time.monotonic()
    outcome = scenario.machine.run(scenario.command(), limit=LIMIT,
                                   environment=scenario.environment())
    took = time.monotonic() - begin
    server.answer = None
    if outcome.status is None:
        return Result(label, "hangs", outcome.end())
    if outcome.status < 0:
        return Result(label, "crash", outcome.end())
    if outcome.status == 0 and not outcome.runs():
        return Result(label, "status 0 for nothing", outcome.end())
    _, foreign = differences(scenario.expected, scenario.tree())
    # The mark of an installation that has not come to its end, as this one has not.
    foreign = [place for place in foreign if not place.endswith("/.unfinished")]
    if foreign and not outcome.runs():
        return Result(label, "foreign files", "; ".join(foreign[:5]))
    again = scenario.start()
    broken, foreign = differences(scenario.expected, scenario.tree())
    if not again.runs():
        return Result(label, "broken", again.end())
    if broken or foreign:
        return Result(label, "not whole", "; ".join((broken + foreign)[:5]))
    return Result(label, "whole", f"{took:.1f} s")
