#include <array>

#include "java/jvm_library_names.h"

namespace quillory {

std::span<const char* const> jvmLibraryNames() {
  static constexpr std::array<const char*, 1> kNames = {"libjvm.dylib"};
  return kNames;
}

}  // namespace quillory
