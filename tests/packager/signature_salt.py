#!/usr/bin/env python3
"""Usage: signature_salt.py KEY.pem SIGNATURE

Prints the salt of a signature (RSA-PSS, mask and digest "mixed", 64 bytes of salt) in hexadecimal.
"""
import sys

from Cryptodome.PublicKey import RSA

from check_signature import Mixed, mask

DIGEST = SALT = Mixed.digest_size


def main():
    with open(sys.argv[1], "rb") as key_file:
        key = RSA.import_key(key_file.read())
    with open(sys.argv[2], "rb") as signature_file:
        signature = int.from_bytes(signature_file.read(), "big")
    block = pow(signature, key.e, key.n).to_bytes(key.size_in_bytes(), "big")
    # Masked: padding, 1, salt. Behind it: the digest that the mask is made of, and a last byte.
    masked, digest, last = block[:-DIGEST - 1], block[-DIGEST - 1:-1], block[-1]
    assert last == 0xBC
    plain = bytes(a ^ b for a, b in zip(masked, mask(digest, len(masked))))
    assert plain[-SALT - 1] == 1
    print(plain[-SALT:].hex())


if __name__ == "__main__":
    main()
