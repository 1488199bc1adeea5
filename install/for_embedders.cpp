#include "install/for_embedders.h"

#include <cstdlib>
#include <cstring>
#include <optional>
#include <string>

#include "install/install_locations.h"
#include "install/version_folders.h"
#include "support/owned.h"
#include "support/paths.h"
#include "support/strings.h"

namespace quillory {

char* makeAppFolder(char* dst, const char* master, const char* name, const char* version) {
  return setPath(dst, versionFolder(master, name, version).c_str());
}

char* makeAppTempFolder(char* dst, const char* master) {
  return setPath(dst, temporaryFolder(master).c_str());
}

int checkAppFolderName(const char* folderName, const char* name) {
  const std::optional<std::string> component = componentOfFolder(folderName);
  return component ? std::strcmp(component->c_str(), name) : -1;
}

long pickVersionFromAppFolderName(const char* folderName) {
  return versionOfFolder(folderName).value_or(-1);
}

char* pickAndAllocLatestFromMaster(const char* master, const char* name) {
  const std::optional<std::string> latest = newestVersionFolder(master, name);
  return latest ? allocCopy(latest->c_str()) : nullptr;
}

char* locateSharedDirectory(const char* installType) {
  const std::optional<std::string> directory = sharedDirectoryFor(installType);
  if (!directory) return nullptr;
  OwnedText path(static_cast<char*>(std::calloc(kPathCapacity, 1)));
  if (path == nullptr) return nullptr;
  setPath(path.get(), directory->c_str());
  return path.release();
}

}  // namespace quillory
