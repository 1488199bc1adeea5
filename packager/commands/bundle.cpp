#include "packager/commands/bundle.h"

#include <filesystem>
#include <memory>

#include "packager/bytes/work_folder.h"
#include "packager/commands/bundle_assembly.h"
#include "packager/commands/bundle_key.h"
#include "packager/commands/bundle_lint.h"
#include "packager/commands/bundle_parts.h"
#include "packager/commands/output_place.h"
#include "packager/commands/packed_parts.h"
#include "packager/report/exit_statuses.h"

namespace quillory::pack {
namespace {

namespace fs = std::filesystem;

struct BundleArguments {
  std::string config = "quillory.toml";
  std::string output;  ///< "": where the configuration says
  std::optional<int> compression;
  std::string target;  ///< "": this system
  bool isUnsigned = false;
};

// All that goes in, judged as a whole before anything is packed.
BundleParts gatherParts(const Config& config, const BundleTools& tools, Target target,
                        const std::string& output, const std::string& workFolder,
                        Reporter& reporter) {
  const std::vector<std::string> jars = findJars(config);
  reporter.findings(accepted(lintFiles(config, jars)));
  std::optional<BundlePart> runtime;
  if (config.runtime.source != RuntimeSource::kNone) {
    runtime = runtimePart(config, tools, jars, target, workFolder, reporter);
  }
  BundleParts parts{updaterPart(config, tools), applicationPart(config, jars), std::move(runtime)};
  reporter.findings(accepted(lintParts(config, parts, output)));
  return parts;
}

std::uint64_t bytesIn(const std::string& folder) {
  std::uint64_t bytes = 0;
  for (const auto& entry : fs::recursive_directory_iterator(folder)) {
    bytes += entry.is_regular_file() ? entry.file_size() : 0;
  }
  return bytes;
}

int runBundle(const BundleArguments& given, Reporter& reporter) {
  Findings findings;
  const Config config = loadConfig(given.config, findings);
  reporter.findings(findings);
  const Target target = targetNamed(given.target).value_or(nativeTarget());
  const BundleResult result =
      makeBundle(config,
                 {given.output.empty() ? config.resolve(config.bundle.output) : given.output,
                  given.compression.value_or(config.bundle.compression), given.isUnsigned, target},
                 reporter);
  reporter.value("target", nameOf(target));
  reporter.value("bundle", result.bundle);
  reporter.value("release", result.releaseFolder);
  reporter.value("bytes", result.bundleBytes);
  reporter.result(result.bundle);
  reporter.line(readableSize(result.bundleBytes) + ", for " + systemOf(target) +
                "; the files for the update URL are in " + result.releaseFolder);
  return kDone;
}

}  // namespace

BundleResult makeBundle(const Config& config, const BundleOptions& options, Reporter& reporter) {
  const std::string bundle = options.output + '/' + config.application.name + ".app";
  requireReplaceable(bundle);  // before anybody waits for the packing
  const WorkFolder work(options.output);
  const std::optional<SigningKey> key = bundleKey(config, options.isUnsigned, reporter);
  const bool isHardened = isToBeHardened(config, key.has_value(), reporter);
  const BundleTools tools = findBundleTools(config, options.target);
  const BundleParts parts =
      gatherParts(config, tools, options.target, options.output, work.path(), reporter);
  const PackedParts packed =
      packParts(parts, {options.compression, key ? &*key : nullptr, config.signing.salt},
                work.path(), reporter, isHardened ? nameOf(options.target) : "");
  const MadeFiles made =
      assembleBundle(config, tools, packed, key ? key->publicHex() : "", work.path());
  const BundleResult result{bundle, options.output + "/release", bytesIn(made.bundle)};
  putInPlace(made, {result.bundle, result.releaseFolder, work / "earlier"});
  return result;
}

Command bundleCommand() {
  const auto given = std::make_shared<BundleArguments>();
  return {"bundle",
          "makes dist/<App>.app, and dist/release/ for the update URL",
          "quillory-pack bundle --target macos --output /tmp/out myapp.toml",
          {{.name = "CONFIG", .description = "the configuration", .into = &given->config},
           {.name = "-o,--output",
            .description = "folder for the results, instead of dist",
            .into = &given->output},
           {.name = "--compression",
            .description = "0 (fast) to 9 (small)",
            .into = &given->compression,
            .numberRange = {{0, 9}}},
           {.name = "--target",
            .description = "the system that it is for, instead of this one",
            .into = &given->target,
            .choices = targetNames()},
           {.name = "--unsigned",
            .description = "pack without a key: whoever can change a download can run anything",
            .into = &given->isUnsigned}},
          [given](Reporter& reporter) { return runBundle(*given, reporter); }};
}

}  // namespace quillory::pack
