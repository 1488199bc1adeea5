// The library of windows, views and pictures, loaded by the first of them: being linked to it would
// cost every start 11 ms, and most starts show none.
#pragma once

namespace quillory::platform {

/// Before the first use of the library. False where this system has none; main thread only.
bool loadWindowLibrary();

}  // namespace quillory::platform
