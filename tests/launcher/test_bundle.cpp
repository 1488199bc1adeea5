#include "tests/launcher/test_bundle.h"

namespace quillory::testing {
namespace {

int hexDigit(char c) { return c <= '9' ? c - '0' : (c | 0x20) - 'a' + 10; }

std::string fromHex(std::string_view hex) {
  std::string bytes;
  for (std::size_t i = 0; i + 1 < hex.size(); i += 2)
    bytes.push_back(static_cast<char>(hexDigit(hex[i]) * 16 + hexDigit(hex[i + 1])));
  return bytes;
}

}  // namespace

std::string paramsMarker() {
  return fromHex(
      "59BDC952AA35ADBB10EFDE672C47E0B5D4821F8152A102442AEBAA7B793B9345"
      "AED2097A3E2F2EFAFF1DF09B197C15B81E6DC610417E5CED51B1191C3CE294D8");
}

std::string tailMarker() {
  return fromHex(
      "1d432a505b7a1f642347212417323c50216c0466295c297b0b5b19332f4f0f4d"
      "2758182415394e792b7615593d574900112905652b1070665e2d406075433008"
      "614a747e401b533b5646371e4b2c725930443a3c2f44782b2665717139732523"
      "101451243170104a0d05572a060a53214d2c130036291a74472d1a552c2f4263");
}

std::string paramRecords(const Pairs& pairs) {
  std::string bytes = records({std::to_string(pairs.size())});
  for (const auto& [name, value] : pairs) bytes += records({name, value});
  return bytes;
}

std::string paramsFile(const Pairs& pairs) {
  return "text before the marker" + paramsMarker() + paramRecords(pairs);
}

std::string TailText::bytes() const {
  return records({appName, appVersion, jreVersion, guVersion, minSplashMs, publicKey,
                  canOverrideSplash, installType, silentParameter, requiredJavaVersion, updateUrl});
}

std::string fileEntry(std::string_view path, std::string_view content) {
  return records({"0", path, std::to_string(content.size())}).append(content);
}

std::string emptyEntry(std::string_view path) { return records({"0", path, "0"}); }

std::string archiveOf(std::string_view entries) { return std::string(entries) + records({""}); }

TestBundle::TestBundle(std::string_view executable) { writeScript(exePath(), executable); }

Executable TestBundle::executable() const {
  const std::string path = exePath();
  return {path, path, path.substr(0, path.rfind('/'))};
}

std::string TestBundle::resource(const std::string& name) const {
  return folder_ / ("App.app/Contents/Resources/" + name);
}

void TestBundle::writeResource(const std::string& name, std::string_view content) const {
  writeFile(resource(name), content);
}

void TestBundle::writeScript(const std::string& path, std::string_view script) const {
  writeFile(path, script);
  chmod(path.c_str(), 0755);
}

}  // namespace quillory::testing
