#include "packager/commands/update_keys.h"

#include <algorithm>
#include <utility>

#include "packager/keys/pem.h"
#include "packager/keys/public_key.h"

namespace quillory::pack {
namespace {

[[noreturn]] void reject(const Config& config, const std::string& key, const char* rule,
                         const std::string& what, const std::string& advice) {
  throw RejectedInput({{Severity::kError, rule, what, config.placeOf(key), advice}});
}

// What the loader of a key has to say, at the line that names its file.
template <typename Load>
auto loaded(const Config& config, const std::string& key, const std::string& path, Load load) {
  try {
    return load(path);
  } catch (const PackError& e) {
    reject(config, key, "update-key", path + ": " + e.what(), e.finding().advice);
  }
}

std::string publicHalf(const Config& config, const std::string& key, const std::string& named) {
  return loaded(config, key, config.resolve(named),
                [](const std::string& path) { return PublicKey::load(path).hex(); });
}

bool holdsPublicHalfOnly(const std::string& path) {
  const std::string kind = readPem(path).kind;
  return kind == "PUBLIC KEY" || kind == "RSA PUBLIC KEY";
}

std::string reserveKey(const Config& config, const SigningKey& working, Reporter& reporter) {
  const std::string& named = config.update.reserveKey;
  const std::string hex = publicHalf(config, "update.reserve-key", named);
  if (hex == working.publicHex()) {
    reject(config, "update.reserve-key", "update-key",
           "update.reserve-key is the key that signs already: there would be no second one",
           "after the loss of the first key name new ones with next-keys and next-key, and leave "
           "reserve-key out");
  }
  if (!holdsPublicHalfOnly(config.resolve(named))) {
    reporter.finding({Severity::kWarning, "reserve-private",
                      "update.reserve-key holds the private half, which whoever steals the signing "
                      "key from here steals as well",
                      config.placeOf("update.reserve-key"),
                      "name the public half, and keep the private one offline"});
  }
  return hex;
}

std::vector<std::string> nextKeys(const Config& config) {
  std::vector<std::string> keys;
  for (const std::string& named : config.update.nextKeys) {
    keys.push_back(publicHalf(config, "update.next-keys", named));
  }
  return keys;
}

// Installations take over keys only from a list that one of those keys has signed.
void requireASignatureOfTheNext(const Config& config, const UpdateKeys& keys) {
  const auto isNext = [&](const SigningKey& key) {
    return std::find(keys.nextKeys.begin(), keys.nextKeys.end(), key.publicHex()) !=
           keys.nextKeys.end();
  };
  if (keys.nextKeys.empty() || isNext(keys.forArchives())) {
    return;
  }
  reject(config, "update.next-keys", "next-keys",
         keys.next ? "update.next-keys does not have the key that signing.next-key signs with"
                   : "update.next-keys has no key that signs: no installation would take them over",
         "next-key = \"new.pem\" in [signing], and its public half among next-keys");
}

}  // namespace

std::vector<const SigningKey*> UpdateKeys::forLists() const {
  std::vector<const SigningKey*> keys = {&working};
  if (next) {
    keys.push_back(&*next);
  }
  return keys;
}

std::vector<std::string> UpdateKeys::known() const {
  std::vector<std::string> keys = {working.publicHex()};
  keys.insert(keys.end(), trusted.begin(), trusted.end());
  return keys;
}

UpdateKeys loadUpdateKeys(const Config& config, SigningKey working, Reporter& reporter) {
  UpdateKeys keys{std::move(working), std::nullopt, nextKeys(config), {}};
  if (!config.signing.nextKey.empty()) {
    keys.next = loaded(config, "signing.next-key", config.resolve(config.signing.nextKey),
                       [](const std::string& path) { return SigningKey::load(path); });
  }
  requireASignatureOfTheNext(config, keys);
  if (!keys.nextKeys.empty()) {
    keys.trusted = keys.nextKeys;
    return keys;
  }
  keys.trusted = {keys.working.publicHex()};
  if (!config.update.reserveKey.empty()) {
    keys.trusted.push_back(reserveKey(config, keys.working, reporter));
  }
  return keys;
}

}  // namespace quillory::pack
