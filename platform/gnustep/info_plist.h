// The few things that the launcher wants to know from a bundle's Info.plist. Foundation can read
// the whole file, but takes 4 ms, and locks that can meet those of another thread's first use of
// Foundation the other way round.
#pragma once
#include <filesystem>
#include <map>
#include <string>
#include <string_view>

namespace quillory::platform {

/// The texts among the entries of the outermost dictionary, by key. Only of the XML form; anything
/// else, damaged or cut, gives what was understood so far.
std::map<std::string, std::string> textsOfInfoPlist(std::string_view xml);

/// The file Info.plist in the folder `contents` of a bundle; "" without one, or when it is larger
/// than a megabyte.
std::string infoPlistIn(const std::filesystem::path& contents);

/// That of the bundle in which an executable X.app/Contents/MacOS/NAME lies.
std::string infoPlistBeside(const std::string& executable);

/// That of the bundle in which this process's executable lies.
std::string ownInfoPlist();

}  // namespace quillory::platform
