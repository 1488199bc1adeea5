#include "formats/update_settings.h"

#include <cerrno>
#include <utility>

#include "formats/strict_records.h"
#include "support/plain_file.h"

namespace quillory {
namespace {

void require(bool holds, StrictRecords& records, const char* record, const char* otherwise) {
  if (!holds) records.refuse(record, otherwise);
}

void readTimes(StrictRecords& records, UpdateSettings& settings) {
  settings.atStartSeconds = records.number(kAtStartSecondsRecord, kMaxAtStartSeconds);
  settings.checkHours = records.number(kCheckHoursRecord, kMaxCheckHours);
  require(settings.checkHours > 0, records, kCheckHoursRecord, "it is 0");
  settings.keepVersions = records.number(kKeepVersionsRecord, kMaxKeepVersions);
  require(settings.keepVersions >= kMinKeepVersions, records, kKeepVersionsRecord,
          "there is no way back with fewer than 2");
}

void readLists(StrictRecords& records, UpdateSettings& settings) {
  for (std::int64_t left = records.number(kMirrorCountRecord, kMaxMirrors); left > 0; --left) {
    settings.mirrors.push_back(records.text(kMirrorUrlRecord, kMaxMirrorUrlBytes));
    require(isMirrorUrl(settings.mirrors.back()), records, kMirrorUrlRecord,
            "it is no http address");
  }
  for (std::int64_t left = records.number(kUpdateKeyCountRecord, kMaxListKeys); left > 0; --left) {
    settings.keys.push_back(records.text(kUpdateKeyRecord, kMaxKeyDigits));
    require(isKeyHex(settings.keys.back()), records, kUpdateKeyRecord,
            "it is no key in hexadecimal");
  }
  require(records.isAtEnd(), records, kUpdateKeyCountRecord, "more follows than it counts");
}

UpdateSettings readRecords(StrictRecords& records) {
  UpdateSettings settings;
  if (records.number(kUpdateSettingsVersionRecord) != kUpdateSettingsVersion)
    records.refuse(kUpdateSettingsVersionRecord, "the file was made by a newer quillory-pack");
  settings.channel = records.text(kUpdateChannelRecord, kMaxListTextBytes);
  require(isChannelName(settings.channel), records, kUpdateChannelRecord,
          "it is no channel's name");
  const std::optional<UpdateMode> mode =
      updateModeOf(records.text(kUpdateModeRecord, kMaxListTextBytes));
  require(mode.has_value(), records, kUpdateModeRecord, "there is no such mode");
  settings.mode = mode.value_or(UpdateMode::kOff);
  readTimes(records, settings);
  readLists(records, settings);
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
