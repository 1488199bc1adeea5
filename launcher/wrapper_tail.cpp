#include "launcher/wrapper_tail.h"

#include <cstdint>
#include <vector>

#include "formats/markers.h"
#include "formats/record_stream.h"
#include "formats/text_encodings.h"
#include "install/version_folders.h"
#include "support/log.h"

namespace quillory {
namespace {

OwnedFile openOrLog(const std::string& path) {
  OwnedFile file(std::fopen(path.c_str(), "rb"));
  if (file != nullptr) return file;
  logMessage(
      "[Extractor] ************************* Failed to extract wrapper tail - couldn't open file "
      "%s\n",
      path.c_str());
  return nullptr;
}

bool checkFolderName(const char* what, const std::string& name, const std::string& version) {
  if (isUsableInFolderName(name, version)) return true;
  logError("[Extractor] %s '%s' with version '%s' cannot be part of a folder name\n", what,
           name.c_str(), version.c_str());
  return false;
}

}  // namespace

OwnedFile openWrapperTail(const Executable& exe) {
  logMessage("\n");
  logStartSection("Extracting wrapper tail\n");
  OwnedFile file = openOrLog(exe.pathAsPassed);
  if (file == nullptr) return nullptr;
  const OwnedText marker(allocAndInitMarker());
  if (scanToMarker(file.get(), marker.get(), kTailMarkerLength, "Tail") != kMarkerNotFound) {
    logMessage("[Extractor] Found tail marker\n");
    return file;
  }
  logMessage("[Extractor] The executable dir is %s\n", exe.folder.c_str());
  const std::string path = exe.resource(kTailFileName);
  logMessage("[Extractor] No tail found. Trying %s\n", path.c_str());
  return openOrLog(path);
}

TailRecords readTailRecords(std::FILE* stream) {
  TailRecords tail;
  for (const TailRecord& record : kTailRecords) {
    if (record.text == &TailRecords::signaturePublicKey)
      tail.hasSignaturePublicKey = !isAtEnd(stream);
    tail.*record.text = readText(stream, record.name, record.capacity);
  }
  if (!tail.requiredJavaVersion.empty())
    logMessage("[Extractor] Required Java version %s\n", tail.requiredJavaVersion.c_str());
  return tail;
}

bool hasUsableNames(const TailRecords& tail) {
  return checkFolderName("The App Name", tail.appName, tail.appVersion) &&
         checkFolderName("The updater", kUpdaterName, tail.guVersion);
}

void logUpdateUrlChoice(const UpdateUrl& url) {
  const char* const kind = url.isDynamic() ? "Dynamic" : "Static";
  logMessage("[Extractor] Will use %s Update URL: %s\n", kind, url.asItCame().c_str());
}

void logUpdateUrlInForce(const UpdateUrl& url) {
  logMessage("[Extractor] Update URL is currently '%s'\n", url.asItCame().c_str());
  logMessage("[Extractor] Update URL is now '%s'\n", url.inForce().c_str());
}

void addTailProperties(const TailRecords& tail, bool isSilent, PropertyBlock& properties) {
  logMessage("[Extractor] Setting up static properties\n");
  addStaticProperty(properties, "update_url", tail.updateUrl);
  addStaticProperty(properties, "install_type", tail.installType);
  addStaticProperty(properties, "min_splash_ms", tail.minSplashMs);
  addStaticProperty(properties, "qysig_public_key", tail.signaturePublicKey);
  addStaticProperty(properties, "can_override_splash", tail.canOverrideSplash);
  addStaticProperty(properties, "app_name", tail.appName);
  addStaticProperty(properties, "wrapper_app_version", tail.appVersion);
  addStaticProperty(properties, "wrapper_gu_version", tail.guVersion);
  addStaticProperty(properties, "silent_parameter", tail.silentParameter);
  addStaticProperty(properties, "java_version", tail.requiredJavaVersion);
  if (isSilent) addStaticProperty(properties, "show_no_ui", "true");
}

Rsa_key* loadSignatureKey(const TailRecords& tail) {
  if (!tail.hasSignaturePublicKey) {
    logMessage("[Extractor] Public key empty (no public key)\n");
    return nullptr;
  }
  const std::string& hex = tail.signaturePublicKey;
  if (hex.empty()) {
    logMessage("[Extractor] Public key length %d (no public key)\n", 0);
    return nullptr;
  }
  const std::vector<unsigned char> der = bytesOfHex(hex);
  const int length = static_cast<int>(der.size());
  logMessage("[Extractor] Processed public key of length %d\n", length);
  Rsa_key* key = loadDEREncodedPublicKey(der.data(), length);
  logMessage("[Extractor] Public Key: %08X\n",
             static_cast<unsigned>(reinterpret_cast<std::uintptr_t>(key)));
  return key;
}

}  // namespace quillory
