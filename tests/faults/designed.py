"""What is not whole after a disturbance and yet meant to be so: a rule and its reason. A rule is looked
for in "verdict | label | detail"; the more exactly it says what it excuses, the better.
"""

import re

# Places whose modes alone differ: "PATH: file 600 111 0e20... instead of file 644 111 0e20...".
MODES = (r"[^;]*: (?:folder \d+ instead of folder \d+|file \d+ (\d+ \w+) instead of file \d+ \1)")

RULES = [
    (rf"^not whole \| EIO \d+ (?:f?chmod|fchmodat) [^|]* \| {MODES}$",
     "a mode that the disk refuses to set is another one; what is installed is whole"),
    (r"^status 0 for nothing \|.*\[SUDO\] Relaunch complete",
     "the start that asked for an administrator's rights ends with 0 once it has started its copy, "
     "whatever becomes of that"),
    (r"^status 0 for nothing \| (EIO \d+ read|EMFILE \d+ openat) [^|]*/bin/Demo \| "
     r"(?!.*Launch Error).*Spawn launch",
     "the application's own process could not read its program; it had been started, and nobody waits "
     "for it"),
    (r"^hangs \| archive: (endless|endless lines|a byte every 3 seconds) \|",
     "an archive ends at 4 GiB, and may take as long as it likes while a byte comes within a minute: "
     "nothing says beforehand how long one is"),
    (r"^crash \| (a stack of 64 KiB|1 MiB of data) \| status -11: $",
     "too little for the system to load the program"),
    (r"^not whole \| the umask [^|]* \| ([^;]*(/lib/classes\.jsa: file|/cacerts: file|"
     r"(Library|Application Support): folder) [^;]*(; |$))+$",
     "what java makes, the copied trust store, and the folders that are no application's own, get the "
     "user's umask"),
    (r"^foreign files \| (kill-all|kill|cut) [^|]* \| (/tmp/Quillory-\w{6}(/(lzma64|nativesplash\.png))?"
     r"(; |$))+$",
     "the killed start's private folder in /tmp, which the system empties"),
    (r"^not whole \| (kill \d+ [^|]*/lib/classes\.jsa|11 descriptors|(EMFILE|EIO) [^|]*/(lib/classes\.jsa|bin/java)|"
     r"EAGAIN [^|]*) \| [^;]*/lib/classes\.jsa: (file|missing) [^;]*$",
     "java could not make its archive of classes; it does without"),
]


def reason_for(result):
    text = f"{result.verdict} | {result.label} | {result.detail}"
    for rule, reason in RULES:
        if re.search(rule, text):
            return reason
    return None
