// What a program refers to in Foundation's library, other than by sending messages, where it is not
// linked to it.
#pragma once

namespace quillory::platform {

/// Has the program's own symbols mean those of the library. Null in a program that is linked to it.
[[gnu::weak]] void fillFoundationSymbols(void* library);

}  // namespace quillory::platform
