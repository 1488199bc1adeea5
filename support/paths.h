// Paths: zero-terminated byte strings with '/' between the components, built in buffers of
// kPathCapacity bytes that the caller owns.
#pragma once
#include <cstddef>

namespace quillory {

/// Size of the buffers in which the launcher builds paths.
inline constexpr std::size_t kPathCapacity = 5000;

/// Appends '/' unless `dst` ends in one, then `component`. `dst` must not be empty. A component
/// that begins with '/' yields a doubled separator; this is accepted.
char* pathcat(char* dst, const char* component);

char* setPath(char* dst, const char* a);
char* setPath(char* dst, const char* a, const char* b);
char* setPath(char* dst, const char* a, const char* b, const char* c);
char* setPath(char* dst, const char* a, const char* b, const char* c, const char* d);
char* setPath(char* dst, const char* a, const char* b, const char* c, const char* d,
              const char* e);

void toNativePath(char* path);

bool isAbsolutePath(const char* path);
/// `path` itself when it is absolute, else a new block with the current directory before it.
char* getAbsoluteExePath(char* path);
/// A new block with `path` cut at its last '/' (from position 1 on), or "" without one.
char* getAbsoluteExeDir(const char* path);
char* pathToFile(char* path);
int chopPath(char* path);
int chopExe(char* name);

}  // namespace quillory
