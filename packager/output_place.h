// Puts what was made in a work folder where it belongs, with renames inside one file system.
#pragma once
#include <string>

namespace quillory::pack {

/// Moves the finished bundle `made` to `place`. A bundle of an earlier run is moved to `earlier`;
/// anything else that stands there is left alone, with a PackError.
void replaceBundle(const std::string& made, const std::string& place, const std::string& earlier);

/// Moves the files of `made` into `folder`, over those of the same names. What else lies there,
/// archives of earlier versions say, stays.
void addToRelease(const std::string& made, const std::string& folder);

}  // namespace quillory::pack
