#include "packager/commands/stored_jars.h"

#include <filesystem>

#include "packager/content/stored_jar.h"

namespace quillory::pack {

std::vector<std::string> storedJars(const std::vector<std::string>& jars,
                                    const std::string& workFolder, Reporter& reporter) {
  namespace fs = std::filesystem;
  std::vector<std::string> stored;
  for (const std::string& jar : jars) {
    // A folder each: two may have one name, which is a finding of others.
    const fs::path folder = fs::path(workFolder) / "jars" / std::to_string(stored.size());
    fs::create_directories(folder);
    const std::string path = (folder / fs::path(jar).filename()).string();
    const std::string why = storeJar(jar, path);
    if (!why.empty()) reporter.detail(jar + " stays as it is: " + why);
    stored.push_back(why.empty() ? path : jar);
  }
  return stored;
}

}  // namespace quillory::pack
