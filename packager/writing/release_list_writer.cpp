#include "packager/writing/release_list_writer.h"

#include "packager/bytes/byte_sinks.h"
#include "packager/keys/mixed_digest.h"
#include "packager/report/findings.h"
#include "packager/writing/record_writer.h"
#include "packager/writing/signature_block.h"

namespace quillory::pack {
namespace {

constexpr int kNotesCapacity = kMaxNotesBytes + 2;
constexpr int kKeyCapacity = kMaxKeyDigits + 2;

void writeCount(RecordWriter& records, const char* name, std::size_t count) {
  records.number(name, static_cast<std::int64_t>(count));
}

void writeWhose(RecordWriter& records, const ReleaseList& list) {
  records.number(kReleaseListVersionRecord, kReleaseListVersion);
  records.text(kListApplicationRecord, list.application);
  records.text(kListChannelRecord, list.channel);
  records.text(kListPlatformRecord, list.platform);
  records.number(kReleaseNumberRecord, list.number);
  records.number(kIssuedRecord, list.issued);
  records.number(kExpiresRecord, list.expires);
}

/// The records of a file's name, length and hash.
struct FileRecords {
  const char* name;
  const char* length;
  const char* sha256;
};

void writeFile(RecordWriter& records, const FileRecords& as, const ReleaseFile& file) {
  records.text(as.name, file.name);
  records.number(as.length, file.length);
  records.text(as.sha256, file.sha256);
}

void writeLimits(RecordWriter& records, const ReleaseList& list) {
  records.text(kMinimumSystemRecord, list.minimumSystem);
  records.number(kMinimumFromRecord, list.minimumFrom);
  writeFile(records, {kSteppingStoneRecord, kSteppingStoneLengthRecord, kSteppingStoneSha256Record},
            list.steppingStone);
  records.number(kCriticalBelowRecord, list.criticalBelow);
  records.number(kRolloutStartRecord, list.rollout.start);
  records.number(kRolloutDaysRecord, list.rollout.days);
  records.number(kRolloutPercentRecord, list.rollout.percent);
  writeCount(records, kWithdrawnCountRecord, list.withdrawn.size());
  for (const WithdrawnRelease& withdrawn : list.withdrawn) {
    records.text(kWithdrawnArchiveRecord, withdrawn.archiveSha256);
    records.text(kWithdrawnVersionRecord, withdrawn.version);
  }
  records.text(kNotesRecord, list.notes, kNotesCapacity);
  writeCount(records, kListKeyCountRecord, list.nextKeys.size());
  for (const std::string& key : list.nextKeys) records.text(kNextKeyRecord, key, kKeyCapacity);
}

void writeDelta(RecordWriter& records, const ReleaseDelta& delta) {
  records.text(kDeltaBaseVersionRecord, delta.baseVersion);
  records.text(kDeltaBaseSha256Record, delta.baseSha256);
  writeFile(records, {kDeltaFileRecord, kDeltaLengthRecord, kDeltaSha256Record}, delta.file);
  records.number(kDeltaMemoryRecord, delta.memory);
}

void writeComponent(RecordWriter& records, const ReleaseComponent& component) {
  records.text(kComponentRoleRecord, component.role);
  records.text(kComponentNameRecord, component.name);
  records.text(kComponentVersionRecord, component.version);
  records.text(kShownVersionRecord, component.shownVersion);
  writeFile(records, {kArchiveFileRecord, kArchiveLengthRecord, kArchiveSha256Record},
            component.archive);
  records.number(kPlainLengthRecord, component.plainLength);
  records.text(kPlainSha256Record, component.plainSha256);
  records.number(kInstalledLengthRecord, component.installedLength);
  writeCount(records, kDeltaCountRecord, component.deltas.size());
  for (const ReleaseDelta& delta : component.deltas) writeDelta(records, delta);
}

std::string signedWith(std::string bytes, const std::vector<const SigningKey*>& keys, Salt salt) {
  for (const SigningKey* key : keys) {
    MixedDigest digest;
    digest.update(bytes);
    StringSink block;
    writeSignatureBlock(block, bytes.size(), digest.finish(), *key, salt);
    bytes += block.bytes();
  }
  return bytes;
}

}  // namespace

std::string releaseListBytes(const ReleaseList& list, const std::vector<const SigningKey*>& keys,
                             Salt salt) {
  if (keys.empty() || keys.size() > kMaxListSignatures)
    throw PackError("a release list is signed with one key or with two");
  StringSink sink;
  RecordWriter records(sink);
  writeWhose(records, list);
  writeLimits(records, list);
  writeCount(records, kComponentCountRecord, list.components.size());
  for (const ReleaseComponent& component : list.components) writeComponent(records, component);
  std::string bytes = signedWith(sink.bytes(), keys, salt);
  // Nobody but its reader says what it takes: what it refuses would reach every installation.
  const ReleaseListVerdict verdict = readReleaseListBytes(bytes, {keys.front()->publicHex()});
  if (!verdict.list)
    throw PackError("the release list would be refused by every installation: " + verdict.refusal);
  return bytes;
}

void writeReleaseList(const std::string& path, const ReleaseList& list,
                      const std::vector<const SigningKey*>& keys, Salt salt) {
  writeWholeFile(path, releaseListBytes(list, keys, salt));
}

}  // namespace quillory::pack
