#include "packager/output_place.h"

#include <filesystem>

#include "packager/findings.h"

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

}  // namespace

void replaceBundle(const std::string& made, const std::string& place, const std::string& earlier) {
  if (fs::exists(fs::symlink_status(place))) {
    if (!fs::is_directory(place + "/Contents")) {
      throw PackError("is in the way, and is no bundle", "move it away", {place, 0});
    }
    move(place, earlier);
  }
  move(made, place);
}

void addToRelease(const std::string& made, const std::string& folder) {
  fs::create_directories(folder);
  // Version files come last, so that nobody reads of an archive that is not there yet.
  for (const bool versionFiles : {false, true}) {
    for (const auto& entry : fs::directory_iterator(made)) {
      if ((entry.path().extension() == ".txt") == versionFiles) {
        move(entry.path().string(), folder + '/' + entry.path().filename().string());
      }
    }
  }
}

}  // namespace quillory::pack
