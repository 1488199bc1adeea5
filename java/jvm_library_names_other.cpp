#include <array>

#include "java/jvm_library_names.h"

namespace quillory {

// A bundle made on a Mac keeps its names; the runtime of the system itself has the second.
std::span<const char* const> jvmLibraryNames() {
  static constexpr std::array<const char*, 2> kNames = {"libjvm.dylib", "libjvm.so"};
  return kNames;
}

}  // namespace quillory
