#include "update/fetch.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <optional>

#include "formats/sha256.h"
#include "formats/update_url.h"
#include "support/clock.h"
#include "support/files.h"
#include "support/folder_listing.h"
#include "support/log.h"
#include "support/output_file.h"
#include "support/paths.h"
#include "support/plain_file.h"
#include "update/cancel.h"

namespace quillory::update {
namespace {

constexpr int kWhole = 200;
constexpr int kPart = 206;
constexpr int kRangeNotSatisfiable = 416;
constexpr std::size_t kMaxOrigin = 16 * 1024;

// Beside a part: the address that it comes from and the ETag that it had there, a line each.
std::string originPath(const std::string& downloads, const ReleaseFile& file) {
  return joinPath(downloads, file.sha256 + ".from");
}

// The part of a file, and the sink that adds to it.
class Part : public TransferSink {
 public:
  Part(const std::string& downloads, const ReleaseFile& file, const FetchProgress& progress)
      : path_(partPath(downloads, file)),
        origin_(originPath(downloads, file)),
        file_(file),
        progress_(progress) {}
  ~Part() override {
    if (descriptor_ >= 0) close(descriptor_);
  }
  Part(const Part&) = delete;
  Part& operator=(const Part&) = delete;

  bool open() {
    descriptor_ =
        ::open(path_.c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC, 0600);
    struct stat found {};
    if (descriptor_ < 0 || fstat(descriptor_, &found) != 0 || !S_ISREG(found.st_mode))
      return failed();
    have_ = found.st_size;
    if (have_ > file_.length) return restart();
    progress_(have_);
    return true;
  }

  std::int64_t have() const { return have_; }
  bool isComplete() const { return have_ == file_.length; }
  /// Of what cannot be written; 0 while all can.
  int error() const { return error_; }
  /// Why the sink has taken no more, where the disk is not to blame.
  const std::string& objection() const { return objection_; }
  const std::string& path() const { return path_; }

  /// The ETag under which the part comes from `url`; "" where that is not known.
  std::string validatorFor(const std::string& url) const {
    const std::string text = readPlainFile(origin_, kMaxOrigin).value_or("");
    if (!text.starts_with(url + '\n')) return "";
    const std::string eTag = text.substr(url.size() + 1);
    // A weak one is not for ranges.
    return eTag.starts_with("W/") ? "" : eTag;
  }

  void aim(const std::string& url) {
    url_ = url;
    objection_.clear();
  }

  /// Nothing of it stays.
  bool restart() {
    have_ = 0;
    unlink(origin_.c_str());
    if (ftruncate(descriptor_, 0) != 0) return failed();
    progress_(0);
    return true;
  }

  void remove() {
    unlink(path_.c_str());
    unlink(origin_.c_str());
  }

  bool begin(const TransferHead& head) override {
    const bool goesOn = head.status == kPart;
    if (goesOn && head.from != have_)
      return object("the server sends another part than was asked for");
    if (!goesOn && !restart()) return false;
    if (head.length >= 0 && have_ + head.length != file_.length)
      return object("the server has a file of another length");
    noteOrigin(head.eTag);
    return true;
  }

  bool take(const char* bytes, std::size_t size) override {
    if (static_cast<std::int64_t>(size) > file_.length - have_)
      return object("the server sends more than there should be");
    while (size > 0) {
      const ssize_t written = pwrite(descriptor_, bytes, size, have_);
      if (written < 0 && errno == EINTR) continue;
      if (written < 0) return failed();
      bytes += written;
      size -= static_cast<std::size_t>(written);
      have_ += written;
    }
    progress_(have_);
    return true;
  }

 private:
  bool failed() {
    error_ = errno;
    return false;
  }
  bool object(const char* why) {
    objection_ = why;
    return false;
  }

  // Lost with the power it costs a range without a condition, and the SHA-256 decides.
  void noteOrigin(const std::string& eTag) {
    if (eTag.empty()) return;
    OutputFile file(origin_, 0600, Durability::kLeftToTheSystem);
    const std::string text = url_ + '\n' + eTag;
    if (file.isOpen() && file.write(text.data(), text.size())) (void)file.commit();
  }

  std::string path_;
  std::string origin_;
  const ReleaseFile& file_;
  const FetchProgress& progress_;
  std::string url_;
  std::string objection_;
  int descriptor_ = -1;
  int error_ = 0;
  std::int64_t have_ = 0;
};

std::string statusText(int status) {
  return "the server answers with status " + std::to_string(status);
}

FetchResult notWritten(const Part& part) {
  return {FetchEnd::kNotWritten, part.path() + ": " + std::strerror(part.error())};
}

// One transfer; nothing while the next try may bring more of the file.
std::optional<FetchResult> tryOnce(Transport& transport, const std::string& url,
                                   const ReleaseFile& file, Part& part, std::string& reason) {
  part.aim(url);
  TransferRequest request{.url = url, .from = part.have(), .mostBytes = file.length};
  if (request.from > 0) request.ifRange = part.validatorFor(url);
  const TransferResult result = transport.get(request, part);
  if (part.error() != 0) return notWritten(part);
  if (result.end == TransferEnd::kCancelled || isCancelled)
    return FetchResult{FetchEnd::kCancelled, "cancelled"};
  reason = part.objection().empty() ? result.reason : part.objection();
  if (result.end != TransferEnd::kComplete) {
    const bool mayHelp =
        result.end == TransferEnd::kBroken || result.end == TransferEnd::kUnreachable;
    if (mayHelp) return std::nullopt;
    // A part of something else, which must not be gone on with.
    if (result.end != TransferEnd::kRefused && !part.restart()) return notWritten(part);
    return FetchResult{FetchEnd::kFailed, reason};
  }
  if (result.status == kRangeNotSatisfiable) {
    reason = statusText(result.status);
    if (!part.restart()) return notWritten(part);
    return std::nullopt;
  }
  if (result.status != kWhole && result.status != kPart) {
    reason = statusText(result.status);
    return FetchResult{FetchEnd::kFailed, reason};
  }
  if (!part.isComplete()) {
    reason = "the transfer ended before its end";
    return std::nullopt;
  }
  return FetchResult{FetchEnd::kComplete, ""};
}

FetchResult fetchFrom(Transport& transport, const std::string& url, const ReleaseFile& file,
                      Part& part) {
  std::string reason;
  for (int vain = 0; vain < kMostVainTries;) {
    const std::int64_t before = part.have();
    const std::optional<FetchResult> ended = tryOnce(transport, url, file, part, reason);
    if (ended) return *ended;
    vain = part.have() > before ? 0 : vain + 1;
    logMessage("[Update] %s: %s, at byte %lld\n", url.c_str(), reason.c_str(),
               static_cast<long long>(part.have()));
    if (vain < kMostVainTries) timeCalls.sleepMicros(kRetryMicros);
  }
  return {FetchEnd::kFailed, reason};
}

bool isThatFile(const std::string& path, const ReleaseFile& file) {
  const std::optional<HashedFile> found = hashFile(path);
  return found && found->length == file.length && found->sha256 == file.sha256;
}

// From one server, if need be twice: what earlier runs have left may be damaged.
FetchResult fetchWhole(Transport& transport, const std::string& server, const ReleaseFile& file,
                       Part& part) {
  const std::string url = server + escapedForUrl(file.name);
  const bool goesOn = part.have() > 0;
  FetchResult result = part.isComplete() ? FetchResult{FetchEnd::kComplete, ""}
                                         : fetchFrom(transport, url, file, part);
  if (result.end != FetchEnd::kComplete || isThatFile(part.path(), file)) return result;
  if (!part.restart()) return notWritten(part);
  if (goesOn) return fetchWhole(transport, server, file, part);
  return {FetchEnd::kFailed, "the server has another file under this name"};
}

}  // namespace

std::string partPath(const std::string& downloads, const ReleaseFile& file) {
  return joinPath(downloads, file.sha256 + ".part");
}

FetchResult fetchFile(Transport& transport, const std::vector<std::string>& servers,
                      const ReleaseFile& file, const std::string& downloads,
                      const FetchProgress& progress) {
  Part part(downloads, file, progress);
  if (!part.open()) return notWritten(part);
  FetchResult result{FetchEnd::kFailed, "there is no update URL"};
  for (const std::string& server : servers) {
    result = fetchWhole(transport, server, file, part);
    if (result.end != FetchEnd::kFailed) return result;
    result.reason = server + file.name + ": " + result.reason;
    logMessage("[Update] Not fetched: %s\n", result.reason.c_str());
  }
  return result;
}

void clearDownloads(const std::string& downloads, const std::vector<ReleaseFile>& files) {
  for (const std::string& name : namesIn(downloads)) {
    bool isWanted = false;
    for (const ReleaseFile& file : files)
      isWanted = isWanted || name.starts_with(file.sha256 + '.');
    if (!isWanted) removeTree(joinPath(downloads, name));
  }
}

namespace {

class TextSink : public TransferSink {
 public:
  explicit TextSink(TextFetch& fetch) : fetch_(fetch) {}
  bool begin(const TransferHead& head) override {
    fetch_.bytes.clear();
    fetch_.eTag = head.eTag;
    return true;
  }
  bool take(const char* bytes, std::size_t size) override {
    fetch_.bytes.append(bytes, size);
    return true;
  }

 private:
  TextFetch& fetch_;
};

}  // namespace

TextFetch fetchText(Transport& transport, const std::string& url, std::size_t mostBytes,
                    const std::string& ifNoneMatch) {
  TextFetch fetch;
  TextSink sink(fetch);
  fetch.result = transport.get(
      {.url = url, .ifNoneMatch = ifNoneMatch, .mostBytes = static_cast<std::int64_t>(mostBytes)},
      sink);
  return fetch;
}

}  // namespace quillory::update
