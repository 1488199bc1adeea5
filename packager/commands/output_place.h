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

/// Moves the archives into the release folder, then the bundle, then the version files, so that
/// nobody reads of an archive that is not there yet. Release files replace those of the same names;
/// what else lies there, archives of earlier versions say, stays. Throws PackError; the bundle of
/// an earlier run is then where it was. What stands in the bundle's place and is no bundle is left
/// alone, with a PackError.
void putInPlace(const MadeFiles& made, const OutputPlace& place);

}  // namespace quillory::pack
