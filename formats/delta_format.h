// The delta, once, for who reads, writes and shows it: how the plain archive of a version is made
// from the installed files of an older one. docs/formats/delta.md has the bytes.
#pragma once
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "formats/archive_format.h"
#include "formats/version_file_format.h"

namespace quillory {

/// The version of the format.
inline constexpr std::int64_t kDeltaVersion = 1;

/// The records in their order, a raw LZMA2 stream behind them. Those of a group stand as often as
/// the count in front of them says.
inline constexpr char kDeltaVersionRecord[] = "Delta VER";
inline constexpr char kDeltaComponentRecord[] = "Delta Component";
inline constexpr char kDeltaFromRecord[] = "Delta From";
inline constexpr char kDeltaToRecord[] = "Delta To";
inline constexpr char kDeltaBaseRecord[] = "Delta Base SHA-256";
inline constexpr char kRestoredLengthRecord[] = "Restored Length";
inline constexpr char kRestoredSha256Record[] = "Restored SHA-256";
inline constexpr char kWindowRecord[] = "Window";
inline constexpr char kDictionaryCountRecord[] = "Dictionary Count";
inline constexpr char kDictionaryPathRecord[] = "Dictionary Path";
inline constexpr char kDictionaryLengthRecord[] = "Dictionary Length";
inline constexpr char kDictionarySha256Record[] = "Dictionary SHA-256";
inline constexpr char kCopyCountRecord[] = "Copy Count";
inline constexpr char kStreamLengthRecord[] = "Stream Length";
inline constexpr char kCopyPathRecord[] = "Copy Path";
inline constexpr char kCopyLengthRecord[] = "Copy Length";
inline constexpr char kCopySha256Record[] = "Copy SHA-256";

/// Limits. A delta beyond them is refused, and its writer makes none.
inline constexpr std::size_t kMaxDeltaHeaderBytes = 4 * 1024 * 1024;
inline constexpr std::int64_t kMaxBaseFiles = 50'000;
inline constexpr std::size_t kMaxBasePathBytes = longestValue(kDefaultCapacity);
inline constexpr std::int64_t kMinDeltaWindow = 4096;
inline constexpr std::int64_t kMaxDeltaWindow = 512 * 1024 * 1024;
/// What undoing a delta takes beside its window, at most.
inline constexpr std::int64_t kDeltaMemoryBesideWindow = 64 * 1024 * 1024;

/// "Quillory-<name>-<version>-from-<base version>-delta"
inline std::string deltaName(const std::string& name, const std::string& version,
                             const std::string& baseVersion) {
  return std::string(kReleasePrefix) + name + '-' + version + "-from-" + baseVersion + "-delta";
}

/// Whether it can be the path of a file below the folder of a version, and nowhere else: names
/// between single '/', none of them "." or "..".
constexpr bool isBasePath(std::string_view path) {
  if (path.empty() || path.size() > kMaxBasePathBytes) return false;
  while (true) {
    const std::size_t end = path.find('/');
    const std::string_view name = path.substr(0, end);
    if (name.empty() || name == "." || name == "..") return false;
    if (end == path.npos) return true;
    path.remove_prefix(end + 1);
  }
}

}  // namespace quillory
