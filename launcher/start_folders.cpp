#include "launcher/start_folders.h"

#include <sys/stat.h>

#include <optional>

#include "install/closed_installation.h"
#include "install/file_logging.h"
#include "install/install_locations.h"
#include "install/jre_name.h"
#include "launcher/elevated_setup.h"
#include "support/file_modes.h"
#include "support/files.h"
#include "support/log.h"

namespace quillory {
namespace {

void chooseModes(const Start& start) {
  if (start.isHardenedForAll()) {
    chooseInstallationModes(InstallationModes::kOnlyTrustedAreUsed);
  } else if (start.params.isHardened) {
    chooseInstallationModes(InstallationModes::kOwnerWrites);
  }
  // An application is not started by this run, which could inherit it.
  if (start.line.prepareOnly && start.isClosedToOthers()) umask(022);
}

std::string ownFolderOf(const Start& start) {
  if (!start.isHardenedForAll() || start.line.prepareOnly) return start.masterFolder;
  const std::string folder = ownFolderFor(start.surroundings.homeFolder(), start.tail.appName);
  logMessage("[Extractor] Own folder is %s\n", folder.c_str());
  return folder;
}

/// The folder whose QYApps/JreNameOverride counts: the administrator's before the user's own.
const std::string& folderOfOverride(const Start& start) {
  const bool isSafe = mayBeUsed(joinPath(start.masterFolder, "QYApps"));
  return isSafe ? start.masterFolder : start.ownFolder;
}

}  // namespace

std::string findSharedDirectory(const Start& start) {
  const std::optional<std::string> directory =
      sharedDirectoryFor(start.tail.installType, start.surroundings.homeFolder);
  if (!directory) logMessage("ERROR: Unable to get shared dir!");
  endUnless(directory.has_value());
  return *directory;
}

void enterMasterFolder(Start& start, const std::string& sharedDirectory) {
  chooseModes(start);
  if (start.line.prepareOnly) createDirectoryForAllUsers(sharedDirectory);
  start.masterFolder = masterFolderFor(sharedDirectory, start.tail.appName);
  logMessage("[Extractor] Master folder is %s\n", start.masterFolder.c_str());
  if (start.isClosedToOthers()) endUnless(closeInstallation(start.masterFolder));
  start.ownFolder = ownFolderOf(start);
  setupFileLogging(start.ownFolder.c_str());

  const std::optional<JreName> jreName = JreName::make(
      overrideJreName(folderOfOverride(start), start.params.jreName), start.tail.jreVersion);
  endUnless(jreName.has_value());
  start.jreName = *jreName;
  makeDir(joinPath(start.ownFolder, "QYAppsSharedConfig").c_str());
}

}  // namespace quillory
