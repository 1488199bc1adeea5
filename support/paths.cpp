#include "support/paths.h"

#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>

#include "support/exit_status.h"
#include "support/log.h"
#include "support/owned.h"

namespace quillory {
namespace {

// A path that is cut short names another file, so there is no going on.
[[noreturn]] void refuseOverlongPath(const std::string& path) {
  logError("[Paths] The path is too long (%zu bytes, at most %zu): %s\n", path.size(),
           kPathCapacity - 1, path.c_str());
  std::exit(kExitFailure);
}

void appendComponent(std::string& path, std::string_view component) {
  if (!path.empty() && path.back() != '/') path += '/';
  path += component;
}

char* store(const std::string& path, char* dst) {
  if (path.size() >= kPathCapacity) refuseOverlongPath(path);
  std::memcpy(dst, path.c_str(), path.size() + 1);
  return dst;
}

template <typename... Components>
char* joinInto(char* dst, const char* first, Components... components) {
  std::string path(first);
  (appendComponent(path, components), ...);
  return store(path, dst);
}

// A zero-filled block of `smallest` bytes, or of what `text` needs, that begins with `text`.
char* allocBlock(const std::string& text, std::size_t smallest) {
  char* block = static_cast<char*>(std::calloc(std::max(smallest, text.size() + 1), 1));
  if (block == nullptr) std::abort();
  std::memcpy(block, text.data(), text.size());
  return block;
}

}  // namespace

char* setPath(char* dst, const char* a) { return joinInto(dst, a); }

char* setPath(char* dst, const char* a, const char* b) { return joinInto(dst, a, b); }

char* setPath(char* dst, const char* a, const char* b, const char* c) {
  return joinInto(dst, a, b, c);
}

char* setPath(char* dst, const char* a, const char* b, const char* c, const char* d) {
  return joinInto(dst, a, b, c, d);
}

char* setPath(char* dst, const char* a, const char* b, const char* c, const char* d,
              const char* e) {
  return joinInto(dst, a, b, c, d, e);
}

std::string joinPath(std::string_view folder, std::string_view component) {
  std::string path(folder);
  appendComponent(path, component);
  return path;
}

void toNativePath(char* /*path*/) {}

bool isAbsolutePath(const char* path) { return path[0] == '/'; }

char* getAbsoluteExePath(char* path) {
  constexpr std::size_t kBlockSize = 1024;
  if (isAbsolutePath(path)) return path;
  std::string absolute = currentDirectory();
  appendComponent(absolute, path);
  return allocBlock(absolute, kBlockSize);
}

char* getAbsoluteExeDir(const char* path) {
  constexpr std::size_t kBlockSize = 2048;
  const std::string_view whole(path);
  const std::size_t slash = whole.rfind('/');
  // A slash at the front does not count: the folder of "/a" is "", not "/".
  const std::size_t length = slash == std::string_view::npos ? 0 : slash;
  return allocBlock(std::string(whole.substr(0, length)), kBlockSize);
}

int chopPath(char* path) {
  const std::string_view whole(path);
  const std::size_t separator = whole.find_last_of("/\\");
  if (separator == std::string_view::npos) return 0;
  const std::size_t tail = separator + 1;
  std::memmove(path, path + tail, whole.size() - tail + 1);
  return 0;
}

int chopExe(char* name) {
  constexpr std::string_view kExtension = ".exe";
  const std::string_view whole(name);
  if (whole.ends_with(kExtension)) name[whole.size() - kExtension.size()] = '\0';
  return 0;
}

std::string currentDirectory() {
  const OwnedText directory(getcwd(nullptr, 0));
  return directory ? directory.get() : "";
}

}  // namespace quillory
