#include "packager/commands/output_place.h"

#include <cerrno>
#include <filesystem>

#include "formats/version_file_format.h"
#include "packager/commands/launcher_log.h"
#include "packager/reading/bundle_view.h"
#include "packager/report/findings.h"
#include "support/durable.h"
#include "support/folder_listing.h"

namespace quillory::pack {
namespace {

namespace fs = std::filesystem;

// What the names of release lists and deltas end in; kept lists have a number behind that.
constexpr std::string_view kReleaseListSuffix = "-releases";
constexpr std::string_view kDeltaSuffix = "-delta";

// So that a power cut leaves nothing under its final name whose bytes are not there.
void flush(bool (*sync)(const std::string&), const std::string& folder) {
  const LauncherLog log(true);
  if (!sync(folder)) {
    throwFileError(folder, "cannot be written to the disk", errno,
                   "look at the disk, and pack again");
  }
}

void move(const std::string& made, const std::string& place) {
  std::error_code error;
  fs::rename(made, place, error);
  if (error) {
    throw PackError("cannot be put in place: " + error.message(), "", {place, 0});
  }
}

bool exists(const std::string& path) {
  std::error_code unknown;
  return fs::exists(fs::symlink_status(path, unknown));
}

// Has the new bundle in place, and the one before it again unless keep() is called.
class BundleExchange {
 public:
  BundleExchange(const MadeFiles& made, const OutputPlace& place)
      : made_(made), place_(place), hasEarlier_(exists(place.bundle)) {
    if (hasEarlier_) {
      move(place_.bundle, place_.earlier);
    }
    try {
      move(made_.bundle, place_.bundle);
    } catch (const PackError&) {
      bringBack();
      throw;
    }
  }

  ~BundleExchange() {
    if (!kept_) {
      std::error_code ignored;
      fs::rename(place_.bundle, made_.bundle, ignored);
      bringBack();
    }
  }
  BundleExchange(const BundleExchange&) = delete;
  BundleExchange& operator=(const BundleExchange&) = delete;

  void keep() { kept_ = true; }

 private:
  void bringBack() {
    if (hasEarlier_) {
      std::error_code ignored;
      fs::rename(place_.earlier, place_.bundle, ignored);
    }
  }

  const MadeFiles& made_;
  const OutputPlace& place_;
  bool hasEarlier_;
  bool kept_ = false;
};

// When a release file is put in place: after all that it speaks of.
enum class Turn { kArchives, kDeltas, kVersionFiles, kKeptLists, kLists };

Turn turnOf(const std::string& name) {
  if (name.ends_with(kReleaseListSuffix)) {
    return Turn::kLists;
  }
  if (name.ends_with(kVersionFileSuffix)) {
    return Turn::kVersionFiles;
  }
  if (name.ends_with(kDeltaSuffix)) {
    return Turn::kDeltas;
  }
  return isArchiveName(name) ? Turn::kArchives : Turn::kKeptLists;
}

void moveReleaseFiles(const MadeFiles& made, const OutputPlace& place, Turn turn) {
  for (const std::string& name : namesIn(made.release)) {
    if (turnOf(name) == turn) {
      move(made.release + '/' + name, place.release + '/' + name);
    }
  }
}

}  // namespace

void requireReplaceable(const std::string& bundle) {
  if (!exists(bundle)) {
    return;
  }
  if (!isBundle(bundle)) {
    throw PackError("is in the way, and is no bundle", "move it away", {bundle, 0});
  }
  if (!isFinishedBundle(bundle)) {
    throw PackError("is in the way, and is no bundle that this program has finished",
                    "move it away, or name another folder with --output or bundle.output",
                    {bundle, 0});
  }
}

void putInPlace(const MadeFiles& made, const OutputPlace& place) {
  requireReplaceable(place.bundle);
  flush(syncTree, made.release);
  std::error_code error;
  fs::create_directories(place.release, error);
  if (error) {
    throw PackError("cannot be created: " + error.message(), "", {place.release, 0});
  }
  moveReleaseFiles(made, place, Turn::kArchives);
  moveReleaseFiles(made, place, Turn::kDeltas);
  flush(syncFolder, place.release);  // no version file or list before what it tells of
  flush(syncTree, made.bundle);
  BundleExchange bundle(made, place);
  flush(syncFolder, fs::path(place.bundle).parent_path());
  for (const Turn turn : {Turn::kVersionFiles, Turn::kKeptLists, Turn::kLists}) {
    moveReleaseFiles(made, place, turn);
  }
  flush(syncFolder, place.release);
  bundle.keep();
}

}  // namespace quillory::pack
