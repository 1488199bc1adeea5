#include "launcher/component_extraction.h"

#include <optional>

#include "formats/archive_format.h"
#include "formats/launch_file.h"
#include "install/replacement.h"
#include "install/unfinished.h"
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

ExtractionResult extractTailEntry(const TailArchives& tail, const UnpackingTools& tools,
                                  const std::string& destination) {
  std::optional<MetSignature> unused;  // Of the tail, which has none; an archive in it has its own.
  return extractEntry({pathOrNull(tools.lzma), pathOrNull(tools.unpack200)}, destination,
                      tail.stream, unused, ArchiveTrust{tail.key, tail.isHardened, tail.expected});
}

namespace {

ExtractionResult extractTailEntries(int count, const TailArchives& tail,
                                    const UnpackingTools& tools, const std::string& destination) {
  ExtractionResult result;
  for (int i = 0; i < count && !result.isFailure(); ++i)
    result = extractTailEntry(tail, tools, destination);
  return result;
}

// A tool of the tail, which is there to be run.
ExtractionResult extractTool(const TailArchives& tail, const UnpackingTools& tools,
                             const std::string& tool, const std::string& destination) {
  ExtractionResult result = extractTailEntry(tail, tools, destination);
  if (result.isFailure()) return result;
  logMessage("[Extractor] Ensuring LZMA is executable.\n");
  if (chmod777(tool.c_str()) != 0)
    logMessage("[Extractor] ***************************** Error setting LZMA executable!\n");
  return result;
}

ExtractionResult extractUpdaterEntries(const TailArchives& tail, const UnpackingTools& tools,
                                       const std::string& folder,
                                       const SplashOverride& splashOverride) {
  ExtractionResult result;
  for (const Compression& compression : kCompressions) {
    result = extractTool(tail, tools, joinPath(folder, compression.tool), folder);
    if (result.isFailure()) return result;
  }
  result = extractTailEntry(tail, tools, folder);
  if (result.isFailure()) return result;
  saveOverrideImageIfAllowed(splashOverride.canOverride, splashOverride.image,
                             joinPath(folder, kSplashPictureName));
  return extractTailEntries(kUpdaterEntries, tail, tools, folder);
}

}  // namespace

ExtractionResult extractUpdater(const TailArchives& tail, const ComponentFolders& folders,
                                const SplashOverride& splashOverride) {
  const std::string lzmaTool = joinPath(folders.guTemp, kLzmaToolName);
  logMessage("[Extractor] LZMA path is %s\n", lzmaTool.c_str());
  const UnpackingTools tools = {.lzma = lzmaTool, .unpack200 = ""};
  ExtractionResult result = extractUpdaterEntries(tail, tools, folders.guTemp, splashOverride);
  if (result.isFailure()) {
    removeTree(folders.guTemp);
    return result;
  }

  logMessage("[Extractor] Extracted GU and GU Version\n");
  logMessage("[Extractor] Renaming GU folder to %s\n", folders.gu.c_str());
  // Of a rejected archive an empty folder stays, by intent, and the next start takes it as it is.
  if (holdsLaunchFile(folders.guTemp)) markUnfinished(folders.guTemp);
  putInPlace(folders.guTemp, folders.gu);
  chmod777(folders.gu.c_str());
  return result;
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

ExtractionResult extractApplication(const TailArchives& tail, const ComponentFolders& folders,
                                    const UnpackingTools& tools) {
  // No line end, by intent: the next message ends the line.
  logMessage("[Extractor] Offline installer - app to extract.");
  logMessage("[Extractor] APP folder is %s\n", folders.app.c_str());
  logMessage("[Extractor] APP temp is %s\n", folders.appTemp.c_str());
  if (makeNewDir(folders.appTemp.c_str()) != 0) {
    logError("Unable to create App Temp folder\n");
    return {ExtractionEnd::kFileNotCreated, "", 0, folders.appTemp, "the folder cannot be made"};
  }
  logMessage("[Extractor] Extracting App...\n");
  ExtractionResult result = extractTailEntries(kApplicationEntries, tail, tools, folders.appTemp);
  if (result.isFailure()) {
    removeTree(folders.appTemp);
    return result;
  }
  putInPlace(folders.appTemp, folders.app);
  logMessage("[Extractor] Renaming App folder to %s\n", folders.app.c_str());
  return result;
}

}  // namespace quillory
