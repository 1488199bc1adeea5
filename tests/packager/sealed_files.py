#!/usr/bin/env python3
"""Usage: sealed_files.py CONTENTS

Prints the files below a bundle's Contents that a code signature seals, by the rules that codesign has
where nobody gives it others: of the rules that match the one with the greatest weight decides.
"""
import os
import re
import sys

RULES = [
    (r"^.*", 1, True),
    (r"^[^/]+$", 10, True),
    (r".*\.dSYM($|/)", 11, True),
    (r"^(.*/)?\.DS_Store$", 2000, False),
    (r"^(Frameworks|SharedFrameworks|PlugIns|Plug-ins|XPCServices|Helpers|MacOS|"
     r"Library/(Automator|Spotlight|LoginItems))/", 10, True),
    (r"^Info\.plist$", 20, False),
    (r"^PkgInfo$", 20, False),
    (r"^Resources/", 20, True),
    (r"^Resources/.*\.lproj/", 1000, True),
    (r"^Resources/.*\.lproj/locversion.plist$", 1100, False),
    (r"^Resources/Base\.lproj/", 1010, True),
    (r"^embedded\.provisionprofile$", 20, True),
    (r"^version\.plist$", 20, True),
]


def is_sealed(path):
    return max((weight, sealed) for rule, weight, sealed in RULES if re.search(rule, path))[1]


contents = sys.argv[1]
for folder, _, names in sorted(os.walk(contents)):
    for name in sorted(names):
        path = os.path.relpath(os.path.join(folder, name), contents)
        if is_sealed(path):
            print(path)
