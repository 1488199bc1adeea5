#!/usr/bin/env python3
"""Usage: undo_delta.py DELTA FOLDER OUT

Undoes a delta from the files in FOLDER. A reader of its own, written from docs/formats/delta.md: the
dictionary goes to the decoder of Python as chunks that are not compressed.
"""
import hashlib
import lzma
import pathlib
import sys


def main():
    delta, folder, out = map(pathlib.Path, sys.argv[1:])
    data = delta.read_bytes()
    at = 0

    def record():
        nonlocal at
        end = data.index(b"\0", at)
        value, at = data[at:end].decode(), end + 1
        return value

    def content():
        path, length, sha256 = record(), int(record()), record()
        found = (folder / path).read_bytes()
        assert len(found) == length and hashlib.sha256(found).hexdigest() == sha256, path
        return found

    assert record() == "1"
    component, before, after, base = record(), record(), record(), record()
    restored_length, restored_sha256, window = int(record()), record(), int(record())
    dictionary = b"".join(content() for _ in range(int(record())))
    copies = [(int(record()), content()) for _ in range(int(record()))]

    decoder = lzma.LZMADecompressor(lzma.FORMAT_RAW, filters=[
        {"id": lzma.FILTER_LZMA2, "dict_size": window}])
    dropped = b""
    for start in range(0, len(dictionary), 65536):
        piece = dictionary[start:start + 65536]
        control = b"\x02" if start else b"\x01"
        dropped += decoder.decompress(control + (len(piece) - 1).to_bytes(2, "big") + piece)
    assert dropped == dictionary
    stream = decoder.decompress(data[at:])
    assert decoder.eof and not decoder.unused_data

    restored = b""
    for length, copy in copies:
        restored, stream = restored + stream[:length] + copy, stream[length:]
    restored += stream
    assert len(restored) == restored_length
    assert hashlib.sha256(restored).hexdigest() == restored_sha256
    out.write_bytes(restored)
    print(component, before, after, base, window, len(dictionary), len(copies))


main()
