// Puts what was made in a work folder where it belongs, with renames inside one file system.
#pragma once
#include <string>

namespace quillory::pack {

/// What was made, in the work folder.
struct MadeFiles {
  std::string bundle;
  std::string release;  ///< the folder with the release files
};

/// Where it goes.
struct OutputPlace {
  std::string bundle;
  std::string release;
  std::string earlier;  ///< not there yet: takes a bundle of an earlier run
};

/// Throws PackError when something stands in the place of a bundle that must not be replaced: a
/// file, or the bundle of somebody else.
void requireReplaceable(const std::string& bundle);

/// Moves the archives into the release folder, then deltas and kept lists, then the bundle, then
/// the version files and at last the release list, so that nobody reads of a file that is not there
/// yet. Release files replace those of the same names; what else lies there, archives of earlier
/// versions say, stays. Everything is on the disk before it gets its name, and each name before
/// those that speak of it. Throws PackError; the bundle of an earlier run is then where it was.
/// What requireReplaceable() refuses is left alone.
void putInPlace(const MadeFiles& made, const OutputPlace& place);

}  // namespace quillory::pack
