#include "packager/commands/named_jar.h"

namespace quillory::pack {

std::optional<Jar> namedJar(const std::string& path, const Place& place, Findings& findings) {
  try {
    return Jar(path);
  } catch (const PackError& e) {
    findings.push_back({Severity::kError, "jar", path + ": " + e.what(), place,
                        "build it again, or correct the name"});
    return std::nullopt;
  }
}

}  // namespace quillory::pack
