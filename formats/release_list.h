// The release list: read, and trusted only where a signature holds. docs/formats/release-list.md
// has the bytes. What a reader still has to judge is whether the list is for it (application,
// channel, platform), newer than the newest it has seen, and not expired.
#pragma once
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "formats/release_list_format.h"

namespace quillory {

/// A file in the release folder. No name: there is none.
struct ReleaseFile {
  std::string name;
  std::int64_t length = 0;
  std::string sha256;

  bool operator==(const ReleaseFile&) const = default;
};

/// A way from an older version to this one.
struct ReleaseDelta {
  std::string baseVersion;
  std::string baseSha256;  ///< of the base's plain archive
  ReleaseFile file;
  std::int64_t memory = 0;  ///< bytes that it takes to undo it

  bool operator==(const ReleaseDelta&) const = default;
};

struct ReleaseComponent {
  std::string role;  ///< one of kComponentRoles
  std::string name;
  std::string version;
  std::string shownVersion;  ///< what people are told
  ReleaseFile archive;       ///< the whole of it, compressed (".p2.l2")
  /// The plain archive (".p2"): what a delta restores and what is signed.
  std::int64_t plainLength = 0;
  std::string plainSha256;
  std::int64_t installedLength = 0;  ///< bytes of its files, unpacked
  std::vector<ReleaseDelta> deltas{};

  bool operator==(const ReleaseComponent&) const = default;
};

struct WithdrawnRelease {
  std::string archiveSha256;  ///< of the plain archive of the application
  std::string version;

  bool operator==(const WithdrawnRelease&) const = default;
};

/// Everybody gets it at once unless it says something else.
struct Rollout {
  std::int64_t start = 0;  ///< seconds since 1970
  std::int64_t days = 0;
  std::int64_t percent = 100;

  bool operator==(const Rollout&) const = default;
};

struct ReleaseList {
  std::string application;
  std::string channel;
  std::string platform;  ///< as that of an ArchiveIdentity
  std::int64_t number = 0;
  std::int64_t issued = 0;   ///< seconds since 1970
  std::int64_t expires = 0;  ///< seconds since 1970
  std::string minimumSystem{};
  std::int64_t minimumFrom = 0;  ///< 0: none
  ReleaseFile steppingStone{};
  std::int64_t criticalBelow = 0;  ///< 0: none
  Rollout rollout{};
  std::vector<WithdrawnRelease> withdrawn{};
  std::string notes{};
  std::vector<std::string> nextKeys{};  ///< hexadecimal DER
  std::vector<ReleaseComponent> components{};

  bool operator==(const ReleaseList&) const = default;
};

/// The component of that role; null when the list has none.
const ReleaseComponent* componentOf(const ReleaseList& list, std::string_view role);

struct ReleaseListVerdict {
  std::optional<ReleaseList> list;  ///< nothing: it is refused
  std::string refusal;              ///< why, in words; "" when it is good
  /// Those of the trusted keys, as they were given, under which a signature holds.
  std::vector<std::string> signedBy;
  /// The keys to trust in place of the present ones; empty: they stay.
  std::vector<std::string> keysFromNowOn;
};

/// Reads the list at `path` (a link there is not followed). `trustedKeysHex` are public keys in
/// DER, in hexadecimal; one that is no key is passed over. Nothing of the list is parsed before one
/// of its signatures has held under one of them.
ReleaseListVerdict readReleaseList(const std::string& path,
                                   const std::vector<std::string>& trustedKeysHex);
/// The same of bytes that are there already.
ReleaseListVerdict readReleaseListBytes(std::string_view bytes,
                                        const std::vector<std::string>& trustedKeysHex);

/// The list that a trusted one names as its stepping stone. What is trusted is what was named: its
/// length and its SHA-256; whose signature it bears is not asked, so `signedBy` and `keysFromNowOn`
/// stay empty.
ReleaseListVerdict readSteppingStone(const std::string& path, const ReleaseFile& named);
ReleaseListVerdict readSteppingStoneBytes(std::string_view bytes, const ReleaseFile& named);

}  // namespace quillory
