#include "packager/content/program_folder.h"

#include <filesystem>

#include "support/running_program.h"

namespace quillory::pack {

std::string programFolder() {
  return std::filesystem::path(runningProgram()).parent_path().string();
}

}  // namespace quillory::pack
