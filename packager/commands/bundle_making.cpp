#include "packager/commands/bundle_making.h"

#include <algorithm>
#include <filesystem>
#include <utility>

#include "packager/commands/bundle_assembly.h"
#include "packager/commands/bundle_key.h"
#include "packager/commands/bundle_lint.h"
#include "packager/commands/stored_jars.h"
#include "packager/commands/update_settings.h"

namespace quillory::pack {
namespace {

namespace fs = std::filesystem;

std::string replaceable(std::string bundle) {
  requireReplaceable(bundle);  // before anybody waits for the packing
  return bundle;
}

// Takes the key, where installations look for updates: those take nothing that is not signed.
std::optional<UpdateKeys> takeUpdateKeys(const Config& config, std::optional<SigningKey>& key,
                                         Reporter& reporter) {
  if (!config.update.hasClient) {
    return std::nullopt;
  }
  if (!key) {
    throw RejectedInput({{Severity::kError, "unsigned",
                          "[update] makes installations look for updates, and these would be "
                          "packed without a key: no installation takes what is not signed",
                          config.placeOf("update"), "sign them, or leave out mode and channel"}});
  }
  return loadUpdateKeys(config, std::move(*key), reporter);
}

// A `java` of its own would be called "java" in the Dock and in the menu: Java's toolkit asks for
// this before it makes the application there.
Config withNameInDock(Config config, Target target) {
  constexpr char kName[] = "apple.awt.application.name";
  Parameters& properties = config.jvm.systemProperties;
  const bool isNamed = std::any_of(properties.begin(), properties.end(),
                                   [&](const auto& property) { return property.first == kName; });
  if (target == Target::kMacOS && config.jvm.forceSpawn && !isNamed) {
    properties.emplace_back(kName, config.application.name);
  }
  return config;
}

// All that goes in, judged as a whole before anything is packed.
BundleParts gatherParts(const Config& config, const BundleTools& tools,
                        const BundleOptions& options, const std::string& updateSettings,
                        const std::string& workFolder, PackCache& cache, Reporter& reporter) {
  const std::vector<std::string> jars = findJars(config);
  reporter.findings(accepted(lintFiles(config, jars)));
  if (options.target == Target::kMacOS) {
    reporter.findings(accepted(lintMacPlist(config)));
  }
  std::optional<BundlePart> runtime;
  if (config.runtime.source != RuntimeSource::kNone) {
    runtime = runtimePart(config, tools, jars, options.target, workFolder, cache, reporter);
  }
  const bool areStored = config.application.jarsStored.value_or(false);
  BundleParts parts{updaterPart(config, tools, updateSettings),
                    applicationPart(withNameInDock(config, options.target), jars,
                                    areStored ? storedJars(jars, workFolder, reporter) : jars),
                    std::move(runtime)};
  reporter.findings(accepted(lintParts(config, parts, options.output)));
  return parts;
}

std::uint64_t bytesIn(const std::string& folder) {
  std::uint64_t bytes = 0;
  for (const auto& entry : fs::recursive_directory_iterator(folder)) {
    bytes += entry.is_regular_file() ? entry.file_size() : 0;
  }
  return bytes;
}

}  // namespace

BundleMaking::BundleMaking(const Config& config, const BundleOptions& options, Reporter& reporter)
    : config_(config),
      options_(options),
      reporter_(reporter),
      bundle_(replaceable(options.output + '/' + config.application.name + ".app")),
      work_(options.output),
      cache_(options.cache),
      key_(bundleKey(config, options.isUnsigned, reporter)),
      isHardened_(isToBeHardened(config, key_.has_value(), reporter)),
      updateKeys_(takeUpdateKeys(config, key_, reporter)),
      tools_(findBundleTools(config, options.target)),
      parts_(gatherParts(config, tools_, options,
                         updateKeys_ ? updateSettingsOf(config, *updateKeys_) : "", work_.path(),
                         cache_, reporter)) {}

const SigningKey* BundleMaking::archiveKey() const {
  return updateKeys_ ? &updateKeys_->forArchives() : key_ ? &*key_ : nullptr;
}

PackedParts BundleMaking::pack(const ArchiveSource& earlier) {
  const bool saysWhatItIs = isHardened_ || config_.update.hasClient;
  PackedParts packed =
      packParts(parts_, {options_.compression, archiveKey(), config_.signing.salt, &cache_},
                work_.path(), reporter_, saysWhatItIs ? nameOf(options_.target) : "", earlier);
  packed.isHardened = isHardened_;
  if (parts_.runtime) {
    packed.runtimeArchitectures = parts_.runtime->architectures;
  }
  return packed;
}

MadeFiles BundleMaking::assemble(const PackedParts& packed) const {
  const SigningKey* key = archiveKey();
  return assembleBundle(config_, tools_, packed, key != nullptr ? key->publicHex() : "",
                        work_.path());
}

BundleResult BundleMaking::finish(const MadeFiles& made) const {
  const BundleResult result{bundle_, options_.output + "/release", bytesIn(made.bundle)};
  putInPlace(made, {result.bundle, result.releaseFolder, work_ / "earlier"});
  return result;
}

}  // namespace quillory::pack
