#!/usr/bin/env python3
"""Usage: check_signature.py KEY.pem ARCHIVE

Prints "good" when the archive's last entry is a signature of all bytes before it, else "bad". An
independent consumer: digest, padding and RSA come from hashlib and PyCryptodome.
"""
import hashlib
import sys

from Cryptodome.Hash import keccak
from Cryptodome.PublicKey import RSA
from Cryptodome.Signature import pss


class Mixed:
    """SHA-256 followed by Keccak-256, with the interface that the padding code expects."""

    digest_size = 64

    def __init__(self, data=b""):
        self.data = bytes(data)

    def new(self, data=b""):
        return Mixed(data)

    def update(self, data):
        self.data += bytes(data)

    def digest(self):
        second = keccak.new(digest_bits=256, data=self.data)
        return hashlib.sha256(self.data).digest() + second.digest()


def mask(seed, length):
    out = b""
    for counter in range(length // 64 + 1):
        out += Mixed(bytes(seed) + counter.to_bytes(4, "big")).digest()
    return out[:length]


def main():
    with open(sys.argv[1], "rb") as key_file:
        key = RSA.import_key(key_file.read()).publickey()
    with open(sys.argv[2], "rb") as archive_file:
        archive = archive_file.read()
    start = archive.rindex(b"0\0qyArcSpBlock_DigitalSignature1\0")
    _, _, _, offset, signature, _ = archive[start:].split(b"\0")
    try:
        assert int(offset) == start
        pss.new(key, mask_func=mask, salt_bytes=64).verify(Mixed(archive[:start]),
                                                          bytes.fromhex(signature.decode()))
        print("good")
    except (ValueError, AssertionError):
        print("bad")


if __name__ == "__main__":
    main()
