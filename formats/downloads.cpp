#include "formats/downloads.h"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>

#include "formats/update_url.h"
#include "formats/version_file_format.h"
#include "support/clock.h"
#include "support/log.h"
#include "support/owned.h"
#include "support/paths.h"
#include "support/platform.h"

namespace quillory {
namespace {

constexpr std::size_t kTimeTextCapacity = 101;

bool isSuccess(int httpStatus) { return httpStatus == 0 || httpStatus / 100 == 2; }

}  // namespace

int downloadFile(const char* url, const char* destPath) {
  unlink(destPath);
  // Where updates are switched off nobody is asked, not even a name server or a proxy.
  if (platformCalls.downloadFile == nullptr || isInvalidUpdateURL(url)) {
    logToSystem("Download failed\n");
    return 1;
  }
  platformCalls.downloadFile(url, destPath);
  return 1;
}

char* allocTimeMillisString() {
  OwnedText text(static_cast<char*>(std::calloc(kTimeTextCapacity, 1)));
  if (text == nullptr) return nullptr;
  std::snprintf(text.get(), kTimeTextCapacity, "%lu",
                static_cast<unsigned long>(getCurrentTimeMillis()));
  return text.release();
}

void downloadVersionFile(const char* destFolder, const char* updateURL, const char* name) {
  if (isInvalidUpdateURL(updateURL)) {
    logMessage("[Extractor] Invalid Update URL. Skipping...\n");
    return;
  }
  const OwnedText now(allocTimeMillisString());
  const std::string file = versionFileName(name);
  char localPath[kPathCapacity];
  setPath(localPath, destFolder, file.c_str());
  const std::string address = (updateURL == nullptr ? "" : updateURL) + file + "?time=" + now.get();
  downloadFile(address.c_str(), localPath);
}

std::string partialDownloadPath(const std::string& destPath) {
  return destPath + '.' + std::to_string(getpid()) + ".part";
}

bool keepDownload(const std::string& destPath, int httpStatus) {
  const std::string partial = partialDownloadPath(destPath);
  if (isSuccess(httpStatus) && std::rename(partial.c_str(), destPath.c_str()) == 0) return true;
  unlink(partial.c_str());
  return false;
}

void discardDownload(const std::string& destPath) { unlink(partialDownloadPath(destPath).c_str()); }

}  // namespace quillory
