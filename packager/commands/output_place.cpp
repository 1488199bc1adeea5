#include "packager/commands/output_place.h"

#include <filesystem>

#include "packager/report/findings.h"

namespace quillory::pack {
namespace {

namespace fs = std::filesystem;

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

void putInPlace(const MadeFiles& made, const OutputPlace& place) {
  std::error_code unknown;
  if (exists(place.bundle) && !fs::is_directory(place.bundle + "/Contents", unknown)) {
    throw PackError("is in the way, and is no bundle", "move it away", {place.bundle, 0});
  }
  std::error_code error;
  fs::create_directories(place.release, error);
  if (error) {
    throw PackError("cannot be created: " + error.message(), "", {place.release, 0});
  }
  moveReleaseFiles(made, place, false);
  BundleExchange bundle(made, place);
  moveReleaseFiles(made, place, true);
  bundle.keep();
}

}  // namespace quillory::pack
