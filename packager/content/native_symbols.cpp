#include "packager/content/native_symbols.h"

#include <filesystem>
#include <system_error>

#include "packager/bytes/byte_sinks.h"
#include "packager/bytes/work_folder.h"
#include "packager/content/tool_runner.h"
#include "packager/report/findings.h"

namespace quillory::pack {
namespace {

namespace fs = std::filesystem;

constexpr char kElf[] =
    "\x7f"
    "ELF";

}  // namespace

bool stripNativeSymbols(const std::string& javaHome) {
  const std::string tool = findInPath("strip");
  if (tool.empty()) {
    return false;
  }
  std::error_code error;
  for (const auto& entry : fs::recursive_directory_iterator(javaHome, error)) {
    if (!entry.is_regular_file() || entry.is_symlink() ||
        readBeginningOf(entry.path().string(), 4) != kElf) {
      continue;
    }
    try {
      runTool({tool, "--strip-unneeded", entry.path().string()});
    } catch (const PackError&) {
      stopIfInterrupted();
      // Of another processor's: strip leaves what it does not know.
    }
  }
  return true;
}

}  // namespace quillory::pack
