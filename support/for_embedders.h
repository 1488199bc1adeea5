// Functions for programs outside of this tree, which know them by these names and signatures: the
// same library serves builds for other systems, and tools that are linked with it. Nothing in the
// launcher calls them, and their contracts are what those programs rely on, oddities included.
// New blocks are released with free().
#pragma once
#include <cstdint>

namespace quillory {

struct Spawner;

/// allocCopy() by another name.
char* cloneString(const char* s);
/// The `length` bytes from `start` on, or as many of them as `s` has, in a new block.
char* allocSubstring(const char* s, int start, int length);
/// `a` followed by `b`, in a new block.
char* allocTempString(const char* a, const char* b);
/// `a`, a '/' unless `a` is empty or ends in one, and `b`, in a new block.
char* allocTempPath(char* a, char* b);

/// Position of the last byte equal to `c`, or -1.
int lastIndexOf(const char* s, char c);
/// Position of the `n`-th `c`, counting from 1; -1 when there are fewer or `n` is below 1.
int indexOf(const char* s, char c, int n);

/// Writes at most 7 digits of `value` and a terminator to `dst` (8 bytes); returns the length that
/// the whole number has.
int integerToA(int value, char* dst);

/// setPath() of what is in `dst` and `component`: appends to it.
char* pathcat(char* dst, const char* component);

/// What stands behind the last '/' of `path`: a pointer into it.
char* pathToFile(char* path);

/// Always true: it only logs. isFolder() of support/files.h tells.
bool doesDirExist(const char* path);

/// `text` itself when `escape` is false, else a new block with a backslash before each space.
char* escapeSpaces(char* text, bool escape);
/// A new block: `text` between double quotes, whether or not it holds spaces.
char* quoteSpaciousString(const char* text);
/// `text` itself when it begins with a double quote, else as quoteSpaciousString().
char* quoteStringIfNecessary(char* text);
/// outputOfCommand() of support/command_output.h in a new block; null when it could not be run.
char* runCommandGetOutput(const char* command);

/// As runSpawnerAndWait(), without waiting: 0 when it started, else -1.
int runSpawnerAndContinue(const Spawner* spawner);
int runSpawnerAndContinue(const Spawner* spawner, const char* directory);

/// getCurrentTimeMillis() by another name.
std::uint64_t systemTimeMillis();
/// The millisecond part (0 to 999) of the current second; 0 when the clock cannot be read.
int getJustMillis();
/// Does not wait. The nanosecond field that it asks for is out of range for every `ms` of 1 or
/// more, so the call fails at once and returns -1; 0 returns 0. Kept so by intent: no caller may
/// count on it to wait.
int millisleep(int ms);

/// Always false here. The query is there for systems with builds of both kinds.
bool is32Bit();
/// Does nothing here.
void editToWindowsSubsystem(const char* path, int flag);

}  // namespace quillory
