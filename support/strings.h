// Zero-terminated byte strings: copies, cuts and searches. Functions whose name begins with
// "alloc", and cloneString, return a block that the caller releases with free().
#pragma once
#include <cstdint>

namespace quillory {

// Out of memory ends the process: no caller could go on.

/// A copy; two names for the same thing.
char* allocCopy(const char* s);
char* cloneString(const char* s);

/// The `length` bytes from `start` on, or as many of them as `s` has.
char* allocSubstring(const char* s, int start, int length);

/// `a` followed by `b`.
char* allocTempString(const char* a, const char* b);

/// `a`, a '/' unless `a` is empty or ends in one, and `b`.
char* allocTempPath(char* a, char* b);

/// Position of the last byte equal to `c`, or -1.
int lastIndexOf(const char* s, char c);
/// Position of the `n`-th `c`, counting from 1; -1 when there are fewer or `n` is below 1.
int indexOf(const char* s, char c, int n);

/// Writes at most 7 digits of `value` and a terminator to `dst` (8 bytes); returns the length that
/// the whole number has.
int integerToA(int value, char* dst);

/// Size of every argument slot made by addArgs(). Never written after start.
extern std::uint32_t argsiz;

/// Stores a copy of the `argsiz` bytes at `arg` in a new slot at `list[*count]`, and returns the
/// new count. The source must have that many bytes and the list that place; free() releases the
/// slot.
int addArgs(char** list, int* count, const char* arg);

/// The process environment: "NAME=value" texts and a null, owned by the C library.
char** getEnvP();

/// Always false here. The query is there for systems with builds of both kinds.
bool is32Bit();

/// Does nothing here.
void editToWindowsSubsystem(const char* path, int flag);

}  // namespace quillory
