#include <array>

#include "java/jvm_library_names.h"

namespace quillory {

// A bundle made on a Mac keeps its names; the runtime of the system itself has the second.
std::span<const char* const> jvmLibraryNames() {
  static constexpr std::array<const char*, 2> kNames = {"libjvm.dylib", "libjvm.so"};
  return kNames;
}

// Up to Java 8, runtimes for Linux have a folder for the processor, and JDKs a runtime inside.
std::span<const char* const> jvmLibraryFolders() {
  static constexpr std::array<const char*, 7> kFolders = {"/lib/server/",
                                                          "/Contents/Home/lib/server/",
                                                          "/Contents/Home/jre/lib/server/",
                                                          "/lib/amd64/server/",
                                                          "/lib/aarch64/server/",
                                                          "/jre/lib/amd64/server/",
                                                          "/jre/lib/aarch64/server/"};
  return kFolders;
}

}  // namespace quillory
