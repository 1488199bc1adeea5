#include "packager/commands/output_place.h"

#include <cerrno>
#include <filesystem>

#include "packager/commands/launcher_log.h"
#include "packager/reading/bundle_view.h"
#include "packager/report/findings.h"
#include "support/durable.h"

namespace quillory::pack {
namespace {

namespace fs = std::filesystem;

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

void moveReleaseFiles(const MadeFiles& made, const OutputPlace& place, bool versionFiles) {
  for (const auto& entry : fs::directory_iterator(made.release)) {
    if ((entry.path().extension() == ".txt") == versionFiles) {
      move(entry.path().string(), place.release + '/' + entry.path().filename().string());
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
  moveReleaseFiles(made, place, false);
  flush(syncFolder, place.release);  // no version file before the archive that it tells of
  flush(syncTree, made.bundle);
  BundleExchange bundle(made, place);
  flush(syncFolder, fs::path(place.bundle).parent_path());
  moveReleaseFiles(made, place, true);
  flush(syncFolder, place.release);
  bundle.keep();
}

}  // namespace quillory::pack
