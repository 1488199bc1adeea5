#include <cstdlib>

#include "java/library_path.h"

namespace quillory {
namespace {

#if defined(__x86_64__)
#define QUILLORY_MULTIARCH "x86_64-linux-gnu"
#elif defined(__aarch64__)
#define QUILLORY_MULTIARCH "aarch64-linux-gnu"
#else
#define QUILLORY_MULTIARCH "none"
#endif

/// Those of OpenJDK, and what distributions have in theirs, where packages put such libraries.
constexpr char kSystemFolders[] =
    "/usr/java/packages/lib:/usr/lib/" QUILLORY_MULTIARCH "/jni:/lib/" QUILLORY_MULTIARCH
    ":/usr/lib/" QUILLORY_MULTIARCH ":/usr/lib/jni:/usr/lib64:/lib64:/lib:/usr/lib";

}  // namespace

std::string standardLibraryPath() {
  const char* given = std::getenv("LD_LIBRARY_PATH");
  const std::string own = given == nullptr || *given == '\0' ? "" : std::string(given) + ':';
  return own + kSystemFolders;
}

}  // namespace quillory
