#include <array>

#include "java/jvm_library_names.h"

namespace quillory {

std::span<const char* const> jvmLibraryNames() {
  static constexpr std::array<const char*, 1> kNames = {"libjvm.dylib"};
  return kNames;
}

std::span<const char* const> jvmLibraryFolders() {
  static constexpr std::array<const char*, 3> kFolders = {
      "/lib/server/", "/Contents/Home/lib/server/", "/Contents/Home/jre/lib/server/"};
  return kFolders;
}

}  // namespace quillory
