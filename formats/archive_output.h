// Where an archive entry may put what it holds: below the destination folder, in files and folders
// of its own, never through a link that stands there already.
#pragma once
#include <string>
#include <string_view>

namespace quillory {

/// Why `entryPath` must not be extracted into `destDir`; null when it may. `suffixLength` is what
/// will be added to the path.
const char* whyRefused(std::string_view destDir, std::string_view entryPath,
                       std::size_t suffixLength);

/// `destDir` and `entryPath` joined; they have passed whyRefused().
std::string pathBelow(const char* destDir, const std::string& entryPath);

/// Creates the folders above the last component of `entryPath`.
void createParents(const char* destDir, const std::string& entryPath);

/// Creates the folder unless it exists. A file or link in its place is replaced.
void createFolder(const std::string& path);

}  // namespace quillory
