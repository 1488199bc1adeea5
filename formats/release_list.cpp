#include "formats/release_list.h"

#include <algorithm>
#include <utility>

#include "formats/release_fields.h"
#include "formats/sha256.h"
#include "formats/signed_bytes.h"
#include "formats/strict_records.h"
#include "support/plain_file.h"

namespace quillory {
namespace {

bool isDotted(std::string_view text) {
  bool wantsDigit = true;
  for (const char c : text) {
    const bool isDigit = c >= '0' && c <= '9';
    if (!isDigit && (c != '.' || wantsDigit)) return false;
    wantsDigit = !isDigit;
  }
  return !wantsDigit;
}

// Reads the records of one list; what is wrong stops the records.
class ListReader {
 public:
  explicit ListReader(std::string_view bytes) : records_(bytes) {}

  ReleaseList read() {
    if (records_.number(kReleaseListVersionRecord) != kReleaseListVersion)
      records_.refuse(kReleaseListVersionRecord, "the list was made by a newer quillory-pack");
    ReleaseList list;
    readWhose(list);
    readLimits(list);
    readWithdrawn(list);
    list.notes = records_.lines(kNotesRecord, kMaxNotesBytes);
    readKeys(list);
    readComponents(list);
    if (!records_.isRefused() && !records_.isAtEnd())
      records_.refuse(kComponentCountRecord, "more follows than it counts");
    return list;
  }
  const std::string& refusal() const { return records_.refusal(); }

 private:
  void readWhose(ReleaseList& list) {
    list.application = readFileName(records_, kListApplicationRecord);
    list.channel = records_.text(kListChannelRecord, kMaxListTextBytes);
    records_.require(isChannelName(list.channel), kListChannelRecord, "it is no channel's name");
    list.platform = readFileName(records_, kListPlatformRecord);
    list.number = records_.number(kReleaseNumberRecord);
    records_.require(list.number > 0, kReleaseNumberRecord, "releases begin with 1");
    list.issued = records_.number(kIssuedRecord);
    list.expires = records_.number(kExpiresRecord);
  }

  void readLimits(ReleaseList& list) {
    list.minimumSystem = records_.text(kMinimumSystemRecord, kMaxListTextBytes);
    records_.require(list.minimumSystem.empty() || isDotted(list.minimumSystem),
                     kMinimumSystemRecord, "it is no version of a system");
    list.minimumFrom = records_.number(kMinimumFromRecord);
    readSteppingStone(list.steppingStone);
    list.criticalBelow = records_.number(kCriticalBelowRecord);
    list.rollout.start = records_.number(kRolloutStartRecord);
    list.rollout.days = records_.number(kRolloutDaysRecord, kMaxRolloutDays);
    list.rollout.percent = records_.number(kRolloutPercentRecord, 100);
  }

  void readSteppingStone(ReleaseFile& stone) {
    stone.name = records_.text(kSteppingStoneRecord, kMaxFileNameBytes);
    stone.length = records_.number(kSteppingStoneLengthRecord, kMaxReleaseListBytes);
    stone.sha256 = records_.text(kSteppingStoneSha256Record, kSha256HexLength);
    if (stone == ReleaseFile{}) return;
    records_.require(isPlainFileName(stone.name), kSteppingStoneRecord, "it is no plain file name");
    records_.require(stone.length > 0, kSteppingStoneLengthRecord,
                     "it is not the length of a list");
    records_.require(isSha256Hex(stone.sha256), kSteppingStoneSha256Record, "it is no SHA-256");
  }

  void readWithdrawn(ReleaseList& list) {
    for (std::int64_t left = records_.number(kWithdrawnCountRecord, kMaxWithdrawn); left > 0;
         --left) {
      WithdrawnRelease withdrawn;
      withdrawn.archiveSha256 = readSha256(records_, kWithdrawnArchiveRecord);
      withdrawn.version = readVersion(records_, kWithdrawnVersionRecord);
      if (records_.isRefused()) return;
      list.withdrawn.push_back(std::move(withdrawn));
    }
  }

  void readKeys(ReleaseList& list) {
    for (std::int64_t left = records_.number(kListKeyCountRecord, kMaxListKeys); left > 0; --left) {
      list.nextKeys.push_back(records_.text(kNextKeyRecord, kMaxKeyDigits));
      records_.require(isKeyHex(list.nextKeys.back()), kNextKeyRecord,
                       "it is no key in hexadecimal");
    }
  }

  void readComponents(ReleaseList& list) {
    const std::int64_t count = records_.number(kComponentCountRecord, kComponentRoles.size());
    records_.require(count > 0, kComponentCountRecord, "a release has at least one");
    auto role = kComponentRoles.begin();
    for (std::int64_t left = count; left > 0 && !records_.isRefused(); --left) {
      ReleaseComponent component = readComponent();
      role = std::find(role, kComponentRoles.end(), component.role);
      if (role == kComponentRoles.end())
        return records_.refuse(kComponentRoleRecord, "it is unknown, or stands twice or too late");
      ++role;
      records_.require(component.role != kApplicationRole || component.name == list.application,
                       kComponentNameRecord, "the list is another application's");
      list.components.push_back(std::move(component));
    }
  }

  ReleaseComponent readComponent() {
    ReleaseComponent component;
    component.role = records_.text(kComponentRoleRecord, kMaxListTextBytes);
    component.name = readFileName(records_, kComponentNameRecord);
    component.version = readVersion(records_, kComponentVersionRecord);
    component.shownVersion = records_.text(kShownVersionRecord, kMaxListTextBytes);
    component.archive = file(kArchiveFileRecord, kArchiveLengthRecord, kArchiveSha256Record);
    component.plainLength = records_.number(kPlainLengthRecord);
    component.plainSha256 = readSha256(records_, kPlainSha256Record);
    component.installedLength = records_.number(kInstalledLengthRecord);
    for (std::int64_t left = records_.number(kDeltaCountRecord, kMaxDeltas);
         left > 0 && !records_.isRefused(); --left)
      component.deltas.push_back(readDelta());
    return component;
  }

  ReleaseDelta readDelta() {
    ReleaseDelta delta;
    delta.baseVersion = readVersion(records_, kDeltaBaseVersionRecord);
    delta.baseSha256 = readSha256(records_, kDeltaBaseSha256Record);
    delta.file = file(kDeltaFileRecord, kDeltaLengthRecord, kDeltaSha256Record);
    delta.memory = records_.number(kDeltaMemoryRecord);
    return delta;
  }

  ReleaseFile file(const char* nameRecord, const char* lengthRecord, const char* sha256Record) {
    ReleaseFile file;
    file.name = readFileName(records_, nameRecord);
    file.length = records_.number(lengthRecord);
    records_.require(file.length > 0, lengthRecord, "the file is empty");
    file.sha256 = readSha256(records_, sha256Record);
    return file;
  }

  StrictRecords records_;
};

ReleaseListVerdict refused(const std::string& why) {
  ReleaseListVerdict verdict;
  verdict.refusal = why;
  return verdict;
}

ReleaseListVerdict parsed(std::string_view content) {
  ListReader reader(content);
  ReleaseListVerdict verdict;
  ReleaseList list = reader.read();
  verdict.refusal = reader.refusal();
  if (verdict.refusal.empty()) verdict.list = std::move(list);
  return verdict;
}

constexpr char kTooLong[] = "it has more than 262144 bytes";
static_assert(kMaxReleaseListBytes == 262144);
constexpr char kUnreadable[] = "it cannot be read";

}  // namespace

const ReleaseComponent* componentOf(const ReleaseList& list, std::string_view role) {
  for (const ReleaseComponent& component : list.components)
    if (component.role == role) return &component;
  return nullptr;
}

ReleaseListVerdict readReleaseListBytes(std::string_view bytes,
                                        const std::vector<std::string>& trustedKeysHex) {
  if (bytes.size() > kMaxReleaseListBytes) return refused(kTooLong);
  const SignedBytes split = splitSignatureBlocks(bytes, kMaxListSignatures);
  if (split.blocks.empty()) return refused("it does not end with a signature");
  std::vector<std::string> signedBy = keysThatSigned(split, trustedKeysHex);
  if (signedBy.empty()) return refused("none of its signatures holds under a trusted key");
  ReleaseListVerdict verdict = parsed(split.content);
  if (!verdict.list) return verdict;
  verdict.signedBy = std::move(signedBy);
  // Keys that nobody can sign with would lock everybody out.
  if (!keysThatSigned(split, verdict.list->nextKeys).empty())
    verdict.keysFromNowOn = verdict.list->nextKeys;
  return verdict;
}

ReleaseListVerdict readReleaseList(const std::string& path,
                                   const std::vector<std::string>& trustedKeysHex) {
  const std::optional<std::string> bytes = readPlainFile(path, kMaxReleaseListBytes + 1);
  return bytes ? readReleaseListBytes(*bytes, trustedKeysHex) : refused(kUnreadable);
}

ReleaseListVerdict readSteppingStoneBytes(std::string_view bytes, const ReleaseFile& named) {
  if (bytes.size() > kMaxReleaseListBytes) return refused(kTooLong);
  if (static_cast<std::int64_t>(bytes.size()) != named.length || sha256Hex(bytes) != named.sha256)
    return refused("it is not the list that was named");
  const SignedBytes split = splitSignatureBlocks(bytes, kMaxListSignatures);
  return split.blocks.empty() ? refused("it does not end with a signature") : parsed(split.content);
}

ReleaseListVerdict readSteppingStone(const std::string& path, const ReleaseFile& named) {
  const std::optional<std::string> bytes = readPlainFile(path, kMaxReleaseListBytes + 1);
  return bytes ? readSteppingStoneBytes(*bytes, named) : refused(kUnreadable);
}

}  // namespace quillory
