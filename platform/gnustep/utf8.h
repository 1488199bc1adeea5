// Telling UTF-8 from other texts.
#pragma once

namespace quillory::platform {

/// Whether all of `text` is UTF-8. Needs no memory and no library: it can be called before any of
/// them is ready.
bool isUtf8(const char* text);

}  // namespace quillory::platform
