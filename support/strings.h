// Zero-terminated byte strings as slots and copies, and the process environment.
#pragma once
#include <cstdint>

namespace quillory {

/// A copy, to be released with free(). Out of memory ends the process: no caller could go on.
char* allocCopy(const char* s);

/// Size of every argument slot made by addArgs(). Never written after start.
extern std::uint32_t argsiz;

/// Stores a copy of the `argsiz` bytes at `arg` in a new slot at `list[*count]`, and returns the
/// new count. The source must have that many bytes and the list that place; free() releases the
/// slot.
int addArgs(char** list, int* count, const char* arg);

/// The process environment: "NAME=value" texts and a null, owned by the C library.
char** getEnvP();

}  // namespace quillory
