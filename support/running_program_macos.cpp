#include <mach-o/dyld.h>

#include <cstdint>
#include <filesystem>

#include "support/running_program.h"

namespace quillory {

std::string runningProgram() {
  std::uint32_t size = 0;
  _NSGetExecutablePath(nullptr, &size);
  std::string path(size, '\0');
  if (_NSGetExecutablePath(path.data(), &size) != 0) return "";
  std::error_code error;
  return std::filesystem::canonical(path.c_str(), error).string();
}

}  // namespace quillory
