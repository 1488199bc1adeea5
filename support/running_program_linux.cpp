#include <filesystem>

#include "support/running_program.h"

namespace quillory {

std::string runningProgram() {
  std::error_code error;
  return std::filesystem::read_symlink("/proc/self/exe", error).string();
}

}  // namespace quillory
