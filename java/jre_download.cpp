#include "java/jre_download.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>

#include "formats/archive.h"
#include "formats/downloads.h"
#include "install/version_folders.h"
#include "java/jre_inspection.h"
#include "support/exit_status.h"
#include "support/files.h"
#include "support/log.h"
#include "support/owned.h"
#include "support/paths.h"
#include "support/spawner.h"

namespace quillory {
namespace {

[[noreturn]] void giveUp(const std::string& folder, const std::string& message) {
  logError("%s", message.c_str());
  if (!folder.empty()) removeTree(folder.c_str());
  std::exit(kExitFailure);
}

// True when a whole file arrived. What an earlier start left there is never taken for it.
bool download(const std::string& url, const std::string& destination) {
  removeTree(destination.c_str());
  downloadFile(url.c_str(), destination.c_str());
  struct stat info = {};
  return stat(destination.c_str(), &info) == 0;
}

std::string remoteName(const JreRequest& request) {
  return request.updateUrl + "Quillory-" + request.jreName + '-';
}

std::string downloadVersion(const JreRequest& request) {
  const OwnedText now(allocTimeMillisString());
  const std::string url =
      request.updateUrl + versionFileName(request.jreName) + "?time=" + now.get();
  const std::string path = request.versionFileFolder + '/' + versionFileName(request.jreName);
  request.display.show();
  logMessage("[JREDownload] Fetching JRE Version from %s\n", url.c_str());
  if (!download(url, path)) {
    request.display.takeDown();
    giveUp("", "[JREDownload] Failed to download JRE version file\n");
  }
  request.display.showIndefiniteProgress();
  logMessage("[JREDownload] JRE version downloaded OK [%s]\n", path.c_str());

  const OwnedFile file(std::fopen(path.c_str(), "r"));
  if (file == nullptr)
    logMessage("[JREDownload] ************************** Unable to open version file! [%d]\n",
               errno);
  return readJreVersion(file.get());
}

void downloadArchive(const JreRequest& request, const std::string& version,
                     const std::string& folder, const std::string& packed) {
  const std::string url = remoteName(request) + version + "-archive.p2.l2";
  request.display.show();
  logMessage("[JREDownload] Downloading JRE\n");
  logMessage("[JREDownload] JRE archive is at %s\n", url.c_str());
  if (!download(url, packed)) {
    request.display.takeDown();
    giveUp(folder, "[JREDownload] Failed to download JRE\n");
  }
  request.display.showIndefiniteProgress();
  logMessage("[JREDownload] JRE Downloaded OK, will extract\n");
}

void decompress(const JreRequest& request, const std::string& folder, const std::string& packed,
                const std::string& archive) {
  const OwnedSpawner spawner =
      spawnerOf({request.lzmaTool.c_str(), "d", packed.c_str(), archive.c_str()});
  logMessage("[JREDownload] Decompressing JRE archive\n");
  if (runSpawnerAndWait(spawner.get()) != 0)
    giveUp(folder, "[JREDownload] Failed to decompress JRE archive\n");
}

void extract(const JreRequest& request, const std::string& folder, const std::string& archive) {
  const OwnedText unpack200(getUnpack200Executable(folder.c_str()));
  logMessage("[JREDownload] Extracting JRE archive to %s\n", folder.c_str());
  extractArchive(unpack200.get(), archive.c_str(), folder.c_str(), request.key);
}

}  // namespace

std::string readJreVersion(std::FILE* file) {
  std::string version;
  logMessage("[JREDownload] Extracting version: ");
  for (int c = file == nullptr ? EOF : std::fgetc(file); c != EOF; c = std::fgetc(file)) {
    if (c == '\n' || c == '\r' || c == ' ') {
      logMessage("\n[JREDownload] Spaces in version file, assuming EOF\n");
      break;
    }
    if (version.size() == kMaxVersionLength) {
      logMessage("\n[JREDownload] Version invalid (too long)\n");
      std::exit(kExitFailure);
    }
    logMessage("%c", c);
    version += static_cast<char>(c);
  }
  logMessage("\n");
  logMessage("[JREDownload] JRE Version is %s\n", version.c_str());
  return version;
}

DownloadedJre downloadJre(const JreRequest& request) {
  logMessage("[JREDownload] Failed to pick up any existing system JRE, will download\n");
  const std::string version = downloadVersion(request);
  // The version comes from the network, and becomes part of a path.
  if (!isUsableInFolderName(request.jreName, version))
    giveUp("", std::string("[JREDownload] JRE version '") + version.c_str() +
                   "' cannot be part of a folder name\n");

  char buffer[kPathCapacity];
  const std::string folder = makeAppTempFolder(buffer, request.masterFolder.c_str());
  makeDir(folder.c_str());
  const std::string archive = folder + "/JREArchive.p2";
  const std::string packed = archive + ".l2";
  downloadArchive(request, version, folder, packed);
  decompress(request, folder, packed, archive);
  extract(request, folder, archive);
  unlink(packed.c_str());
  logMessage("[JREDownload] Done extracting JRE archive\n");
  logMessage("[JREDownload] Regenerating jsa...\n");
  regenerateSharedArchive(folder.c_str());
  logMessage("[JREDownload] Downloaded JRE is now ready.\n");

  // Found out only now, by intent: a server may have an archive without a version.
  if (version.empty())
    giveUp(folder, "[JREDownload] Failed to detect or download a JRE (no jre version)\n");
  // A failed signature leaves an empty folder, which must not be installed as a JRE.
  if (!holdsJava(folder.c_str()))
    giveUp(folder, "[JREDownload] The downloaded archive holds no usable JRE\n");
  return {version, folder};
}

}  // namespace quillory
