#include "platform/show_file.h"

#include <filesystem>

#include "support/program.h"

namespace quillory::platform {

void showFile(const std::string& path) {
  ProgramOptions options;
  options.waits = false;
  runProgram({"/usr/bin/xdg-open", std::filesystem::path(path).parent_path().string()}, options);
}

}  // namespace quillory::platform
