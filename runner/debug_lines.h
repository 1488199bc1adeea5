// What the command runner says about its work when it is asked to.
#pragma once
#include <cstdint>

namespace quillory {

/// 1 after the switch "-DEBUG", else 0. Written before the runner reads anything, by the thread
/// that runs it.
extern std::int32_t DEBUG;

/// One line to standard output when DEBUG is set.
void printDebug(const char* format, ...) __attribute__((format(printf, 1, 2)));

/// `text`, or "(null)" for none, for a "%s".
const char* orNull(const char* text);

}  // namespace quillory
