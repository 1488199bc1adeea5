#!/usr/bin/env python3
"""Usage: make_application.py FOLDER

Makes the jars of two versions of an application, in FOLDER/1 and FOLDER/2: some hundred jars, 33 MB in
all, of Debian's libraries and the class library of Java; and what a minor release does to them. Every
third jar is built anew: its name has another version, its entries have new times, in its manifest the
version is another one, one class in ten has changed in one to three places, by up to 60 bytes, and one
class is new. Always the same.
"""
import glob
import io
import os
import pathlib
import random
import subprocess
import sys
import zipfile

TOTAL = 33_000_000
MODULES = ["java.desktop", "jdk.compiler", "java.xml", "jdk.javadoc", "jdk.localedata",
           "java.security.jgss", "jdk.jshell", "jdk.xml.dom", "java.sql", "java.logging"]


def debian_jars():
    """Each library once, by what is in it."""
    seen = {}
    for path in sorted(glob.glob("/usr/share/java/*.jar")):
        target = os.path.realpath(path)
        seen.setdefault(target, path)
    return [(os.path.basename(path), pathlib.Path(target).read_bytes())
            for target, path in seen.items()]


def module_jar(jdk, module):
    """The classes of a module as a jar."""
    out = io.BytesIO()
    jmod = (jdk / "jmods" / (module + ".jmod")).read_bytes()[4:]  # behind the mark is a zip
    with zipfile.ZipFile(io.BytesIO(jmod)) as source, zipfile.ZipFile(out, "w", 8) as jar:
        jar.writestr(entry("META-INF/MANIFEST.MF", 1), f"Manifest-Version: 1.0\n"
                     f"Implementation-Title: {module}\nImplementation-Version: 17\n\n")
        for info in source.infolist():
            if info.filename.startswith("classes/"):
                jar.writestr(entry(info.filename[8:], 1), source.read(info))
    return module + ".jar", out.getvalue()


def entry(name, version):
    info = zipfile.ZipInfo(name, (2024 + version, 3, 4, 5, 6, 8))
    info.compress_type = zipfile.ZIP_DEFLATED
    return info


def changed(content, rng):
    for _ in range(rng.randint(1, 3)):
        at = rng.randrange(len(content) or 1)
        content = (content[:at] + rng.randbytes(rng.randint(1, 60)) +
                   content[at + rng.randint(0, 60):])
    return content


def rebuilt(jar, rng):
    out = io.BytesIO()
    with zipfile.ZipFile(io.BytesIO(jar)) as source, zipfile.ZipFile(out, "w", 8) as made:
        classes = [i.filename for i in source.infolist() if i.filename.endswith(".class")]
        for info in source.infolist():
            content = source.read(info)
            if info.filename == "META-INF/MANIFEST.MF":
                content = content.rstrip() + b"\r\nX-Build: 4711\r\n\r\n"
            elif info.filename.endswith(".class") and rng.random() < 0.1:
                content = changed(content, rng)
            made.writestr(entry(info.filename, 2), content)
        if classes:
            name = rng.choice(classes)
            content = source.read(name)
            for _ in range(max(1, len(content) // 200)):
                content = changed(content, rng)
            made.writestr(entry(name[:-6] + "2.class", 2), content)
    return out.getvalue()


def main():
    folder = pathlib.Path(sys.argv[1])
    java = subprocess.run(["readlink", "-f", "/usr/bin/javac"], check=True, capture_output=True,
                          text=True).stdout.strip()
    jdk = pathlib.Path(java).parent.parent
    jars = debian_jars()
    for module in MODULES:
        more = module_jar(jdk, module)
        if sum(len(jar) for _, jar in jars) + len(more[1]) < TOTAL:
            jars.append(more)
    rng = random.Random(1)
    for version in "12":
        (folder / version).mkdir(parents=True)
    for number, (name, jar) in enumerate(jars):
        (folder / "1" / name).write_bytes(jar)
        is_rebuilt = number % 3 == 0
        (folder / "2" / (name[:-4] + "-2.jar" if is_rebuilt else name)).write_bytes(
            rebuilt(jar, rng) if is_rebuilt else jar)
    print(f"{len(jars)} jars, {sum(len(jar) for _, jar in jars) / 1e6:.1f} MB, "
          f"{len(range(0, len(jars), 3))} of them rebuilt")


main()
