#include "packager/commands/update_views.h"

#include <nlohmann/json.hpp>

#include "formats/delta_header.h"
#include "formats/release_list.h"
#include "formats/sha256.h"
#include "formats/signed_bytes.h"
#include "formats/update_settings.h"
#include "packager/bytes/byte_sinks.h"
#include "packager/keys/public_key.h"
#include "packager/report/dates.h"
#include "packager/report/findings.h"

namespace quillory::pack {
namespace {

using Json = nlohmann::ordered_json;

Json describeFile(const ReleaseFile& file) {
  return {{"file", file.name}, {"bytes", file.length}, {"sha256", file.sha256}};
}

Json fingerprintsOf(const std::vector<std::string>& keys, const std::string& path) {
  Json list = Json::array();
  for (const std::string& key : keys) {
    list.push_back(PublicKey::fromHex(key, path).fingerprint());
  }
  return list;
}

Json describeComponent(const ReleaseComponent& component) {
  return {{"role", component.role},
          {"name", component.name},
          {"version", component.version},
          {"shown", component.shownVersion},
          {"archive", describeFile(component.archive)},
          {"plain bytes", component.plainLength},
          {"plain sha256", component.plainSha256},
          {"installed bytes", component.installedLength}};
}

Json describeDeltas(const ReleaseList& list) {
  Json deltas = Json::array();
  for (const ReleaseComponent& component : list.components) {
    for (const ReleaseDelta& delta : component.deltas) {
      deltas.push_back({{"component", component.name},
                        {"from", delta.baseVersion},
                        {"file", delta.file.name},
                        {"bytes", delta.file.length},
                        {"sha256", delta.file.sha256},
                        {"of", delta.baseSha256},
                        {"memory", delta.memory}});
    }
  }
  return deltas;
}

// What is there only where a release asks for it.
void describeConditions(const ReleaseList& list, Json& shown) {
  if (!list.minimumSystem.empty()) {
    shown["minimum system"] = list.minimumSystem;
  }
  if (list.minimumFrom != 0) {
    shown["minimum from"] = list.minimumFrom;
    shown["stepping stone"] = describeFile(list.steppingStone);
  }
  if (list.criticalBelow != 0) {
    shown["critical below"] = list.criticalBelow;
  }
  if (!list.withdrawn.empty()) {
    Json withdrawn = Json::array();
    for (const WithdrawnRelease& bad : list.withdrawn) {
      withdrawn.push_back({{"version", bad.version}, {"archive", bad.archiveSha256}});
    }
    shown["withdrawn"] = std::move(withdrawn);
  }
  if (!list.notes.empty()) {
    shown["notes"] = list.notes;
  }
}

Json describeBaseFiles(const std::vector<BaseFile>& files) {
  Json list = Json::array();
  for (const BaseFile& file : files) {
    list.push_back({{"path", file.path}, {"bytes", file.length}});
  }
  return list;
}

}  // namespace

Json describeReleaseList(const std::string& path) {
  const std::string bytes = readBeginningOf(path, kMaxReleaseListBytes + 1);
  const ReleaseListVerdict verdict = readSteppingStoneBytes(
      bytes, {path, static_cast<std::int64_t>(bytes.size()), sha256Hex(bytes)});
  if (!verdict.list) {
    throw PackError("is no release list: " + verdict.refusal, "", {path, 0});
  }
  const ReleaseList& list = *verdict.list;
  Json shown = {{"application", list.application},
                {"channel", list.channel},
                {"platform", list.platform},
                {"number", list.number},
                {"issued", readableTime(list.issued)},
                {"expires", readableTime(list.expires)},
                {"rollout",
                 {{"start", readableTime(list.rollout.start)},
                  {"days", list.rollout.days},
                  {"percent", list.rollout.percent}}}};
  describeConditions(list, shown);
  if (!list.nextKeys.empty()) {
    shown["next keys"] = fingerprintsOf(list.nextKeys, path);
  }
  shown["components"] = Json::array();
  for (const ReleaseComponent& component : list.components) {
    shown["components"].push_back(describeComponent(component));
  }
  shown["deltas"] = describeDeltas(list);
  shown["signatures"] = splitSignatureBlocks(bytes, kMaxListSignatures).blocks.size();
  return shown;
}

Json describeDelta(const std::string& path) {
  const DeltaHeaderResult result = readDeltaHeader(path);
  if (!result.header) {
    throw PackError("is no delta: " + result.refusal, "", {path, 0});
  }
  const DeltaHeader& header = *result.header;
  Json shown = {{"component", header.component},
                {"from", header.from},
                {"to", header.to},
                {"of", header.baseSha256},
                {"restores bytes", header.restoredLength},
                {"restores sha256", header.restoredSha256},
                {"memory", memoryToUndo(header)},
                {"header bytes", result.length}};
  shown["dictionary"] = describeBaseFiles(header.dictionary);
  std::vector<BaseFile> copies;
  for (const DeltaCopy& copy : header.copies) {
    copies.push_back(copy.file);
  }
  shown["copies"] = describeBaseFiles(copies);
  return shown;
}

Json describeUpdateSettings(const std::string& path) {
  const UpdateSettingsResult result = readUpdateSettings(path);
  if (!result.settings) {
    throw PackError("holds no update settings: " + result.refusal, "", {path, 0});
  }
  const UpdateSettings& settings = *result.settings;
  Json shown = {{"channel", settings.channel},
                {"mode", std::string(asText(settings.mode))},
                {"at start seconds", settings.atStartSeconds},
                {"check hours", settings.checkHours},
                {"keep versions", settings.keepVersions},
                {"mirrors", settings.mirrors},
                {"keys", fingerprintsOf(settings.keys, path)}};
  if (!settings.updateUrl.empty()) {
    shown["update url"] = settings.updateUrl;
    shown["runtime"] = settings.runtimeName;
  }
  return shown;
}

}  // namespace quillory::pack
