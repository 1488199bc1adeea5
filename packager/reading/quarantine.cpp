#include "packager/reading/quarantine.h"

#include <filesystem>

namespace quillory::pack {

bool isTranslocated(const std::string& path) {
  return std::filesystem::absolute(path).string().find("/AppTranslocation/") != std::string::npos;
}

}  // namespace quillory::pack
