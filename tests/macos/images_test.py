"""What the macOS images are made of, read from the files.

Usage: images_test.py ROOT IMAGE..., with the top of the sources and what scripts/build-macos.sh
made of them; an image is thin or universal.
"""

import functools
import hashlib
import pathlib
import re
import struct
import sys
import tempfile
import unittest

import macho
import pages

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "harness"))
import own_folder  # noqa: E402

own_folder.use()

ROOT = pathlib.Path(sys.argv[1])
FILES = [pathlib.Path(file).absolute() for file in sys.argv[2:]]
SDK = ROOT / "platform" / "macos-sdk"

SYSTEM = "/usr/lib/libSystem.B.dylib"
FRAMEWORKS = "/System/Library/Frameworks"
LAUNCHER_LIBRARIES = {
    f"{FRAMEWORKS}/AppKit.framework/Versions/C/AppKit",
    f"{FRAMEWORKS}/CoreFoundation.framework/Versions/A/CoreFoundation",
    f"{FRAMEWORKS}/CoreGraphics.framework/Versions/A/CoreGraphics",
    f"{FRAMEWORKS}/Foundation.framework/Versions/C/Foundation",
    "/usr/lib/libobjc.A.dylib",
    SYSTEM,
}
WINDOW_LIBRARIES = LAUNCHER_LIBRARIES
STUBS = {path.stem: path for path in [*SDK.glob("Frameworks/*/*.tbd"), *SDK.glob("lib/*.tbd")]}

# The classes by which the system calls the launcher, and the messages that it sends them.
CLASSES = {
    "AppRunner": ("NSObject", {"runThread:"}),
    "Downloader": ("NSObject", {"startDownloadingURL:fromURL:toFile:",
                                "download:didReceiveResponse:",
                                "download:didReceiveDataOfLength:",
                                "downloadDidFinish:",
                                "download:didFailWithError:"}),
    "FailureButtons": ("NSObject", {"closeWindow:", "copyText:", "showLog:"}),
    "FailureView": ("NSView", {"acceptsFirstMouse:", "hitTest:", "mouseDown:"}),
    "NoticeQuitter": ("NSObject", {"quit:"}),
    "LateRequests": ("NSObject", {"look"}),
    "QuilloryDelegate": ("NSObject", {"applicationShouldTerminate:",
                                      "applicationDidFinishLaunching:",
                                      "application:openFiles:",
                                      "applicationSupportsSecureRestorableState:"}),
    "Redrawer": ("NSObject", {"runThread:"}),
    "SessionDownload": ("NSObject", {"initWithRequest:delegate:",
                                     "setDestination:allowOverwrite:", "cancel",
                                     "URLSession:task:willPerformHTTPRedirection:newRequest:"
                                     "completionHandler:",
                                     "URLSession:downloadTask:didWriteData:totalBytesWritten:"
                                     "totalBytesExpectedToWrite:",
                                     "URLSession:downloadTask:didFinishDownloadingToURL:",
                                     "URLSession:task:didCompleteWithError:"}),
    "SessionMessage": ("NSObject", {"dealloc"}),
    "SplashView": ("NSView", {"initWithFrame:", "drawRect:", "dealloc"}),
    "URLHandler": ("NSObject", {"init", "handleURLEvent:withReplyEvent:", "getRequestedURL"}),
}

WINDOW_CLASSES = {
    "UpdateContentView": ("NSView", {"initWithFrame:", "drawRect:", "dealloc", "mouseDown:",
                                     "acceptsFirstMouse:"}),
}

# Messages that the compiler sends by functions of the run-time library.
BY_FUNCTION = {
    "alloc": "_objc_alloc",
    "init": "_objc_alloc_init",
    "retain": "_objc_retain",
    "release": "_objc_release",
    "autorelease": "_objc_autorelease",
}


def declared_selectors():
    """The selectors of every method that our headers declare."""
    for header in SDK.glob("include/**/*.h"):
        text = re.sub(r"//.*|__attribute__\(\(.*?\)\)\)|, \.\.\.", "", header.read_text("utf-8"))
        for method in re.findall(r"^[-+] \([^)]*\)([^;]*);", text, flags=re.M):
            parts = re.findall(r"(\w+:)\(", method)
            yield "".join(parts) if parts else method.strip()


def for_each(kind):
    """Runs a test for each image of a kind, of which there must be one."""
    def decorate(test):
        @functools.wraps(test)
        def run(self):
            images = getattr(self, kind)
            self.assertTrue(images)
            for image in images:
                with self.subTest(image=str(image)):
                    test(self, image)
        return run
    return decorate


class Images(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.TemporaryDirectory()
        cls.images = [image for file in FILES
                      for image in macho.slices(file, pathlib.Path(cls.folder.name))]
        cls.launchers = [image for image in cls.images
                         if pathlib.Path(image.path).name.startswith("launcher")]
        cls.windows = [image for image in cls.images
                       if pathlib.Path(image.path).name.startswith("quillory-update-window")]

    def with_cocoa(self, architecture):
        """Every image of an architecture that calls Cocoa, who all have the same declarations."""
        return [image for image in self.launchers + self.windows
                if image.architecture == architecture]

    @classmethod
    def tearDownClass(cls):
        cls.folder.cleanup()

    def test_joined_files_hold_both_architectures(self):
        for file in FILES:
            with self.subTest(file=str(file)):
                folder = file.parent.parent.name
                expected = {folder} if folder in ("x86_64", "arm64") else {"x86_64", "arm64"}
                architectures = macho.run("llvm-lipo-14", "-archs", str(file)).split()
                self.assertEqual(expected, set(architectures))

    @for_each("images")
    def test_is_a_complete_executable_that_loads_at_any_address(self, image):
        header = image.headers().partition("Load command")[0]
        self.assertRegex(header, r" EXECUTE .* NOUNDEFS DYLDLINK TWOLEVEL .*PIE")

    @for_each("images")
    def test_starts_at_main(self, image):
        names = [name for name, _ in image.load_commands()]
        self.assertEqual(1, names.count("LC_MAIN"))
        self.assertNotIn("LC_UNIXTHREAD", names)

    @for_each("images")
    def test_runs_from_macos_11_on(self, image):
        versions = [text for name, text in image.load_commands()
                    if name in ("LC_BUILD_VERSION", "LC_VERSION_MIN_MACOSX")]
        self.assertEqual(1, len(versions))
        self.assertRegex(versions[0], r"platform macos\n(.*\n)*\s+minos 11\.0\n")

    @for_each("images")
    def test_loads_exactly_the_expected_libraries(self, image):
        expected = {SYSTEM}
        if image in self.launchers:
            expected = LAUNCHER_LIBRARIES
        if image in self.windows:
            expected = WINDOW_LIBRARIES
        self.assertEqual(sorted(expected), sorted(image.libraries()))

    @for_each("images")
    def test_imports_nothing_that_no_library_exports(self, image):
        for symbol, library in image.imports():
            if library != "libSystem":  # The linker knows its real exports.
                exported = macho.stub_exports(STUBS[library], image.architecture)
                self.assertIn(symbol, exported, library)

    @for_each("launchers")
    def test_stubs_name_only_what_is_imported(self, image):
        imported = {symbol for other in self.with_cocoa(image.architecture)
                    for symbol, _ in other.imports()}
        for library, path in STUBS.items():
            for symbol in macho.stub_exports(path, image.architecture):
                other = symbol.replace("_METACLASS_", "_CLASS_")
                self.assertTrue(imported & {symbol, other}, f"{symbol} of {library}")

    @for_each("launchers")
    def test_headers_declare_only_what_is_sent(self, image):
        images = self.with_cocoa(image.architecture)
        selectors = set(declared_selectors())
        self.assertLess(80, len(selectors))
        sent, imported = set(), set()
        for other in images:
            sent |= other.sent_selectors()
            sent.update(*(methods for _, methods in other.classes().values()))
            imported |= {symbol for symbol, _ in other.imports()}
        unused = {selector for selector in selectors - sent
                  if BY_FUNCTION.get(selector) not in imported}
        self.assertEqual(set(), unused)

    @for_each("launchers")
    def test_has_the_classes_that_the_system_calls(self, image):
        self.check_classes(CLASSES, image.classes())

    @for_each("windows")
    def test_the_window_has_the_classes_that_the_system_calls(self, image):
        self.check_classes(WINDOW_CLASSES, image.classes())

    def check_classes(self, expected, classes):
        self.assertEqual(expected.keys(), classes.keys())
        for name, (superclass, methods) in expected.items():
            self.assertEqual(superclass, classes[name][0])
            self.assertLessEqual(methods, classes[name][1])

    @for_each("images")
    def test_holds_no_marker(self, image):
        tail = pages.marker_of(ROOT, "wrapper-tail.md")
        params = pages.marker_of(ROOT, "parameters-file.md")
        self.assertEqual((128, 64), (len(tail), len(params)))
        self.assertFalse(tail in image.content)
        self.assertFalse(params in image.content)

    @for_each("images")
    def test_holds_no_path_of_the_machine_that_built_it(self, image):
        self.assertFalse(bytes(ROOT) in image.content)
        self.assertFalse(b"quillory-macos" in image.content)

    def test_the_packager_comes_with_what_it_packs(self):
        for file in FILES:
            if file.name == "quillory-pack":
                jar = file.parent.parent / "share" / "quillory" / "updater.jar"
                self.assertTrue(jar.exists(), f"no {jar}")

    @for_each("images")
    def test_names_itself(self, image):
        """Newer systems load no image without a UUID of its own."""
        uuids = [re.search(r"uuid ([0-9A-F-]+)", text)[1] for name, text in image.load_commands()
                 if name == "LC_UUID"]
        self.assertEqual(1, len(uuids))
        self.assertNotEqual("", uuids[0].strip("0-"))
        others = [text for other in self.images if other is not image
                  for _, text in other.load_commands() if uuids[0] in text]
        self.assertEqual([], others)

    @for_each("images")
    def test_looks_for_libraries_nowhere_else(self, image):
        names = [name for name, _ in image.load_commands()]
        for command in ("LC_RPATH", "LC_DYLD_ENVIRONMENT", "LC_LOAD_WEAK_DYLIB",
                        "LC_REEXPORT_DYLIB"):
            self.assertNotIn(command, names)

    @for_each("images")
    def test_exports_nothing(self, image):
        """A symbol of ours that has the name of another library's could take its place there."""
        defined = macho.run("llvm-nm-14", "-g", "--defined-only", image.path)
        self.assertEqual([], re.findall(r"^[0-9a-f]{16} .*", defined, flags=re.M))
        exported = macho.run("llvm-objdump-14", "--macho", "--exports-trie", image.path)
        self.assertNotIn("0x", exported.partition("Exports trie:")[2])
        header = image.headers().partition("Load command")[0]
        self.assertNotIn("WEAK_DEFINES", header)
        self.assertNotIn("BINDS_TO_WEAK", header)

    @for_each("images")
    def test_is_stripped_of_what_only_a_linker_needs(self, image):
        kinds = set(re.findall(r"^[0-9a-f]{16} (.) ", macho.run("llvm-nm-14", "-a", image.path),
                               flags=re.M))
        self.assertIn("t", kinds, "the names of functions stay, for reports of crashes")
        self.assertNotIn("-", kinds)
        stripped = pathlib.Path(self.folder.name) / "stripped"
        macho.run("llvm-strip-14", "-x", image.path, "-o", str(stripped))
        self.assertEqual("", macho.run("llvm-nm-14", "--defined-only", str(stripped)))

    @for_each("images")
    def test_signature_covers_every_page(self, image):
        signature = image.signature_offset()
        self.assertIsNotNone(signature, "the system starts no arm64 image without one")
        self.check_pages(image.content, signature)
        self.check_end(image, signature)

    def check_end(self, image, signature):
        """Nothing stands behind the signature, and the last segment holds it."""
        size = int(re.search(r"datasize (\d+)", dict(image.load_commands())["LC_CODE_SIGNATURE"])[1])
        self.assertEqual(len(image.content), signature + size)
        self.assertLessEqual(struct.unpack_from(">I", image.content, signature + 4)[0], size)
        last = [text for name, text in image.load_commands() if "segname __LINKEDIT" in text][0]
        offset, length, room = (int(re.search(rf"\b{field} (0x[0-9a-f]+|\d+)", last)[1], 0)
                                for field in ("fileoff", "filesize", "vmsize"))
        self.assertEqual(len(image.content), offset + length)
        self.assertLessEqual(length, room)

    def check_pages(self, content, signature):
        magic, _, blobs, kind, offset = struct.unpack_from(">5I", content, signature)
        self.assertEqual((0xFADE0CC0, 0), (magic, kind))
        self.assertGreaterEqual(blobs, 1)
        directory = signature + offset
        fields = struct.unpack_from(">9I4B", content, directory)
        self.assertEqual(0xFADE0C02, fields[0])
        hashes, _, _, count, covered = fields[4:9]
        hash_size, hash_kind, _, page_bits = fields[9:13]
        self.assertEqual((signature, 32, 2), (covered, hash_size, hash_kind))  # all of it, SHA-256
        pages = [content[at:min(at + (1 << page_bits), covered)]
                 for at in range(0, covered, 1 << page_bits)]
        self.assertEqual(count, len(pages))
        for i, page in enumerate(pages):
            at = directory + hashes + 32 * i
            self.assertEqual(hashlib.sha256(page).digest(), content[at:at + 32], f"page {i}")


if __name__ == "__main__":
    if not any(file.exists() for file in FILES):
        print("skipped: nothing is built for macOS")
        sys.exit(77)
    unittest.main(argv=[sys.argv[0], "--verbose"])
