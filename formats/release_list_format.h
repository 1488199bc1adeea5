// The release list, once, for who reads, writes and shows it: what a channel offers at present, in
// one signed file. docs/formats/release-list.md has the bytes.
#pragma once
#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "formats/version_file_format.h"

namespace quillory {

/// The version of the format.
inline constexpr std::int64_t kReleaseListVersion = 1;

/// The records in their order. Those of a group stand as often as the count in front of them says.
inline constexpr char kReleaseListVersionRecord[] = "Release List VER";
inline constexpr char kListApplicationRecord[] = "List Application";
inline constexpr char kListChannelRecord[] = "List Channel";
inline constexpr char kListPlatformRecord[] = "List Platform";
inline constexpr char kReleaseNumberRecord[] = "Release Number";
inline constexpr char kIssuedRecord[] = "Issued";
inline constexpr char kExpiresRecord[] = "Expires";
inline constexpr char kMinimumSystemRecord[] = "Minimum System";
inline constexpr char kMinimumFromRecord[] = "Minimum From";
inline constexpr char kSteppingStoneRecord[] = "Stepping Stone";
inline constexpr char kSteppingStoneLengthRecord[] = "Stepping Stone Length";
inline constexpr char kSteppingStoneSha256Record[] = "Stepping Stone SHA-256";
inline constexpr char kCriticalBelowRecord[] = "Critical Below";
inline constexpr char kRolloutStartRecord[] = "Rollout Start";
inline constexpr char kRolloutDaysRecord[] = "Rollout Days";
inline constexpr char kRolloutPercentRecord[] = "Rollout Percent";
inline constexpr char kWithdrawnCountRecord[] = "Withdrawn Count";
inline constexpr char kWithdrawnArchiveRecord[] = "Withdrawn Archive";
inline constexpr char kWithdrawnVersionRecord[] = "Withdrawn Version";
inline constexpr char kNotesRecord[] = "Notes";
inline constexpr char kListKeyCountRecord[] = "Key Count";
inline constexpr char kNextKeyRecord[] = "Next Key";
inline constexpr char kComponentCountRecord[] = "Component Count";
inline constexpr char kComponentRoleRecord[] = "Component Role";
inline constexpr char kComponentNameRecord[] = "Component Name";
inline constexpr char kComponentVersionRecord[] = "Component Version";
inline constexpr char kShownVersionRecord[] = "Shown Version";
inline constexpr char kArchiveFileRecord[] = "Archive File";
inline constexpr char kArchiveLengthRecord[] = "Archive Length";
inline constexpr char kArchiveSha256Record[] = "Archive SHA-256";
inline constexpr char kPlainLengthRecord[] = "Plain Length";
inline constexpr char kPlainSha256Record[] = "Plain SHA-256";
inline constexpr char kInstalledLengthRecord[] = "Installed Length";
inline constexpr char kDeltaCountRecord[] = "Delta Count";
inline constexpr char kDeltaBaseVersionRecord[] = "Delta Base Version";
inline constexpr char kDeltaBaseSha256Record[] = "Delta Base SHA-256";
inline constexpr char kDeltaFileRecord[] = "Delta File";
inline constexpr char kDeltaLengthRecord[] = "Delta Length";
inline constexpr char kDeltaSha256Record[] = "Delta SHA-256";
inline constexpr char kDeltaMemoryRecord[] = "Delta Memory";

/// What a component is for, in the order in which they stand in a list, and in which they are put
/// into place: an application never meets an updater or a runtime that is older than it needs.
inline constexpr char kUpdaterRole[] = "updater";
inline constexpr char kRuntimeRole[] = "runtime";
inline constexpr char kApplicationRole[] = "application";
inline constexpr std::array<std::string_view, 3> kComponentRoles = {kUpdaterRole, kRuntimeRole,
                                                                    kApplicationRole};

/// Limits. A list beyond them is refused, and its writer makes none.
inline constexpr std::size_t kMaxReleaseListBytes = 256 * 1024;
inline constexpr std::size_t kMaxNotesBytes = 64 * 1024;
inline constexpr std::size_t kMaxFileNameBytes = 255;
inline constexpr std::size_t kMaxListTextBytes = 255;  ///< names, versions, a channel, a platform
inline constexpr std::size_t kMaxKeyDigits = 8190;
inline constexpr std::int64_t kMaxListKeys = 4;
inline constexpr std::int64_t kMaxWithdrawn = 1000;
inline constexpr std::int64_t kMaxDeltas = 50;
inline constexpr std::int64_t kMaxRolloutDays = 3650;
inline constexpr std::size_t kMaxListSignatures = 2;

/// The channel of those who ask for no other.
inline constexpr char kStandardChannel[] = "stable";

/// "Quillory-<App Name>-<channel>-releases", at the update URL.
inline std::string releaseListName(const std::string& application, const std::string& channel) {
  return std::string(kReleasePrefix) + application + '-' + channel + "-releases";
}
/// The same bytes under a name of their own, which a later list may name as its stepping stone:
/// "Quillory-<App Name>-<channel>-releases-<number>".
inline std::string keptReleaseListName(const std::string& application, const std::string& channel,
                                       std::int64_t number) {
  return releaseListName(application, channel) + '-' + std::to_string(number);
}

/// Whether it can be the name of a channel: 1 to 50 of the letters, digits and "._-" of ASCII, the
/// first of them no dot.
constexpr bool isChannelName(std::string_view name) {
  if (name.empty() || name.size() > 50 || name.front() == '.') return false;
  for (const char c : name) {
    const bool isLetter = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
    if (!isLetter && !(c >= '0' && c <= '9') && c != '.' && c != '_' && c != '-') return false;
  }
  return true;
}

/// Whether it can be the name of a file in the folder that it is put into, and nowhere else: 1 to
/// 255 bytes, no '/', '\' or control character, no dot in front.
constexpr bool isPlainFileName(std::string_view name) {
  if (name.empty() || name.size() > kMaxFileNameBytes || name.front() == '.') return false;
  for (const char c : name) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte < 0x20 || byte == 0x7F || c == '/' || c == '\\') return false;
  }
  return true;
}

/// Whether it can be a component's version, which becomes a part of names of folders and files:
/// such a name of at most 50 bytes.
constexpr bool isComponentVersion(std::string_view version) {
  return version.size() <= std::size_t{kMaxVersionLength} && isPlainFileName(version);
}

/// Whether it can be a public key: digits in pairs.
constexpr bool isKeyHex(std::string_view text) {
  if (text.empty() || text.size() % 2 != 0 || text.size() > kMaxKeyDigits) return false;
  for (const char c : text)
    if (!(c >= '0' && c <= '9') && !(c >= 'a' && c <= 'f') && !(c >= 'A' && c <= 'F')) return false;
  return true;
}

}  // namespace quillory
