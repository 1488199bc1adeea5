// The tables of libSystem, one of each file here. docs/porting.md says what holds of them.
#pragma once
#include "tests/macos/loader/symbols.h"

namespace quillory::loader {

Symbols fileSymbols();     // files.cpp: stat, open, fcntl, times of files
Symbols folderSymbols();   // folders.cpp: folders, what is done to names in them, file systems
Symbols copySymbols();     // copies.cpp: copyfile
Symbols streamSymbols();   // streams.cpp: FILE
Symbols textSymbols();     // texts.cpp: characters, error texts
Symbols localeSymbols();   // locales.cpp: the _l family
Symbols threadSymbols();   // threads.cpp: pthread
Symbols signalSymbols();   // signals.cpp
Symbols processSymbols();  // processes.cpp: spawn, wait, paths of programs, users
Symbols machineSymbols();  // machine.cpp: clocks, sysconf, versions
Symbols librarySymbols();  // libraries.cpp: dlopen

}  // namespace quillory::loader
