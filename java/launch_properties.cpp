#include "java/launch_properties.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <utility>

#include "formats/launch_properties_format.h"
#include "formats/record_stream.h"
#include "formats/remembered_options_format.h"
#include "formats/update_url.h"
#include "install/version_folders.h"
#include "support/clock.h"
#include "support/log.h"
#include "support/new_file.h"
#include "support/owned.h"
#include "support/paths.h"
#include "support/platform.h"
#include "support/url_request.h"

namespace quillory {
namespace {

constexpr int kRetries = 5;
constexpr std::uint64_t kRetryPauseMicros = 500'000'000;
constexpr int kNameTurns = 100;
constexpr std::uint64_t kNamePauseMicros = 1000;
constexpr int kLoggedValueLength = 99;

/// Whether there is a file, also one that cannot be opened (which doesFileExist() would deny).
bool isThere(const std::string& path) {
  struct stat status;
  return stat(path.c_str(), &status) == 0;
}

// The waits between the attempts for one file, and the window that tells of them.
class RetryWaits {
 public:
  RetryWaits(bool isShown, std::string text) : isShown_(isShown), text_(std::move(text)) {}
  ~RetryWaits() {
    if (isUp_) platformCalls.notice.takeDown();
  }
  RetryWaits(const RetryWaits&) = delete;
  RetryWaits& operator=(const RetryWaits&) = delete;

  void wait() {
    if (isShown_ && !isUp_) {
      isUp_ = true;
      platformCalls.notice.show(text_.c_str());
    }
    timeCalls.sleepMicros(kRetryPauseMicros);
  }

 private:
  const bool isShown_;
  const std::string text_;
  bool isUp_ = false;
};

std::string waitingFor(const std::string& what, const std::string& where) {
  return "The application cannot be started yet: " + what + '\n' + where +
         "\nIt is tried again every few minutes.";
}

OwnedFile openRememberedOptions(const std::string& path, bool showsWaits) {
  OwnedFile file(std::fopen(path.c_str(), "rb"));
  if (file || !isThere(path)) return file;
  RetryWaits waits(showsWaits, waitingFor("this file cannot be opened.", path));
  for (int attempt = 0; attempt < kRetries; ++attempt) {
    logMessage("[Extractor] LSO file does exist. Retrying (%d)...", attempt);
    file.reset(std::fopen(path.c_str(), "rb"));
    if (file) return file;
    // The Java side may be writing it. The wait is this long by intent, also after the last
    // attempt.
    waits.wait();
  }
  return file;
}

void logLaunchProperty(const char* key, const std::string& value) {
  if (value.size() > kLoggedValueLength) {
    logMessage("[Extractor] Launch Prop: %s = %.*s...\n", key, kLoggedValueLength, value.c_str());
  } else {
    logMessage("[Extractor] Launch Prop: %s = %s\n", key, value.c_str());
  }
}

/// Whether this start alone has the file of that name now, or nobody can.
bool isOurs(const std::string& path) {
  const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
  if (file < 0) return errno != EEXIST;
  close(file);
  return true;
}

/// A name that no other start has: of the same millisecond and folder there may be one, and its
/// Java takes the file away when it has read it. After some turns what lies there is taken for left
/// behind, and written anew.
std::string ownPropertiesPath(const std::string& folder) {
  std::string path = newLaunchPropertiesPath(folder);
  for (int turn = 0; turn < kNameTurns && !isOurs(path); ++turn) {
    timeCalls.sleepMicros(kNamePauseMicros);
    path = newLaunchPropertiesPath(folder);
  }
  return path;
}

/// Of the same millisecond and folder there may be the file of another start, or something that
/// another user has put there: neither is written through.
NewFile newPropertiesFile(const std::string& folder, const char* how) {
  const std::string path = ownPropertiesPath(folder);
  logMessage("[%s] Writing launch properties to %s\n", how, path.c_str());
  return NewFile(path);
}

NewFile openNewPropertiesFile(const PropertyBlock& block, const std::string& folder,
                              bool showsWaits) {
  NewFile first = newPropertiesFile(folder, "Extractor");
  logMessage("[Extractor] Launch properties length is %d\n", static_cast<int>(propsLen(block)));
  if (first.isOpen()) return first;
  RetryWaits waits(showsWaits, waitingFor("no file can be made in this folder.", folder));
  for (int attempt = 0; attempt < kRetries; ++attempt) {
    NewFile file = newPropertiesFile(folder, "Retry");
    if (file.isOpen()) return file;
    waits.wait();
  }
  return first;
}

std::nullopt_t noProperties() {
  logError("Unable to write Launch Properties file! Cannot run!\n");
  return std::nullopt;
}

}  // namespace

void addLaunchTimeProperties(const LaunchFacts& facts, PropertyBlock& block) {
  addStaticProperty(block, "update_url", facts.updateUrl);
  if (facts.dynamicUpdateUrl.has_value() && facts.updateUrl == kDynamicUpdateUrl)
    addDynamicProperty(block, "update_url", *facts.dynamicUpdateUrl);
  addStaticProperty(block, "app_dir", facts.appFolder);
  addStaticProperty(block, "jre_name", facts.jreNameProperty);
  addStaticProperty(block, "launched_from_dynprops", facts.launchedFromDynprops);

  const char* requested = getRequestedURL();
  if (requested == nullptr) return;
  // A copy: another request may come at any time, and replaces the text behind the pointer.
  const std::string url = requested;
  logMessage("[Extractor] Setting URL request dynamic property to '%s'\n", url.c_str());
  addDynamicProperty(block, "url_req", url);
}

std::vector<std::string> readRememberedOptions(const std::string& lsoPath, PropertyBlock& block,
                                               bool showsWaits) {
  std::vector<std::string> options;
  logMessage("[Extractor] Checking LSO file\n");
  if (lsoPath.empty()) {
    logError("Not a private JRE (no need to check for LSO file)\n");
    return options;
  }
  logMessage("[Extractor] Reading %s\n", lsoPath.c_str());
  const OwnedFile file = openRememberedOptions(lsoPath, showsWaits);
  if (!file) {
    logError("JRE LSO file does not exist\n");
    return options;
  }
  logMessage("[Extractor] JRE LSO file exists\n");
  const long count = readLong(file.get(), kRememberedCountRecord);
  logMessage("[Extractor] Found %ld JVM Options\n", count);
  addStaticProperty(block, "jvm_options_count", std::to_string(count));
  for (long i = 0; i < count && !isAtEnd(file.get()); ++i) {
    const std::string option = readText(file.get(), kRememberedEntryRecord);
    const std::string key = "jvm_options_" + std::to_string(i);
    addStaticProperty(block, key, option);
    logLaunchProperty(key.c_str(), option);
    options.push_back(option);
  }
  return options;
}

std::string newLaunchPropertiesPath(const std::string& folder) {
  std::array<char, 64> stamp;
  std::snprintf(stamp.data(), stamp.size(), "%lu-%ld",
                static_cast<unsigned long>(getCurrentTimeMillis()), countFolderEntries(folder));
  const char* separator = folder.ends_with('/') ? "" : "/";
  return folder + separator + kLaunchPropertiesPrefix + stamp.data();
}

std::optional<std::string> writeLaunchProperties(const PropertyBlock& block,
                                                 const std::string& folder, bool showsWaits) {
  logMessage("[Extractor] Writing launch properties file\n");
  NewFile file = openNewPropertiesFile(block, folder, showsWaits);
  if (!file.isOpen()) return noProperties();
  logMessage("[Extractor] Writing to file\n");
  file.write(block.bytes().data(), propsLen(block));
  // What could not be written whole is removed: half of the properties would be worse than none.
  if (!file.close()) return noProperties();
  logMessage("[Extractor] Finished writing launch properties file\n");
  return file.path();
}

}  // namespace quillory
