#include "formats/update_settings.h"

#include <cerrno>
#include <utility>

#include "formats/strict_records.h"
#include "support/plain_file.h"

namespace quillory {
namespace {

void readTimes(StrictRecords& records, UpdateSettings& settings) {
  settings.atStartSeconds = records.number(kAtStartSecondsRecord, kMaxAtStartSeconds);
  settings.checkHours = records.number(kCheckHoursRecord, kMaxCheckHours);
  records.require(settings.checkHours > 0, kCheckHoursRecord, "it is 0");
  settings.keepVersions = records.number(kKeepVersionsRecord, kMaxKeepVersions);
  records.require(settings.keepVersions >= kMinKeepVersions, kKeepVersionsRecord,
                  "there is no way back with fewer than 2");
}

void readLists(StrictRecords& records, UpdateSettings& settings) {
  for (std::int64_t left = records.number(kMirrorCountRecord, kMaxMirrors); left > 0; --left) {
    settings.mirrors.push_back(records.text(kMirrorUrlRecord, kMaxMirrorUrlBytes));
    records.require(isMirrorUrl(settings.mirrors.back()), kMirrorUrlRecord,
                    "it is no http address");
  }
  for (std::int64_t left = records.number(kUpdateKeyCountRecord, kMaxListKeys); left > 0; --left) {
    settings.keys.push_back(records.text(kUpdateKeyRecord, kMaxKeyDigits));
    records.require(isKeyHex(settings.keys.back()), kUpdateKeyRecord,
                    "it is no key in hexadecimal");
  }
}

void readForAllUsers(StrictRecords& records, UpdateSettings& settings) {
  if (records.isAtEnd()) return;
  settings.updateUrl = records.text(kUpdateUrlRecord, kMaxMirrorUrlBytes);
  records.require(isMirrorUrl(settings.updateUrl), kUpdateKeyCountRecord,
                  "more follows than it counts");
  settings.runtimeName = records.text(kRuntimeNameRecord, kMaxListTextBytes);
  records.require(!settings.runtimeName.empty(), kRuntimeNameRecord, "it is empty");
  records.require(records.isAtEnd(), kRuntimeNameRecord, "more follows");
}

UpdateSettings readRecords(StrictRecords& records) {
  UpdateSettings settings;
  if (records.number(kUpdateSettingsVersionRecord) != kUpdateSettingsVersion)
    records.refuse(kUpdateSettingsVersionRecord, "the file was made by a newer quillory-pack");
  settings.channel = records.text(kUpdateChannelRecord, kMaxListTextBytes);
  records.require(isChannelName(settings.channel), kUpdateChannelRecord, "it is no channel's name");
  const std::optional<UpdateMode> mode =
      updateModeOf(records.text(kUpdateModeRecord, kMaxListTextBytes));
  records.require(mode.has_value(), kUpdateModeRecord, "there is no such mode");
  settings.mode = mode.value_or(UpdateMode::kOff);
  readTimes(records, settings);
  readLists(records, settings);
  readForAllUsers(records, settings);
  return settings;
}

}  // namespace

UpdateSettingsResult readUpdateSettingsBytes(std::string_view bytes) {
  if (bytes.size() > kMaxUpdateSettingsBytes) return {{}, "the file is too long"};
  StrictRecords records(bytes);
  UpdateSettings settings = readRecords(records);
  if (records.isRefused()) return {{}, records.refusal()};
  return {std::move(settings), ""};
}

UpdateSettingsResult readUpdateSettings(const std::string& path) {
  const std::optional<std::string> bytes = readPlainFile(path, kMaxUpdateSettingsBytes + 1);
  if (bytes) return readUpdateSettingsBytes(*bytes);
  if (errno == ENOENT) return {};
  return {{}, "it cannot be read"};
}

}  // namespace quillory
