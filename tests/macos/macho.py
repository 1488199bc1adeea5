"""Mach-O images, read as far as the tests look into them. What LLVM's tools can say of an image is
asked of them; the rest is read here."""

import re
import struct
import subprocess


def run(*command):
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


class Image:
    """A thin image: one architecture."""

    def __init__(self, path):
        self.path = str(path)
        self.architecture = run("llvm-lipo-14", "-archs", self.path).strip()
        with open(path, "rb") as file:
            self.content = file.read()

    def __str__(self):
        return self.path

    def headers(self):
        return run("llvm-objdump-14", "--macho", "--private-headers", self.path)

    def load_commands(self):
        """Each as (name, text of all its fields)."""
        parts = re.split(r"^Load command \d+$", self.headers(), flags=re.M)[1:]
        return [(re.search(r"cmd (\w+)", part)[1], part) for part in parts]

    def libraries(self):
        """The install names, however they are loaded."""
        return [re.search(r"name (\S+)", text)[1] for name, text in self.load_commands()
                if "DYLIB" in name]

    def imports(self):
        """Undefined symbols, each with the library that it is bound to."""
        listing = run("llvm-nm-14", "-m", "-u", self.path).splitlines()
        bound = [re.fullmatch(r"\s*\(undefined\) (?:weak )?external (\S+) \(from (\w+)\)", line)
                 for line in listing]
        unbound = [line for line, match in zip(listing, bound) if match is None]
        assert not unbound, f"{self}: not bound to a library: {unbound}"
        return [(match[1], match[2]) for match in bound]

    def classes(self):
        """Objective-C classes: {name: (superclass, instance methods)}."""
        text = run("llvm-objdump-14", "--macho", "--objc-meta-data", self.path)
        text = text.partition("__objc_classlist) section")[2].partition("\nContents of")[0]
        found = {}
        for part in re.split(r"^[0-9a-f]{16} 0x", text, flags=re.M)[1:]:
            part = part.partition("\nMeta Class")[0]
            superclass = re.search(r"superclass 0x\w+ _OBJC_CLASS_\$_(\w+)", part)[1]
            methods, _, ivars = part.partition("\n                    ivars ")
            names = re.findall(r"^\s+name 0x\w+ (\S+)$", methods, flags=re.M)
            found[names[0]] = (superclass, set(names[1:]))
        return found

    def sections(self):
        """(name, address, file offset, size) of each section."""
        count = struct.unpack_from("<I", self.content, 16)[0]
        at = 32
        for _ in range(count):
            command, size = struct.unpack_from("<II", self.content, at)
            if command == 0x19:  # LC_SEGMENT_64
                sections = struct.unpack_from("<I", self.content, at + 64)[0]
                for i in range(sections):
                    name, _, address, length, offset = struct.unpack_from(
                        "<16s16sQQI", self.content, at + 72 + 80 * i)
                    yield name.rstrip(b"\0").decode(), address, offset, length
            at += size

    def text_at(self, address):
        for _, start, offset, length in self.sections():
            if start <= address < start + length:
                at = offset + address - start
                return self.content[at:self.content.index(b"\0", at)].decode()
        raise ValueError(f"{self}: nothing at address {address:#x}")

    def sent_selectors(self):
        """What is sent to other objects, or named by @selector()."""
        for name, _, offset, length in self.sections():
            if name == "__objc_selrefs":
                return {self.text_at(address) for address in
                        struct.unpack_from(f"<{length // 8}Q", self.content, offset)}
        return set()

    def signature_offset(self):
        """Where the code signature stands; None without one."""
        for name, text in self.load_commands():
            if name == "LC_CODE_SIGNATURE":
                return int(re.search(r"dataoff (\d+)", text)[1])
        return None


def slices(path, folder):
    """The images of a universal or thin file; those of a universal one are put into `folder`."""
    with open(path, "rb") as file:
        is_universal = file.read(4) == b"\xca\xfe\xba\xbe"
    if is_universal:
        for architecture in run("llvm-lipo-14", "-archs", str(path)).split():
            thin = folder / f"{path.name}.{architecture}"
            run("llvm-lipo-14", str(path), "-thin", architecture, "-output", str(thin))
            yield Image(thin)
    else:
        yield Image(path)


def stub_exports(path, architecture):
    """The symbols that a .tbd file of ours exports for an architecture."""
    with open(path, encoding="utf-8") as file:
        text = file.read()
    exported = set()
    for part in text.partition("exports:")[2].split("  - targets:")[1:]:
        if f"{architecture}-macos" not in part.partition("]")[0]:
            continue
        for kind, names in re.findall(r"([\w-]+): \[([^]]*)\]", part):
            names = [name.strip() for name in names.split(",")]
            if kind == "symbols":
                exported.update(names)
            if kind == "objc-classes":
                exported.update(f"_OBJC_{of}_$_{name}" for of in ("CLASS", "METACLASS")
                                for name in names)
    return exported
