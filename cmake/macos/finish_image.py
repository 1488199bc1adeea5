#!/usr/bin/env python3
"""Usage: finish_image.py IMAGE...

Makes of each thin Mach-O executable, in its place, what users get: without the symbols that only a linker
needs, exporting nothing, and with an ad-hoc signature, as the linker of the system would have made it.
The names of functions stay, for reports of crashes. What is finished already stays as it is.
"""

import hashlib
import os
import pathlib
import struct
import subprocess
import sys

LC_SYMTAB, LC_DYSYMTAB, LC_SEGMENT_64 = 0x2, 0xB, 0x19
LC_CODE_SIGNATURE = 0x1D
LC_DYLD_INFO, LC_DYLD_INFO_ONLY, LC_DYLD_EXPORTS_TRIE = 0x22, 0x80000022, 0x80000033
N_STAB, N_EXT, N_PEXT = 0xE0, 0x01, 0x10
HEADER_SIZE = 32
# MH_WEAK_DEFINES and MH_BINDS_TO_WEAK: both would have the loader look into every other library.
WEAK_FLAGS = 0x8000 | 0x10000

PAGE = 4096  # of hashes, whatever the architecture's own is
ADHOC, LINKER_SIGNED = 0x2, 0x20000
MAIN_BINARY = 1


class Refused(Exception):
    pass


class Image:
    def __init__(self, content):
        self.content = bytearray(content)
        magic, self.cpu, _, kind, self.count, self.size, self.flags = struct.unpack_from(
            "<7I", self.content)
        if (magic, kind) != (0xFEEDFACF, 2):
            raise Refused("no thin Mach-O executable")

    def commands(self):
        """Each as (command, offset)."""
        at = HEADER_SIZE
        for _ in range(self.count):
            command, size = struct.unpack_from("<2I", self.content, at)
            yield command, at
            at += size

    def find(self, *wanted):
        return next((at for command, at in self.commands() if command in wanted), None)

    def segment(self, name):
        for command, at in self.commands():
            if command == LC_SEGMENT_64 and self.content[at + 8:at + 24].rstrip(b"\0") == name:
                return at
        raise Refused(f"no segment {name.decode()}")

    def get(self, at, form="<I"):
        return struct.unpack_from(form, self.content, at)[0]

    def put(self, at, value, form="<I"):
        struct.pack_into(form, self.content, at, value)


def export_nothing(image):
    """The loader finds nothing by its name any more, and the names that stay are local."""
    for command, at in image.commands():
        if command in (LC_DYLD_INFO, LC_DYLD_INFO_ONLY):
            where = at + 40
        elif command == LC_DYLD_EXPORTS_TRIE:
            where = at + 8
        else:
            continue
        offset, size = image.get(where), image.get(where + 4)
        image.content[offset:offset + size] = bytes(size)
        image.put(where, 0)
        image.put(where + 4, 0)
    image.put(24, image.flags & ~WEAK_FLAGS)

    table = image.find(LC_SYMTAB)
    groups = image.find(LC_DYSYMTAB)
    first_local, locals_, first_external, externals = struct.unpack_from("<4I", image.content,
                                                                         groups + 8)
    if first_external != first_local + locals_:
        raise Refused("the symbols do not stand in their order")
    entries = image.get(table + 8)
    for index in range(first_external, first_external + externals):
        at = entries + 16 * index + 4
        image.content[at] &= ~(N_EXT | N_PEXT) & 0xFF
        image.put(at + 2, 0, "<H")  # weak, or referenced by others
    struct.pack_into("<4I", image.content, groups + 8, first_local, locals_ + externals,
                     first_local + locals_ + externals, 0)


def remove_signature(image):
    """Whatever there is, its load command stays."""
    at = image.find(LC_CODE_SIGNATURE)
    if at is not None:
        del image.content[image.get(at + 8):]
    return at


def add_signature_command(image):
    at = HEADER_SIZE + image.size
    first = min(image.get(segment + 72 + 80 * i + 48)
                for command, segment in image.commands() if command == LC_SEGMENT_64
                for i in range(image.get(segment + 64))
                if image.get(segment + 72 + 80 * i + 48))
    if at + 16 > first:
        raise Refused("no room for a signature's load command")
    struct.pack_into("<4I", image.content, at, LC_CODE_SIGNATURE, 16, 0, 0)
    image.count += 1
    image.size += 16
    image.put(16, image.count)
    image.put(20, image.size)
    return at


def sign(image, identifier):
    command = remove_signature(image)
    if command is None:
        command = add_signature_command(image)
    image.content += bytes(-len(image.content) % 16)
    covered = len(image.content)
    pages = -(-covered // PAGE)

    name = identifier.encode() + b"\0"
    directory_header = 88
    hashes = directory_header + len(name)
    directory_size = hashes + 32 * pages
    length = 12 + 8 + directory_size
    room = -(-length // 16) * 16

    linkedit, text = image.segment(b"__LINKEDIT"), image.segment(b"__TEXT")
    own_page = 0x4000 if image.cpu == 0x0100000C else 0x1000
    file_size = covered + room - image.get(linkedit + 40, "<Q")
    image.put(linkedit + 48, file_size, "<Q")
    image.put(linkedit + 32, -(-file_size // own_page) * own_page, "<Q")
    image.put(command + 8, covered)
    image.put(command + 12, room)

    directory = struct.pack(">9I4BI", 0xFADE0C02, directory_size, 0x20400, ADHOC | LINKER_SIGNED,
                            hashes, directory_header, 0, pages, covered, 32, 2, 0,
                            PAGE.bit_length() - 1, 0)
    directory += struct.pack(">3IQ3Q", 0, 0, 0, 0, image.get(text + 40, "<Q"),
                             image.get(text + 48, "<Q"), MAIN_BINARY)
    directory += name
    for start in range(0, covered, PAGE):
        directory += hashlib.sha256(image.content[start:min(start + PAGE, covered)]).digest()
    blob = struct.pack(">5I", 0xFADE0CC0, length, 1, 0, 20) + directory
    image.content += blob + bytes(room - len(blob))


def is_finished(image):
    return image.get(image.find(LC_DYSYMTAB) + 20) == 0


def finish(path):
    if is_finished(Image(path.read_bytes())):
        return
    subprocess.run(["llvm-strip-14", "-x", str(path)], check=True)
    image = Image(path.read_bytes())
    export_nothing(image)
    sign(image, path.name)
    finished = path.with_name(path.name + ".finished")
    finished.write_bytes(image.content)
    os.chmod(finished, 0o755)
    os.replace(finished, path)


if __name__ == "__main__":
    for argument in sys.argv[1:]:
        try:
            finish(pathlib.Path(argument))
        except Refused as refusal:
            sys.exit(f"{argument}: {refusal}")
