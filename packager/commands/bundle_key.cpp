#include "packager/commands/bundle_key.h"

#include "packager/keys/pem.h"

namespace quillory::pack {
namespace {

constexpr bool kHardenedByDefault = true;

void warnOfUnsigned(const Config& config, Reporter& reporter) {
  reporter.finding({Severity::kWarning,
                    "unsigned",
                    "the archives are not signed: the launcher accepts whatever anybody puts "
                    "in their place",
                    {config.file, 0},
                    "make a key with: quillory-pack keygen"});
}

SigningKey loadKey(const std::string& path, const Place& place) {
  try {
    return SigningKey::load(path);
  } catch (const PackError& e) {
    const std::string advice = e.finding().advice;
    throw RejectedInput({{Severity::kError, "signing-key", path + ": " + e.what(), place,
                          advice.empty() ? kMakeKeyAdvice : advice}});
  }
}

void requireUsableSize(const SigningKey& key, const Place& place) {
  if (key.modulusBytes() < kSmallestModulus || key.modulusBytes() > kLargestModulus) {
    throw RejectedInput({{Severity::kError, "key-size",
                          "the key has " + std::to_string(key.modulusBytes()) +
                              " bytes; signatures hold with 130 to 2047",
                          place, "make a key with: quillory-pack keygen"}});
  }
}

}  // namespace

std::optional<SigningKey> bundleKey(const Config& config, bool isUnsigned, Reporter& reporter) {
  if (isUnsigned) {
    warnOfUnsigned(config, reporter);
    return std::nullopt;
  }
  if (config.signing.key.empty()) {
    throw RejectedInput({{Severity::kError, "unsigned",
                          "signing.key is missing, and unsigned archives have to be asked for",
                          config.placeOf("signing"),
                          "quillory-pack keygen makes a key; --unsigned packs without one"}});
  }
  const std::string path = config.resolve(config.signing.key);
  const Place place = config.placeOf("signing.key");
  SigningKey key = loadKey(path, place);
  requireUsableSize(key, place);
  if (isReadableByOthers(path)) {
    reporter.finding({Severity::kWarning, "key-mode",
                      path + " can be read by other people of this machine", place,
                      "chmod 600 " + path});
  }
  return key;
}

bool isToBeHardened(const Config& config, bool hasKey, Reporter& reporter) {
  const std::optional<bool> asked = config.install.hardened;
  if (hasKey || asked == false) {
    return asked.value_or(kHardenedByDefault);
  }
  if (asked == true) {
    throw RejectedInput({{Severity::kError, "hardened",
                          "install.hardened asks for signed archives, and these are packed without "
                          "a key: the launcher would refuse them",
                          config.placeOf("install.hardened"), "sign them, or leave out hardened"}});
  }
  reporter.finding({Severity::kNote,
                    "hardened",
                    "the bundle is not hardened, because its archives are not signed",
                    {config.file, 0},
                    "sign them with a key: quillory-pack keygen"});
  return false;
}

}  // namespace quillory::pack
