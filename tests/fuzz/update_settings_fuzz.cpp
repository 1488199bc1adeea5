// Reads any bytes as update settings. What is taken is within the limits of the format.
#include "formats/update_settings.h"
#include "tests/fuzz/quiet.h"

using quillory::fuzz::promise;

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  quillory::fuzz::silence();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace quillory;
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  const UpdateSettingsResult result = readUpdateSettingsBytes(bytes);
  promise(result.settings.has_value() == result.refusal.empty());
  if (!result.settings) return 0;
  const UpdateSettings& settings = *result.settings;
  promise(isChannelName(settings.channel) && updateModeOf(asText(settings.mode)) == settings.mode);
  promise(settings.checkHours > 0 && settings.keepVersions >= kMinKeepVersions);
  for (const std::string& url : settings.mirrors) promise(isMirrorUrl(url));
  for (const std::string& key : settings.keys) promise(isKeyHex(key));
  return 0;
}
