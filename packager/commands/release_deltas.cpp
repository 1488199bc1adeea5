#include "packager/commands/release_deltas.h"

#include <algorithm>
#include <future>
#include <optional>
#include <thread>
#include <utility>
#include <vector>

#include "formats/delta_format.h"
#include "formats/sha256.h"
#include "packager/bytes/work_folder.h"
#include "packager/reading/plain_archive.h"
#include "packager/writing/delta_writer.h"

namespace quillory::pack {
namespace {

// Making one takes several times the memory of both archives: large ones are made one by one.
constexpr std::int64_t kLargestSideBySide = 256 * 1024 * 1024;

struct Job {
  std::size_t component;  ///< its place in the list
  ReleaseComponent base;
  DeltaRequest request;
  std::string packedBase;
  std::string file;
};

// The newest versions before this one, each once.
std::vector<ReleaseComponent> basesOf(const ReleaseComponent& component,
                                      const ReleaseFolder& folder, int most) {
  std::vector<ReleaseComponent> bases;
  for (const ReleaseList& list : folder.lists()) {
    for (const ReleaseComponent& earlier : list.components) {
      const bool isKnown = std::any_of(bases.begin(), bases.end(), [&](const auto& base) {
        return base.version == earlier.version;
      });
      if (earlier.name == component.name && earlier.version != component.version && !isKnown &&
          static_cast<int>(bases.size()) < most) {
        bases.push_back(earlier);
      }
    }
  }
  return bases;
}

bool isThere(const ReleaseFolder& folder, const ReleaseFile& file) {
  const std::optional<HashedFile> found = hashFile(folder / file.name);
  return found && found->length == file.length && found->sha256 == file.sha256;
}

// The delta that an earlier release led from the same base to the same archive.
std::optional<ReleaseDelta> earlierDelta(const ReleaseFolder& folder,
                                         const ReleaseComponent& component,
                                         const ReleaseComponent& base) {
  for (const ReleaseList& list : folder.lists()) {
    const ReleaseComponent* same = componentOf(list, component.role);
    if (same == nullptr || same->plainSha256 != component.plainSha256) {
      continue;
    }
    for (const ReleaseDelta& delta : same->deltas) {
      if (delta.baseSha256 == base.plainSha256 && isThere(folder, delta.file)) {
        return delta;
      }
    }
  }
  return std::nullopt;
}

class DeltaMaking {
 public:
  DeltaMaking(ReleaseList& list, const std::map<std::string, std::string>& plainArchives,
              const ReleaseFolder& folder, const DeltaOptions& options, Reporter& reporter)
      : list_(list),
        plainArchives_(plainArchives),
        folder_(folder),
        options_(options),
        reporter_(reporter) {}

  void run() {
    for (std::size_t i = 0; i < list_.components.size(); ++i) {
      for (const ReleaseComponent& base :
           basesOf(list_.components[i], folder_, options_.versions)) {
        plan(i, base);
      }
    }
    make();
    for (ReleaseComponent& component : list_.components) {
      // The newest base first, whoever was made first.
      std::stable_sort(component.deltas.begin(), component.deltas.end(),
                       [](const ReleaseDelta& a, const ReleaseDelta& b) {
                         return std::stoll(a.baseVersion) > std::stoll(b.baseVersion);
                       });
    }
  }

 private:
  void plan(std::size_t index, const ReleaseComponent& base) {
    ReleaseComponent& component = list_.components[index];
    if (std::optional<ReleaseDelta> delta = earlierDelta(folder_, component, base)) {
      component.deltas.push_back(*std::move(delta));
      return;
    }
    if (!isThere(folder_, base.archive)) {
      reporter_.finding({Severity::kWarning,
                         "delta-base",
                         "the archive of version " + base.version + " of \"" + base.name +
                             "\" is not as it was released: who has that version loads all of the "
                             "new one",
                         {folder_ / base.archive.name, 0},
                         "get it back from your server"});
      return;
    }
    const std::string name = deltaName(component.name, component.version, base.version);
    jobs_.push_back({index,
                     base,
                     {component.role, component.name, base.version, component.version, "",
                      plainArchives_.at(component.role), component.archive.length},
                     folder_ / base.archive.name,
                     name});
  }

  MadeDelta makeOne(const Job& job) const {
    stopIfInterrupted();
    const PlainArchive base(wholeFile(job.packedBase), true);
    DeltaRequest request = job.request;
    request.oldArchive = base.path();
    return writeDelta(request, options_.made + '/' + job.file);
  }

  std::size_t sideBySide() const {
    const bool isSmall = std::all_of(jobs_.begin(), jobs_.end(), [this](const Job& job) {
      return job.base.plainLength + list_.components[job.component].plainLength <
             kLargestSideBySide;
    });
    return isSmall ? std::max(1U, std::thread::hardware_concurrency()) : 1;
  }

  void make() {
    const std::size_t atOnce = sideBySide();
    for (std::size_t first = 0; first < jobs_.size(); first += atOnce) {
      std::vector<std::future<MadeDelta>> running;
      for (std::size_t i = first; i < std::min(first + atOnce, jobs_.size()); ++i) {
        running.push_back(std::async(std::launch::async, [this, i] { return makeOne(jobs_[i]); }));
      }
      for (std::size_t i = 0; i < running.size(); ++i) {
        take(jobs_[first + i], running[i].get());
      }
    }
  }

  void take(const Job& job, const MadeDelta& made) {
    ReleaseComponent& component = list_.components[job.component];
    if (!made.isMade) {
      reporter_.detail("no delta from version " + job.base.version + " of \"" + component.name +
                       "\": " + made.reason);
      return;
    }
    component.deltas.push_back(
        {job.base.version, made.baseSha256, {job.file, made.length, made.sha256}, made.memory});
  }

  ReleaseList& list_;
  const std::map<std::string, std::string>& plainArchives_;
  const ReleaseFolder& folder_;
  const DeltaOptions& options_;
  Reporter& reporter_;
  std::vector<Job> jobs_;
};

}  // namespace

void addDeltas(ReleaseList& list, const std::map<std::string, std::string>& plainArchives,
               const ReleaseFolder& folder, const DeltaOptions& options, Reporter& reporter) {
  DeltaMaking(list, plainArchives, folder, options, reporter).run();
}

}  // namespace quillory::pack
