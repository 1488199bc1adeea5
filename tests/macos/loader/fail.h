// Ends the process where the image asks for something that the loader does not know: going on would
// test something else than the image.
#pragma once

namespace quillory::loader {

/// Status of the process when the loader itself is at its end.
inline constexpr int kLoaderFailed = 86;

/// Says on standard error what was asked for, and ends with kLoaderFailed, without any clean-up.
[[noreturn]] void fail(const char* what);
[[noreturn]] void fail(const char* what, long number);
[[noreturn]] void fail(const char* what, const char* name);

}  // namespace quillory::loader
