#!/usr/bin/env python3
"""Usage: sign_archive.py KEY.pem IN OUT

Appends a signature block to the entries in IN. An independent producer: the digest, the padding
and the RSA arithmetic come from hashlib and PyCryptodome, not from the launcher's own code.
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
        self._sha = hashlib.sha256(data)
        self._keccak = keccak.new(digest_bits=256, data=bytes(data), update_after_digest=True)

    def new(self, data=b""):
        return Mixed(data)

    def update(self, data):
        self._sha.update(data)
        self._keccak.update(bytes(data))

    def digest(self):
        return self._sha.digest() + self._keccak.digest()


def mask(seed, length):
    out = b""
    counter = 0
    while len(out) < length:
        out += Mixed(bytes(seed) + counter.to_bytes(4, "big")).digest()
        counter += 1
    return out[:length]


def main():
    key_path, in_path, out_path = sys.argv[1:]
    with open(key_path, "rb") as key_file:
        key = RSA.import_key(key_file.read())
    with open(in_path, "rb") as in_file:
        entries = in_file.read()
    signature = pss.new(key, mask_func=mask, salt_bytes=64).sign(Mixed(entries))
    records = [b"0", b"qyArcSpBlock_DigitalSignature1", b"1", str(len(entries)).encode(),
               signature.hex().encode()]
    with open(out_path, "wb") as out_file:
        out_file.write(entries + b"".join(record + b"\0" for record in records))


main()
