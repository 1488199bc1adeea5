#include <array>
#include <cstdlib>

#include "java/library_path.h"

namespace quillory {
namespace {

constexpr std::array kVariables = {"JAVA_LIBRARY_PATH", "DYLD_LIBRARY_PATH"};
constexpr char kExtensions[] = "/Library/Java/Extensions";

}  // namespace

std::string standardLibraryPath() {
  std::string path;
  for (const char* variable : kVariables) {
    const char* given = std::getenv(variable);
    if (given != nullptr && *given != '\0') path += std::string(given) + ':';
  }
  const char* home = std::getenv("HOME");
  if (home != nullptr) path += std::string(home) + kExtensions + ':';
  return path + kExtensions + ":/Network" + kExtensions + ":/System" + kExtensions +
         ":/usr/lib/java:.";
}

}  // namespace quillory
