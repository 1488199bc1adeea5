#include "formats/downloads.h"

#include <strings.h>
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

constexpr DownloadLimits kUnlimited;

bool hasScheme(std::string_view url, std::string_view scheme) {
  if (url.size() <= scheme.size() || url[scheme.size()] != ':') return false;
  return strncasecmp(url.data(), scheme.data(), scheme.size()) == 0;
}

bool isSuccess(int httpStatus) { return httpStatus == 0 || httpStatus / 100 == 2; }

}  // namespace

int downloadFile(const char* url, const char* destPath) {
  return downloadFile(url, destPath, kUnlimited);
}

int downloadFile(const char* url, const char* destPath, const DownloadLimits& limits) {
  unlink(destPath);
  // Where updates are switched off nobody is asked, not even a name server or a proxy.
  if (platformCalls.downloadFile == nullptr || isInvalidUpdateURL(url)) {
    logToSystem("Download failed\n");
    logDownloadFailure(url, platformCalls.downloadFile == nullptr ? "there is no network here"
                                                                  : "updates are switched off");
    return 1;
  }
  platformCalls.downloadFile(url, destPath, limits);
  return 1;
}

void logDownloadFailure(std::string_view url, std::string_view reason) {
  logMessage("[Download] Nothing came: %.*s (%.*s)\n", static_cast<int>(reason.size()),
             reason.data(), static_cast<int>(url.size()), url.data());
}

bool mayRedirect(std::string_view from, std::string_view to) {
  return hasScheme(to, "https") || (hasScheme(to, "http") && !hasScheme(from, "https"));
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
  const std::string address =
      (updateURL == nullptr ? "" : updateURL) + escapedForUrl(file) + "?time=" + now.get();
  downloadFile(address.c_str(), localPath, kVersionFileLimits);
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
