// Paths: zero-terminated byte strings with '/' between the components, built in buffers of
// kPathCapacity bytes that the caller owns.
#pragma once
#include <cstddef>
#include <string>
#include <string_view>

namespace quillory {

/// Size of the buffers in which the launcher builds paths.
inline constexpr std::size_t kPathCapacity = 5000;

// The builders write to `dst`, which has kPathCapacity bytes, and return it. A path that does not
// fit is not cut, since a shorter path names another file: it is logged as an error and the process
// ends with kExitFailure. `dst` may be one of the sources.

/// `a`, then each further component behind a '/', unless what it follows ends in one (or is empty).
/// A component that begins with '/' yields a doubled separator; this is accepted.
char* setPath(char* dst, const char* a);
char* setPath(char* dst, const char* a, const char* b);
char* setPath(char* dst, const char* a, const char* b, const char* c);
char* setPath(char* dst, const char* a, const char* b, const char* c, const char* d);
char* setPath(char* dst, const char* a, const char* b, const char* c, const char* d, const char* e);

/// `folder` and the components behind it, joined as by setPath(), however long.
std::string joinPath(std::string_view folder, std::string_view component);
template <typename... Components>
std::string joinPath(std::string_view folder, std::string_view component,
                     const Components&... components) {
  return joinPath(joinPath(folder, component), components...);
}

/// Nothing to do where the separator is '/'; it marks the places that would convert it elsewhere.
void toNativePath(char* path);

bool isAbsolutePath(const char* path);  ///< whether it begins with '/'

/// `path` itself when it is absolute, else a new block (at least 1024 bytes, release with free())
/// with the current directory before it. Only the pointer tells the two cases apart.
char* getAbsoluteExePath(char* path);

/// A new block (at least 2048 bytes, release with free()) with `path` cut at its last '/', where a
/// '/' at the front does not count: "" for "/a" and for a path without one.
char* getAbsoluteExeDir(const char* path);

/// Keeps only what stands behind the last '/' or '\', in place. Returns 0.
int chopPath(char* path);

/// Cuts a ".exe" (in lower case) off the end, in place. Returns 0.
int chopExe(char* name);

/// The current directory, however long; "" when it cannot be told (it may have been removed).
std::string currentDirectory();

}  // namespace quillory
