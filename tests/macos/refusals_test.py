"""What the macOS build refuses: mistakes that would show on a Mac only, were they let through.

Usage: refusals_test.py BUILD, with a folder that scripts/build-macos.sh has built. Sources are
compiled as there, with the options of a Cocoa file of the launcher.
"""

import json
import os
import pathlib
import re
import shlex
import subprocess
import sys
import tempfile
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "harness"))
import own_folder  # noqa: E402

own_folder.use()

BUILD = pathlib.Path(sys.argv[1])

HEADERS = '#import <Cocoa/Cocoa.h>\n#include <unistd.h>\n'


def cached(name):
    """A variable of the build's."""
    text = (BUILD / "CMakeCache.txt").read_text("utf-8")
    return re.search(rf"^{name}:\w+=(.*)$", text, flags=re.M)[1]


def environment(folder):
    """Zig finds its libraries where the build has them, and leaves nothing else behind."""
    cache = pathlib.Path(cached("QUILLORY_ZIG")).parent.parent / "zig-cache"
    return os.environ | {"ZIG_GLOBAL_CACHE_DIR": str(cache), "ZIG_LOCAL_CACHE_DIR": folder}


def options_of_the_build():
    """The compiler with its options, without what names a file."""
    for entry in json.loads((BUILD / "compile_commands.json").read_text("utf-8")):
        if entry["file"].endswith("ui/url_events_cocoa.mm"):
            words = shlex.split(entry["command"])
            while "-o" in words:
                at = words.index("-o")
                del words[at:at + 2]
            return [word for word in words if word != "-c" and not word.endswith(".mm")]
    raise LookupError("the build has no url_events_cocoa.mm")


def link_options():
    frameworks = []
    for name in ("AppKit", "Foundation", "CoreFoundation", "CoreGraphics"):
        frameworks += ["-framework", name]
    return shlex.split(cached("CMAKE_EXE_LINKER_FLAGS")) + frameworks + ["-lobjc"]


class Build(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.TemporaryDirectory()
        self.addCleanup(self.folder.cleanup)

    def build(self, source, *options):
        path = pathlib.Path(self.folder.name) / "source.mm"
        path.write_text(HEADERS + source, "utf-8")
        made = subprocess.run([*options_of_the_build(), str(path), *options], cwd=BUILD,
                              env=environment(self.folder.name), capture_output=True, text=True,
                              check=False)
        return made.returncode == 0, made.stderr

    def compile(self, body):
        return self.build(f"void function() {{ {body} }}\nvoid function();\n", "-c", "-o",
                          f"{self.folder.name}/object")

    def link(self, source):
        return self.build(source, "-o", f"{self.folder.name}/program", *link_options())

    def assert_compiles(self, body):
        is_good, errors = self.compile(body)
        self.assertTrue(is_good, errors)

    def assert_refuses(self, body, reason):
        is_good, errors = self.compile(body)
        self.assertFalse(is_good, "compiled: " + body)
        self.assertRegex(errors, reason)

    def test_takes_a_right_message(self):
        self.assert_compiles("[[NSThread currentThread] cancel];")

    def test_refuses_a_misspelt_message_to_an_object_of_known_class(self):
        self.assert_refuses("[[NSThread currentThread] cancell];", "'-cancell' not found")

    def test_refuses_a_misspelt_message_to_a_class(self):
        self.assert_refuses("[NSThread curentThread];", r"'\+curentThread' not found")

    def test_refuses_a_misspelt_message_to_an_object_of_any_class(self):
        self.assert_compiles("id item = nil; [item setTitle:nil];")
        self.assert_refuses("id item = nil; [item setTitel:nil];", "'-setTitel:' not found")

    def test_refuses_a_selector_that_nobody_declares(self):
        self.assert_compiles("(void)@selector(setTitle:);")
        self.assert_refuses("(void)@selector(setTitel:);", "undeclared selector 'setTitel:'")

    def test_refuses_an_argument_of_another_type(self):
        self.assert_compiles("[NSThread sleepForTimeInterval:1];")
        self.assert_refuses('[NSThread sleepForTimeInterval:@"1"];', "cannot initialize")

    def test_refuses_a_class_that_is_not_declared(self):
        self.assert_refuses("[NSScreenSaver sharedSaver];", "undeclared identifier 'NSScreenSaver'")

    def test_refuses_a_format_that_does_not_fit_its_argument(self):
        self.assert_compiles('NSLog(@"%d", 1);')
        self.assert_refuses('NSLog(@"%s", 1);', "format specifies type")

    def test_refuses_a_misspelt_call_of_the_c_library(self):
        self.assert_compiles("(void)getpid();")
        self.assert_refuses("(void)getpidd();", "undeclared identifier 'getpidd'")

    def test_refuses_a_call_that_only_linux_has(self):
        self.assert_compiles("int ends[2]; (void)pipe(ends);")
        self.assert_refuses("int ends[2]; (void)pipe2(ends, 0);", "undeclared identifier 'pipe2'")

    def test_links_what_the_libraries_export(self):
        is_good, errors = self.link("int main() { [[NSThread currentThread] cancel]; }\n")
        self.assertTrue(is_good, errors)

    def test_links_no_call_that_the_c_library_lacks(self):
        is_good, errors = self.link('extern "C" int pipe2(int*, int);\n'
                                    "int main() { return pipe2(nullptr, 0); }\n")
        self.assertFalse(is_good)
        self.assertRegex(errors, "undefined.*_pipe2")

    def test_links_no_class_that_the_stubs_lack(self):
        is_good, errors = self.link("@interface NSScreenSaver : NSObject\n@end\n"
                                    "int main() { [NSScreenSaver class]; }\n")
        self.assertFalse(is_good)
        self.assertRegex(errors, r"undefined.*_OBJC_CLASS_\$_NSScreenSaver")

    def test_links_no_symbol_that_the_stubs_lack(self):
        is_good, errors = self.link('extern "C" void NSBeep();\nint main() { NSBeep(); }\n')
        self.assertFalse(is_good)
        self.assertRegex(errors, "undefined.*_NSBeep")


if __name__ == "__main__":
    if not BUILD.exists():
        print("skipped: nothing is built for macOS")
        sys.exit(77)
    unittest.main(argv=[sys.argv[0], "--verbose"])
