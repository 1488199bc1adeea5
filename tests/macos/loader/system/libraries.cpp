// dlopen() and dlsym(). A library that is named as on macOS stands for the one of this machine.
#include <dlfcn.h>

#include <filesystem>
#include <string>

#include "tests/macos/loader/fail.h"
#include "tests/macos/loader/system/tables.h"

namespace quillory::loader {
namespace {

constexpr std::string_view kSuffix = ".dylib";

// libX.so beside the place where libX.dylib would be; for those of the system, by the name alone,
// and X.so for its framework X.
std::string ourLibrary(const std::string& theirs) {
  if (theirs.starts_with("/System/Library/Frameworks/"))
    return std::filesystem::path(theirs).filename().string() + ".so";
  if (!theirs.ends_with(kSuffix) || std::filesystem::exists(theirs)) return theirs;
  constexpr std::string_view kSystemFolder = "/usr/lib/";
  std::string name = theirs.substr(0, theirs.size() - kSuffix.size());
  if (!name.starts_with(kSystemFolder)) return name + ".so";
  // The version stands before the suffix there.
  name.erase(0, kSystemFolder.size());
  const std::size_t dot = name.find('.');
  return dot == name.npos ? name + ".so" : name.substr(0, dot) + ".so" + name.substr(dot);
}

void* theirDlopen(const char* path, int flags) {
  constexpr int kNow = 2;
  constexpr int kGlobal = 8;
  constexpr int kOnlyIfLoaded = 16;
  constexpr int kKnown = 1 | kNow | 4 | kGlobal | kOnlyIfLoaded;
  if ((flags & ~kKnown) != 0) fail("dlopen: flags", flags);
  const int ours = ((flags & kNow) != 0 ? RTLD_NOW : RTLD_LAZY) |
                   ((flags & kGlobal) != 0 ? RTLD_GLOBAL : RTLD_LOCAL) |
                   ((flags & kOnlyIfLoaded) != 0 ? RTLD_NOLOAD : 0);
  return path == nullptr ? dlopen(nullptr, ours) : dlopen(ourLibrary(path).c_str(), ours);
}

void* theirDlsym(void* library, const char* name) {
  // Small negative numbers stand for "every library" and the like.
  const auto number = reinterpret_cast<long>(library);
  if (number < 0 && number > -16) fail("dlsym in no library of its own:", name);
  return dlsym(library, name);
}

}  // namespace

Symbols librarySymbols() {
  static const Symbol kSymbols[] = {
      {"_dlclose", code(dlclose)},
      {"_dlerror", code(dlerror)},
      {"_dlopen", code(theirDlopen)},
      {"_dlsym", code(theirDlsym)},
  };
  return kSymbols;
}

}  // namespace quillory::loader
