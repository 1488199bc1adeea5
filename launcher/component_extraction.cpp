#include "launcher/component_extraction.h"

#include <cstdlib>

#include "formats/archive.h"
#include "install/version_folders.h"
#include "launcher/bundle_paths.h"
#include "launcher/splash_override.h"
#include "support/files.h"
#include "support/log.h"
#include "support/owned.h"
#include "support/paths.h"

namespace quillory {
namespace {

const char* pathOrNull(const std::string& path) { return path.empty() ? nullptr : path.c_str(); }

}  // namespace

ComponentFolders nameComponentFolders(const std::string& masterFolder, const std::string& guVersion,
                                      const std::string& appName, const std::string& appVersion) {
  const ComponentFolders folders = {.gu = versionFolder(masterFolder, kUpdaterName, guVersion),
                                    .guTemp = temporaryFolder(masterFolder),
                                    .app = versionFolder(masterFolder, appName, appVersion),
                                    .appTemp = temporaryFolder(masterFolder)};
  logMessage("[Extractor] GU folder is %s\n", folders.gu.c_str());
  logMessage("[Extractor] GU temp is %s\n", folders.guTemp.c_str());
  return folders;
}

void extractTailEntry(const TailArchives& tail, const UnpackingTools& tools,
                      const std::string& destination) {
  long signatureOffset = -1;
  char* signatureHex = nullptr;
  extractArchiveFileCheckSignature(pathOrNull(tools.lzma), pathOrNull(tools.unpack200),
                                   destination.c_str(), tail.stream, &signatureOffset,
                                   &signatureHex, tail.key);
  std::free(signatureHex);
}

namespace {

// A tool of the tail, which is there to be run.
void extractTool(const TailArchives& tail, const UnpackingTools& tools, const std::string& tool,
                 const std::string& destination) {
  extractTailEntry(tail, tools, destination);
  logMessage("[Extractor] Ensuring LZMA is executable.\n");
  if (chmod777(tool.c_str()) != 0)
    logMessage("[Extractor] ***************************** Error setting LZMA executable!\n");
}

}  // namespace

void extractUpdater(const TailArchives& tail, const ComponentFolders& folders,
                    const SplashOverride& splashOverride) {
  const std::string lzmaTool = joinPath(folders.guTemp, kLzmaToolName);
  logMessage("[Extractor] LZMA path is %s\n", lzmaTool.c_str());
  const UnpackingTools tools = {.lzma = lzmaTool, .unpack200 = ""};
  for (const Compression& compression : kCompressions)
    extractTool(tail, tools, joinPath(folders.guTemp, compression.tool), folders.guTemp);

  extractTailEntry(tail, tools, folders.guTemp);
  saveOverrideImageIfAllowed(splashOverride.canOverride, splashOverride.image,
                             joinPath(folders.guTemp, kSplashPictureName));
  for (int i = 0; i < kUpdaterEntries; ++i) extractTailEntry(tail, tools, folders.guTemp);

  logMessage("[Extractor] Extracted GU and GU Version\n");
  logMessage("[Extractor] Renaming GU folder to %s\n", folders.gu.c_str());
  doRename(folders.guTemp.c_str(), folders.gu.c_str());
  chmod777(folders.gu.c_str());
}

UpdaterFiles locateUpdaterFiles(const std::string& guFolder) {
  logMessage("[Extractor] Recreating GU location\n");
  const UpdaterFiles files = {joinPath(guFolder, kLzmaToolName),
                              joinPath(guFolder, kTrustStoreName),
                              joinPath(guFolder, kSplashPictureName)};
  logMessage("[Extractor] CACerts override path is %s\n", files.caCerts.c_str());
  logMessage("[Extractor] Native Splash PNG path is %s\n", files.splashPicture.c_str());
  return files;
}

bool extractApplication(const TailArchives& tail, const ComponentFolders& folders,
                        const UnpackingTools& tools) {
  // No line end, by intent: the next message ends the line.
  logMessage("[Extractor] Offline installer - app to extract.");
  logMessage("[Extractor] APP folder is %s\n", folders.app.c_str());
  logMessage("[Extractor] APP temp is %s\n", folders.appTemp.c_str());
  if (makeDir(folders.appTemp.c_str()) != 0) {
    logError("Unable to create App Temp folder\n");
    return false;
  }
  logMessage("[Extractor] Extracting App...\n");
  for (int i = 0; i < kApplicationEntries; ++i) extractTailEntry(tail, tools, folders.appTemp);
  doRename(folders.appTemp.c_str(), folders.app.c_str());
  logMessage("[Extractor] Renaming App folder to %s\n", folders.app.c_str());
  return true;
}

}  // namespace quillory
