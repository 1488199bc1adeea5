#include "packager/commands/named_key.h"

#include "packager/keys/pem.h"

namespace quillory::pack {

SigningKey namedKey(const Config& config) {
  const std::string path = config.resolve(config.signing.key);
  try {
    return SigningKey::load(path);
  } catch (const PackError& e) {
    const std::string advice = e.finding().advice;
    throw RejectedInput(
        {{Severity::kError, "signing-key", path + ": " + e.what(), config.placeOf("signing.key"),
          advice.empty() ? kMakeKeyAdvice : advice}});
  }
}

}  // namespace quillory::pack
