#include "launcher/update_decision.h"

#include <cstdlib>
#include <filesystem>
#include <optional>

#include "formats/launch_file.h"
#include "install/unfinished.h"
#include "install/version_folders.h"
#include "java/jre_bundle.h"
#include "java/jre_inspection.h"
#include "launcher/bundle_paths.h"
#include "support/files.h"
#include "support/folder_listing.h"
#include "support/log.h"

namespace quillory {
namespace {

/// Versions are compared as numbers only, never as text.
bool isNewer(const std::string& ourVersion, const std::string& installedFolder) {
  return std::strtol(ourVersion.c_str(), nullptr, 10) >
         versionOfFolder(installedFolder).value_or(-1);
}

/// Of an application nothing is known but that it is not empty.
bool holdsAnything(const std::string& folder) { return !namesIn(folder).empty(); }

std::optional<std::string> newest(const UpdateQuestion& question, const std::string& name,
                                  bool (*isWhole)(const std::string& folder)) {
  if (question.onlyWhole) return newestVersionFolder(question.masterFolder, name, isWhole);
  return newestVersionFolder(question.masterFolder, name);
}

bool hasUsableJre(const std::string& masterFolder, const std::optional<std::string>& folder) {
  if (!folder) return false;
  if (isWholeJre(joinPath(masterFolder, *folder))) return true;
  logMessage("[Extractor] The existing JRE %s is broken. Instructing the wrapper to update.\n",
             folder->c_str());
  return false;
}

/// A set-up by the administrator that was killed leaves its folders closed.
bool canBeOpened(const std::string& masterFolder, const std::string& folder) {
  if (isFolder(joinPath(masterFolder, folder))) return true;
  logMessage("[Extractor] %s cannot be opened. Instructing the wrapper to update.\n",
             folder.c_str());
  return false;
}

void logNoGuOrJre() {
  logMessage(
      "[Extractor] No latest GU or JRE version exists, will check tail for online/offline info\n");
}

void logJreExists() { logMessage("[Extractor] Note: Latest JRE version does exist\n"); }

/// Whether the application in the tail is to be installed, where the updater is current.
bool isAppOutdated(const UpdateQuestion& question) {
  const std::optional<std::string> app = newest(question, question.appName, holdsAnything);
  if (!app) {
    logMessage("[Extractor] No app version found and we are offline so will extract\n");
    return true;
  }
  if (isNewer(question.appVersion, *app)) {
    logMessage(
        "[Extractor] Our App version is newer than existing latest version so will extract and "
        "run\n");
    return true;
  }
  logMessage("[Extractor] Latest App version is newer or same as our version so will just run\n");
  return false;
}

bool isSameVersion(const std::string& ourVersion, const std::string& installedFolder) {
  return std::strtol(ourVersion.c_str(), nullptr, 10) ==
         versionOfFolder(installedFolder).value_or(-1);
}

/// Whether an installation of just what the tail carries was cut short behind its updater. That of
/// another version is left to the bundle that carries it.
bool isOursUnfinished(const UpdateQuestion& question, const std::string& gu) {
  if (!isSameVersion(question.guVersion, gu) || !isUnfinished(joinPath(question.masterFolder, gu)))
    return false;
  logMessage(
      "[Extractor] The installation with %s did not come to its end, so will extract again\n",
      gu.c_str());
  return true;
}

/// The decision where both an updater and a usable JRE are installed.
bool isOutdated(const UpdateQuestion& question, const std::string& gu) {
  const bool hasGu = !question.guVersion.empty();
  if (hasGu && isNewer(question.guVersion, gu)) {
    logMessage(
        "[Extractor] Our GU version is newer than existing latest version so will extract and "
        "run\n");
    return true;
  }
  if (hasGu && isOursUnfinished(question, gu)) return true;
  logMessage("[Extractor] Latest GUversion is newer or same as our version so will just run\n");
  return hasGu && !question.appVersion.empty() && isAppOutdated(question);
}

}  // namespace

std::optional<std::string> updaterToRun(const std::string& masterFolder, bool onlyWhole) {
  if (!onlyWhole) return newestVersionFolder(masterFolder, kUpdaterName);
  const std::optional<std::string> finished = newestVersionFolder(
      masterFolder, kUpdaterName,
      [](const std::string& folder) { return holdsLaunchFile(folder) && !isUnfinished(folder); });
  return finished ? finished : newestVersionFolder(masterFolder, kUpdaterName, holdsLaunchFile);
}

std::optional<std::string> runnableUpdater(const UpdateQuestion& question) {
  const std::optional<std::string> jre = newest(question, question.jreName, isWholeJre);
  if (!hasUsableJre(question.masterFolder, jre)) return std::nullopt;
  return updaterToRun(question.masterFolder, question.onlyWhole);
}

UpdateDecision decideUpdate(const UpdateQuestion& question) {
  logMessage("[Extractor] Checking for a latest valid GU\n");
  const std::string gu = updaterToRun(question.masterFolder, question.onlyWhole).value_or("");
  const std::optional<std::string> jreFolder = newest(question, question.jreName, isWholeJre);
  if (!hasUsableJre(question.masterFolder, jreFolder)) {
    logNoGuOrJre();
    logMessage("[Extractor] Note: No latest JRE version exists\n");
    return {true, gu};
  }
  if (gu.empty() || !canBeOpened(question.masterFolder, gu)) {
    logNoGuOrJre();
    logJreExists();
    return {true, gu};
  }
  logMessage("[Extractor] Latest GU version exists: %s\n", gu.c_str());
  logMessage("[Extractor] Existing JRE exists: %s\n", jreFolder->c_str());
  const bool extract = isOutdated(question, gu);
  if (extract) logJreExists();
  return {extract, gu};
}

}  // namespace quillory
