#include "update/archive_source.h"

#include <cerrno>
#include <cstring>
#include <optional>

#include "formats/sha256.h"
#include "lzma/lzma_alone.h"
#include "support/files.h"
#include "support/log.h"
#include "support/new_file.h"
#include "support/owned.h"
#include "support/paths.h"
#include "support/plain_file.h"
#include "update/cancel.h"
#include "update/delta.h"
#include "update/update_folder.h"

namespace quillory::update {
namespace {

constexpr std::size_t kInputBuffer = 256 * 1024;

void tellStep(const LoadRequest& request, const char* what, const ReleaseComponent& component) {
  request.lines(Line("step").with("what", what).with("component", component.role));
}

FetchResult fetchCounted(const LoadRequest& request, const ReleaseFile& file,
                         LoadProgress& progress) {
  const auto tell = [&](std::int64_t bytes) {
    progress.progress.tell(progress.doneBefore + bytes);
  };
  return fetchFile(request.transport, request.servers, file,
                   request.installation.inUpdates(kDownloadsFolder), tell);
}

// A packed archive on its way to a plain one: no more comes out than the list names.
class Unpacking {
 public:
  Unpacking(const ReleaseComponent& component, const std::string& path)
      : component_(component), out_(path) {}

  FetchResult run(const std::string& packed) {
    const OwnedFile in = openPlainFile(packed);
    if (!in || !out_.isOpen()) return failed(in ? out_.error() : errno);
    LzmaCoder coder = LzmaCoder::decoder(
        [this](const unsigned char* bytes, std::size_t size) { return take(bytes, size); });
    std::vector<char> buffer(kInputBuffer);
    while (const std::size_t size = std::fread(buffer.data(), 1, buffer.size(), in.get())) {
      if (isCancelled) return {FetchEnd::kCancelled, "cancelled"};
      if (!coder.write(buffer.data(), size)) return brokenBy(coder);
    }
    if (!coder.finish()) return brokenBy(coder);
    if (!out_.close()) return failed(out_.error());
    if (length_ != component_.plainLength || hash_.hex() != component_.plainSha256)
      return {FetchEnd::kFailed, component_.archive.name + " holds another archive than it should"};
    return {FetchEnd::kComplete, ""};
  }

 private:
  bool take(const unsigned char* bytes, std::size_t size) {
    length_ += static_cast<std::int64_t>(size);
    if (length_ > component_.plainLength) return false;
    hash_.update({reinterpret_cast<const char*>(bytes), size});
    return out_.write(bytes, size);
  }

  FetchResult brokenBy(const LzmaCoder& coder) const {
    if (out_.error() != 0) return failed(out_.error());
    if (length_ > component_.plainLength)
      return {FetchEnd::kFailed, component_.archive.name + " holds more than it should"};
    return {FetchEnd::kFailed, component_.archive.name + ": " + coder.error()};
  }

  FetchResult failed(int error) const {
    return {FetchEnd::kNotWritten, out_.path() + ": " + std::strerror(error)};
  }

  const ReleaseComponent& component_;
  NewFile out_;
  Sha256 hash_;
  std::int64_t length_ = 0;
};

FetchResult byWhole(const LoadRequest& request, const ReleaseComponent& component,
                    const std::string& path, LoadProgress& progress) {
  const FetchResult fetched = fetchCounted(request, component.archive, progress);
  if (fetched.end != FetchEnd::kComplete) return fetched;
  progress.doneBefore += component.archive.length;
  tellStep(request, "unpack", component);
  const std::string packed =
      partPath(request.installation.inUpdates(kDownloadsFolder), component.archive);
  return Unpacking(component, path).run(packed);
}

DeltaTask taskOf(const LoadRequest& request, const PlannedComponent& planned,
                 const std::string& path) {
  const Installation& its = request.installation;
  const DeltaRoad& road = *planned.road;
  DeltaTask task;
  task.delta = partPath(its.inUpdates(kDownloadsFolder), road.delta.file);
  task.installedFolder = joinPath(its.masterFolder, road.baseFolder);
  task.home = road.home.empty() ? "" : joinPath(its.masterFolder, road.home);
  task.out = path;
  task.component = planned.component.name;
  task.from = road.delta.baseVersion;
  task.to = planned.component.version;
  task.restoredLength = planned.component.plainLength;
  task.restoredSha256 = planned.component.plainSha256;
  task.progress = [](std::int64_t) { return !isCancelled; };
  return task;
}

// Nothing where the whole archive has to come.
std::optional<FetchResult> byDelta(const LoadRequest& request, const PlannedComponent& planned,
                                   const std::string& path, LoadProgress& progress) {
  const ReleaseFile& file = planned.road->delta.file;
  const FetchResult fetched = fetchCounted(request, file, progress);
  if (fetched.end == FetchEnd::kFailed) {
    logMessage("[Update] The delta %s does not come: the whole archive is loaded\n",
               file.name.c_str());
    return std::nullopt;
  }
  if (fetched.end != FetchEnd::kComplete) return fetched;
  progress.doneBefore += file.length;
  tellStep(request, "restore", planned.component);
  const DeltaResult undone = undoDelta(taskOf(request, planned, path));
  switch (undone.end) {
    case DeltaEnd::kRestored:
      return FetchResult{FetchEnd::kComplete, ""};
    case DeltaEnd::kNotWritten:
      return FetchResult{FetchEnd::kNotWritten, undone.reason};
    case DeltaEnd::kCancelled:
      return FetchResult{FetchEnd::kCancelled, undone.reason};
    default:
      logMessage("[Update] %s is of no use here, the whole archive is loaded: %s\n",
                 file.name.c_str(), undone.reason.c_str());
      return std::nullopt;
  }
}

}  // namespace

FetchResult provideArchive(const LoadRequest& request, const PlannedComponent& planned,
                           const std::string& path, LoadProgress& progress) {
  if (planned.road) {
    if (const auto result = byDelta(request, planned, path, progress)) return *result;
    progress.total += planned.component.archive.length;
    progress.progress.expect(progress.total);
  }
  return byWhole(request, planned.component, path, progress);
}

}  // namespace quillory::update
