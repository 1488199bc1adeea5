#include "java/jre_download.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <string_view>

#include "formats/downloads.h"
#include "formats/hash_while_written.h"
#include "formats/update_url.h"
#include "formats/whole_archive.h"
#include "install/version_folders.h"
#include "java/jre_inspection.h"
#include "support/files.h"
#include "support/log.h"
#include "support/owned.h"
#include "support/spawner.h"

namespace quillory {
namespace {

// A runtime may be large, and a line slow, so only what no runtime ever was is an end: a server
// that sends without one fills the disk otherwise.
constexpr DownloadLimits kArchiveLimits = {.maxBytes = 4LL << 30, .totalSeconds = 0};

// True when a whole file arrived. What an earlier start left there is never taken for it.
bool download(const std::string& url, const std::string& destination,
              const DownloadLimits& limits) {
  removeTree(destination);
  downloadFile(url.c_str(), destination.c_str(), limits);
  struct stat info = {};
  return stat(destination.c_str(), &info) == 0;
}

// What is fetched, from where, and what a person is shown meanwhile.
struct Fetch {
  const JrePlace& place;
  const JreServer& server;
  const ArchiveTools& tools;
  const FetchDisplay& display;
};

// Downloads with the splash in front; where nothing comes, it is taken down for good.
bool downloadInFront(const Fetch& fetch, const std::string& url, const std::string& path,
                     const DownloadLimits& limits, const char* failure) {
  if (download(url, path, limits)) {
    fetch.display.showIndefiniteProgress();
    return true;
  }
  fetch.display.takeDown();
  logError("%s", failure);
  return false;
}

// Whether the file begins as a web page does. No version does.
bool isWebPage(std::FILE* file) {
  constexpr std::string_view kBeforeText = " \t\r\n\xEF\xBB\xBF";
  std::rewind(file);
  int c = std::fgetc(file);
  while (c != EOF && kBeforeText.find(static_cast<char>(c)) != std::string_view::npos)
    c = std::fgetc(file);
  return c == '<';
}

std::optional<std::string> downloadVersion(const Fetch& fetch) {
  const OwnedText now(allocTimeMillisString());
  const std::string name = versionFileName(fetch.place.name.text());
  const std::string url = fetch.server.url + escapedForUrl(name) + "?time=" + now.get();
  const std::string path = fetch.server.versionFileFolder + '/' + name;
  fetch.display.show();
  logMessage("[JREDownload] Fetching JRE Version from %s\n", url.c_str());
  if (!downloadInFront(fetch, url, path, kVersionFileLimits,
                       "[JREDownload] Failed to download JRE version file\n"))
    return std::nullopt;
  logMessage("[JREDownload] JRE version downloaded OK [%s]\n", path.c_str());

  const OwnedFile file(std::fopen(path.c_str(), "r"));
  if (file == nullptr)
    logMessage("[JREDownload] ************************** Unable to open version file! [%d]\n",
               errno);
  std::optional<std::string> version = readJreVersion(file.get());
  // Only told: what a page begins with is a version like others, of which there is no archive.
  if (file != nullptr && isWebPage(file.get()))
    logError(
        "[JREDownload] A web page came in the place of the version file. Does this network ask for "
        "a login, or a proxy stand in between?\n");
  return version;
}

bool downloadArchive(const Fetch& fetch, const std::string& version, const std::string& packed) {
  const std::string url =
      fetch.server.url + escapedForUrl(releaseArchiveName(fetch.place.name.text(), version));
  fetch.display.show();
  logMessage("[JREDownload] Downloading JRE\n");
  logMessage("[JREDownload] JRE archive is at %s\n", url.c_str());
  if (!downloadInFront(fetch, url, packed, kArchiveLimits,
                       "[JREDownload] Failed to download JRE\n"))
    return false;
  logMessage("[JREDownload] JRE Downloaded OK, will extract\n");
  return true;
}

// The digest that was begun meanwhile; nothing when the archive could not be decompressed.
std::optional<BegunDigest> decompress(const ArchiveTools& tools, const std::string& packed,
                                      const std::string& archive) {
  const OwnedSpawner spawner =
      spawnerOf({tools.lzmaTool.c_str(), "d", packed.c_str(), archive.c_str()});
  logMessage("[JREDownload] Decompressing JRE archive\n");
  HashWhileWritten hashing(archive);
  if (runSpawnerAndWait(spawner.get()) == 0) return hashing.finish();
  logError("[JREDownload] Failed to decompress JRE archive\n");
  return std::nullopt;
}

ExtractionResult extract(const Fetch& fetch, const std::string& version, const std::string& folder,
                         const std::string& archive, const BegunDigest& begun) {
  const std::string unpack200 = unpack200Of(folder);
  logMessage("[JREDownload] Extracting JRE archive to %s\n", folder.c_str());
  return extractAllOf(unpack200.c_str(), archive, folder,
                      fetch.tools.trustIn(fetch.place.name.text(), version), begun);
}

// Whether what was extracted is a JRE with a version.
bool isComplete(const std::string& version, const std::string& folder) {
  // Found out only now, by intent: a server may have an archive without a version.
  if (version.empty()) {
    logError("[JREDownload] Failed to detect or download a JRE (no jre version)\n");
    return false;
  }
  // A failed signature leaves an empty folder, which must not be installed as a JRE.
  if (!holdsJava(folder)) {
    logError("[JREDownload] The downloaded archive holds no usable JRE\n");
    return false;
  }
  return true;
}

// What a step that failed without an extraction comes to.
constexpr std::optional<int> kFailed = kExitFailure;

// Fills `folder` with the JRE. When a step fails, the status with which the launcher ends.
std::optional<int> fetchInto(const Fetch& fetch, const std::string& version,
                             const std::string& folder) {
  const std::string archive = archiveName(folder + "/JREArchive");
  const std::string packed = packedArchiveName(folder + "/JREArchive");
  if (!downloadArchive(fetch, version, packed)) return kFailed;
  const std::optional<BegunDigest> begun = decompress(fetch.tools, packed, archive);
  if (!begun) return kFailed;
  const ExtractionResult extracted = extract(fetch, version, folder, archive, *begun);
  if (extracted.isFailure()) return exitStatusOf(extracted);
  unlink(packed.c_str());
  logMessage("[JREDownload] Done extracting JRE archive\n");
  logMessage("[JREDownload] Regenerating jsa...\n");
  regenerateSharedArchive(folder);
  logMessage("[JREDownload] Downloaded JRE is now ready.\n");
  return isComplete(version, folder) ? std::nullopt : kFailed;
}

}  // namespace

std::optional<std::string> readJreVersion(std::FILE* file) {
  std::string version;
  logMessage("[JREDownload] Extracting version: ");
  for (int c = file == nullptr ? EOF : std::fgetc(file); c != EOF; c = std::fgetc(file)) {
    if (kVersionEnds.find(static_cast<char>(c)) != std::string_view::npos) {
      logMessage("\n[JREDownload] Spaces in version file, assuming EOF\n");
      break;
    }
    if (version.size() == kMaxVersionLength) {
      logMessage("\n[JREDownload] Version invalid (too long)\n");
      return std::nullopt;
    }
    logMessage("%c", c);
    version += static_cast<char>(c);
  }
  logMessage("\n");
  logMessage("[JREDownload] JRE Version is %s\n", version.c_str());
  return version;
}

JreOutcome<FetchedJre> downloadJre(const JrePlace& place, const JreServer& server,
                                   const ArchiveTools& tools, const FetchDisplay& display) {
  const Fetch fetch = {place, server, tools, display};
  logMessage("[JREDownload] Failed to pick up any existing system JRE, will download\n");
  const std::optional<std::string> version = downloadVersion(fetch);
  if (!version) return {};
  // The version comes from the network, and becomes part of a path.
  if (!isUsableAsJre(place.name.text(), *version)) {
    logError("[JREDownload] JRE version '%s' cannot be part of a folder name\n", version->c_str());
    return {};
  }
  const std::string folder = temporaryFolder(place.masterFolder);
  makeNewDir(folder.c_str());
  const std::optional<int> failure = fetchInto(fetch, *version, folder);
  if (!failure) return {.provided = FetchedJre{*version, folder}};
  removeTree(folder);
  return {.exitStatus = *failure};
}

}  // namespace quillory
