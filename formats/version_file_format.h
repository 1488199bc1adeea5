// What lies under an update URL, once, for who fetches and makes it: for each part a version file
// and an archive. docs/formats/version-file.md has both.
#pragma once
#include <string>
#include <string_view>

#include "formats/archive_format.h"

namespace quillory {

inline constexpr std::string_view kReleasePrefix = "Quillory-";
inline constexpr std::string_view kVersionFileSuffix = "-version.txt";

/// The version is what stands before the first of these, and has at most so many characters.
inline constexpr std::string_view kVersionEnds = "\n\r ";
inline constexpr int kMaxVersionLength = 50;

/// A version file beyond these is none: an installation that does not need it must not wait for one
/// that drips, nor fill the disk with one that has no end.
inline constexpr long long kMaxVersionFileBytes = 64 * 1024;
inline constexpr double kMaxVersionFileSeconds = 20;

/// "Quillory-<name>-version.txt", at the update URL and where it is fetched to.
inline std::string versionFileName(const std::string& name) {
  return std::string(kReleasePrefix) + name + std::string(kVersionFileSuffix);
}

/// "Quillory-<name>-<version>-archive.p2.l2"
inline std::string releaseArchiveName(const std::string& name, const std::string& version) {
  return packedArchiveName(std::string(kReleasePrefix) + name + '-' + version + "-archive");
}

}  // namespace quillory
