#include "packager/commands/trusted_keys.h"

#include "packager/config/config.h"
#include "packager/keys/public_key.h"

namespace quillory::pack {

std::vector<Argument> trustArguments(TrustArguments& given) {
  return {{.name = "-c,--config",
           .description = "the configuration that names application, channel and keys",
           .into = &given.config},
          {.name = "--channel",
           .description = "the channel, instead of the one in [update]",
           .into = &given.channel},
          {.name = "--key",
           .description = "a PEM file with either half of a key that is trusted, instead of those "
                          "of the configuration; may be repeated",
           .into = &given.keys}};
}

Trusted trustedBy(const TrustArguments& given, Reporter& reporter) {
  Findings findings;
  const Config config = loadConfig(given.config, findings);
  reporter.findings(findings);
  std::vector<std::string> files = given.keys;
  if (files.empty()) {
    files = {config.signing.key, config.update.reserveKey};
    files.insert(files.end(), config.update.nextKeys.begin(), config.update.nextKeys.end());
    for (std::string& file : files) {
      file = file.empty() ? "" : config.resolve(file);
    }
  }
  Trusted trusted{
      config.application.name, given.channel.empty() ? config.update.channel : given.channel, {}};
  for (const std::string& file : files) {
    if (!file.empty()) {
      trusted.keys.push_back(PublicKey::load(file).hex());
    }
  }
  return trusted;
}

}  // namespace quillory::pack
