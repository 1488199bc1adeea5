#include "install/jre_name.h"

#include <utility>

#include "install/version_folders.h"
#include "support/log.h"

namespace quillory {

JreName::JreName(std::string text) : text_(std::move(text)) {}

std::optional<JreName> JreName::make(const std::string& name, const std::string& version) {
  if (isUsableAsJre(name, version)) return JreName(name);
  logError("[Extractor] The JRE name '%s' with version '%s' cannot be part of a folder name\n",
           name.c_str(), version.c_str());
  return std::nullopt;
}

}  // namespace quillory
