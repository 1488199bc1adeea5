#include "tests/harness/programs_of.h"

#include <filesystem>
#include <fstream>
#include <sstream>
#include <system_error>

namespace quillory::testing {
namespace {

namespace fs = std::filesystem;

bool belongsTo(const fs::path& process, const std::string& folder) {
  std::ostringstream environment;
  environment << std::ifstream(process / "environ").rdbuf();
  if (environment.str().find(folder) != std::string::npos) return true;
  std::error_code gone;
  return fs::read_symlink(process / "root", gone).string().starts_with(folder + "/");
}

}  // namespace

std::vector<std::string> programsOf(const std::string& folder) {
  std::vector<std::string> found;
  for (const fs::directory_entry& process : fs::directory_iterator("/proc")) {
    std::error_code gone;
    const fs::path program = fs::read_symlink(process.path() / "exe", gone);
    if (!program.empty() && belongsTo(process.path(), folder)) found.push_back(program.filename());
  }
  return found;
}

}  // namespace quillory::testing
