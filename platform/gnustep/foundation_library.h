// The library with Foundation in it: programs that most often do without are not linked to it, but
// have foundation_symbols.cpp among their sources.
#pragma once

namespace quillory::platform {

/// Whether this program loads it with the first need; else it is there from the start.
bool isFoundationLate();

/// Loads it, with what the program refers to in it. Ends the process where this system has none.
/// Main thread only.
void loadFoundationLibrary();

}  // namespace quillory::platform
