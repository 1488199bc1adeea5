#include <filesystem>

#include "packager/content/program_folder.h"

namespace quillory::pack {

std::string programFolder() {
  std::error_code error;
  return std::filesystem::read_symlink("/proc/self/exe", error).parent_path().string();
}

Target nativeTarget() { return Target::kLinux; }

}  // namespace quillory::pack
