#!/usr/bin/env python3
"""Usage: sign_mixed.py FOLDER [identity|lists]

Makes fresh RSA keys and the signatures in FOLDER (tests/data/signatures); with "identity" only the
two files of that name, with "lists" only those of release lists, and without either the others. Needs Python 3 and
openssl. Written from the published descriptions of Keccak and of EMSA-PSS (RFC 8017), without the
launcher's own code, so that it is a witness of its own. The private keys are thrown away.
"""
import hashlib
import os
import subprocess
import sys
import tempfile

MASK64 = (1 << 64) - 1

# What is signed: a folder "lib" and in it a file "hello.txt" of five bytes.
BODY = b"1\0lib\0" + b"0\0lib/hello.txt\0" + b"5\0hello"

# The same behind an entry that says what the archive is.
IDENTITY = b"0\0qyArcSpBlock_Component1;JRE;17;linux\0" + b"0\0"

# The release list of docs/formats/release-list.md.
BEFORE_KEYS = ["1", "Hello", "stable", "linux", "7", "1767225600", "1775001600", "2.31", "0", "", "0",
               "", "2", "1767225600", "7", "100", "1", "3f" * 32, "3", "- Opens *faster*\n"]
BEHIND_KEYS = ["1", "application", "Hello", "4", "1.3",
               "Quillory-Hello-4-archive.p2.l2", "1000", "a1" * 32, "2000", "b2" * 32, "1900",
               "1", "2", "c3" * 32, "Quillory-Hello-4-from-2-delta", "30", "d4" * 32, "70000"]


def release_list(*next_keys):
    values = BEFORE_KEYS + [str(len(next_keys)), *next_keys] + BEHIND_KEYS
    return b"".join(value.encode() + b"\0" for value in values)


def signature_block(signed, signature):
    values = ["0", "qyArcSpBlock_DigitalSignature1", "1", str(len(signed)), signature.hex()]
    return b"".join(value.encode() + b"\0" for value in values)


def rotate(lane, count):
    return ((lane << count) | (lane >> (64 - count))) & MASK64 if count else lane


def keccak_f(lanes):
    lfsr = 1
    for _ in range(24):
        parity = [lanes[x] ^ lanes[x + 5] ^ lanes[x + 10] ^ lanes[x + 15] ^ lanes[x + 20]
                  for x in range(5)]
        for i in range(25):
            lanes[i] ^= parity[(i + 4) % 5] ^ rotate(parity[(i + 1) % 5], 1)
        x, y, moving = 1, 0, lanes[1]
        for t in range(24):
            x, y = y, (2 * x + 3 * y) % 5
            at = x + 5 * y
            lanes[at], moving = rotate(moving, (t + 1) * (t + 2) // 2 % 64), lanes[at]
        for row in range(0, 25, 5):
            old = lanes[row:row + 5]
            for x in range(5):
                lanes[row + x] = old[x] ^ (~old[(x + 1) % 5] & MASK64 & old[(x + 2) % 5])
        for j in range(7):
            if lfsr & 1:
                lanes[0] ^= 1 << ((1 << j) - 1)
            lfsr = lfsr << 1 ^ (0x171 if lfsr & 0x80 else 0)


def keccak256(data):
    rate = 136
    padded = bytearray(data) + b"\x01" + bytes(-(len(data) + 1) % rate)
    padded[-1] |= 0x80
    lanes = [0] * 25
    for start in range(0, len(padded), rate):
        for i in range(rate // 8):
            at = start + 8 * i
            lanes[i] ^= int.from_bytes(padded[at:at + 8], "little")
        keccak_f(lanes)
    return b"".join(lane.to_bytes(8, "little") for lane in lanes)[:32]


def mixed(data):
    return hashlib.sha256(data).digest() + keccak256(data)


def mask(seed, length):
    blocks = (mixed(seed + counter.to_bytes(4, "big")) for counter in range(length // 64 + 1))
    return b"".join(blocks)[:length]


class Key:
    def __init__(self, bits):
        with tempfile.TemporaryDirectory() as folder:
            pem = os.path.join(folder, "key.pem")
            openssl("genrsa", "-out", pem, str(bits))
            private = openssl("rsa", "-in", pem, "-traditional", "-outform", "DER")
            self.public_der = openssl("rsa", "-in", pem, "-pubout", "-outform", "DER")
        _, self.n, _, self.d = integers(private)[:4]

    def raw(self, encoded):
        size = (self.n.bit_length() + 7) // 8
        return pow(int.from_bytes(encoded, "big"), self.d, self.n).to_bytes(size, "big")

    def sign_pss(self, data, salt_length=64):
        bits = self.n.bit_length() - 1
        length = (bits + 7) // 8
        salt = os.urandom(salt_length)
        digest = mixed(bytes(8) + mixed(data) + salt)
        block = bytes(length - salt_length - 66) + b"\x01" + salt
        masked = bytearray(a ^ b for a, b in zip(block, mask(digest, len(block))))
        masked[0] &= 0xFF >> (8 * length - bits)
        return self.raw(bytes(masked) + digest + b"\xbc")

    def sign_pkcs1(self, data):
        oid = bytes.fromhex("06052b0e030234")  # 1.3.14.3.2.52
        algorithm = b"\x30" + bytes([len(oid) + 2]) + oid + b"\x05\x00"
        info = algorithm + b"\x04\x40" + mixed(data)
        info = b"\x30" + bytes([len(info)]) + info
        size = (self.n.bit_length() + 7) // 8
        return self.raw(b"\x00\x01" + b"\xff" * (size - len(info) - 3) + b"\x00" + info)


def openssl(*arguments):
    return subprocess.run(["openssl", *arguments], check=True, capture_output=True).stdout


def integers(der):
    """The integers of a DER sequence."""
    def header(at):
        length, at = der[at + 1], at + 2
        if length < 0x80:
            return length, at
        count = length & 0x7F
        return int.from_bytes(der[at:at + count], "big"), at + count

    values = []
    _, at = header(0)
    while at < len(der):
        length, at = header(at)
        values.append(int.from_bytes(der[at:at + length], "big"))
        at += length
    return values


def write_lists(write):
    keys = {name: Key(1040) for name in ("working", "reserve", "next")}
    for name, key in keys.items():
        write("key_" + name, key.public_der)
    for name, signed, then in [
            ("list", release_list(), "reserve"),
            ("rotation", release_list(keys["next"].public_der.hex()), "next")]:
        first = keys["working"].sign_pss(signed)
        write(name + "_working", first)
        write(name + "_then_" + then, keys[then].sign_pss(signed + signature_block(signed, first)))
    write("rotation_next", keys["next"].sign_pss(release_list(keys["next"].public_der.hex())))


def main():
    folder = sys.argv[1]

    def write(name, data):
        with open(os.path.join(folder, name + ".hex"), "w", encoding="ascii") as file:
            file.write(data.hex())

    assert keccak256(b"").hex().startswith("c5d2460186f7233c")
    if sys.argv[2:] == ["identity"]:
        key = Key(2048)
        write("key_identity", key.public_der)
        write("pss_identity", key.sign_pss(IDENTITY + BODY))
        return
    if sys.argv[2:] == ["lists"]:
        write_lists(write)
        return
    keys = {name: Key(bits) for name, bits in
            [("2048", 2048), ("other", 2048), ("1040", 1040), ("1024", 1024)]}
    for name, key in keys.items():
        write("key_" + name, key.public_der)
    write("pss_2048", keys["2048"].sign_pss(BODY))
    write("pss_1040", keys["1040"].sign_pss(BODY))
    write("pss_of_nothing_2048", keys["2048"].sign_pss(b""))
    write("pss_salt_32_2048", keys["2048"].sign_pss(BODY, 32))
    write("pss_salt_62_1024", keys["1024"].sign_pss(BODY, 62))
    write("pkcs1_2048", keys["2048"].sign_pkcs1(BODY))


main()
