#include "packager/writing/update_settings_writer.h"

#include "formats/update_settings.h"
#include "packager/bytes/byte_sinks.h"
#include "packager/report/findings.h"
#include "packager/writing/record_writer.h"

namespace quillory::pack {
namespace {

constexpr int kMirrorUrlCapacity = kMaxMirrorUrlBytes + 2;
constexpr int kUpdateKeyCapacity = kMaxKeyDigits + 2;

}  // namespace

std::string updateSettingsBytes(const UpdateSettings& settings) {
  StringSink sink;
  RecordWriter records(sink);
  records.number(kUpdateSettingsVersionRecord, kUpdateSettingsVersion);
  records.text(kUpdateChannelRecord, settings.channel);
  records.text(kUpdateModeRecord, asText(settings.mode));
  records.number(kAtStartSecondsRecord, settings.atStartSeconds);
  records.number(kCheckHoursRecord, settings.checkHours);
  records.number(kKeepVersionsRecord, settings.keepVersions);
  records.number(kMirrorCountRecord, static_cast<std::int64_t>(settings.mirrors.size()));
  for (const std::string& url : settings.mirrors)
    records.text(kMirrorUrlRecord, url, kMirrorUrlCapacity);
  records.number(kUpdateKeyCountRecord, static_cast<std::int64_t>(settings.keys.size()));
  for (const std::string& key : settings.keys)
    records.text(kUpdateKeyRecord, key, kUpdateKeyCapacity);
  if (!settings.updateUrl.empty()) {
    records.text(kUpdateUrlRecord, settings.updateUrl, kMirrorUrlCapacity);
    records.text(kRuntimeNameRecord, settings.runtimeName);
  }
  const UpdateSettingsResult read = readUpdateSettingsBytes(sink.bytes());
  if (!read.settings)
    throw PackError("the update settings would be refused by every installation: " + read.refusal);
  return sink.bytes();
}

void writeUpdateSettings(const std::string& path, const UpdateSettings& settings) {
  writeWholeFile(path, updateSettingsBytes(settings));
}

}  // namespace quillory::pack
