#include "packager/commands/bundle.h"

#include <filesystem>
#include <memory>

#include "packager/commands/bundle_archive.h"
#include "packager/commands/bundle_making.h"
#include "packager/commands/shared_arguments.h"
#include "packager/report/exit_statuses.h"

namespace quillory::pack {
namespace {

struct BundleArguments {
  std::string config = "quillory.toml";
  std::string output;  ///< "": where the configuration says
  std::optional<int> compression;
  std::string target;  ///< "": this system
  bool isUnsigned = false;
  bool withoutCache = false;
  bool asArchive = false;
};

int runBundle(const BundleArguments& given, Reporter& reporter) {
  Findings findings;
  const Config config = loadConfig(given.config, findings);
  reporter.findings(findings);
  const Target target = targetNamed(given.target).value_or(nativeTarget());
  const BundleResult result =
      makeBundle(config,
                 {given.output.empty() ? config.resolve(config.bundle.output) : given.output,
                  given.compression.value_or(config.bundle.compression), given.isUnsigned, target,
                  given.withoutCache ? "" : standardCacheFolder()},
                 reporter);
  reporter.value("target", nameOf(target));
  reporter.value("bundle", result.bundle);
  reporter.value("release", result.releaseFolder);
  reporter.value("bytes", result.bundleBytes);
  reporter.result(result.bundle);
  if (given.asArchive) {
    const std::string archive = writeBundleArchive(
        config, result.bundle, target, std::filesystem::path(result.bundle).parent_path().string());
    reporter.value("archive", archive);
    reporter.result(archive);
  }
  reporter.line(readableSize(result.bundleBytes) + ", for " + systemOf(target) +
                "; the files for the update URL are in " + result.releaseFolder);
  return kDone;
}

}  // namespace

BundleResult makeBundle(const Config& config, const BundleOptions& options, Reporter& reporter) {
  BundleMaking making(config, options, reporter);
  return making.finish(making.assemble(making.pack()));
}

Command bundleCommand() {
  const auto given = std::make_shared<BundleArguments>();
  return {"bundle",
          "makes dist/<App>.app, and dist/release/ for the update URL",
          "quillory-pack bundle --target macos --output /tmp/out myapp.toml",
          {configArgument(given->config),
           {.name = "-o,--output",
            .description = "folder for the results, instead of dist",
            .into = &given->output},
           compressionOption(given->compression),
           targetOption(given->target),
           {.name = "--unsigned",
            .description = "pack without a key: whoever can change a download can run anything",
            .into = &given->isUnsigned},
           {.name = "--archive",
            .description = "also make one file of the bundle, for people to download",
            .into = &given->asArchive},
           noCacheOption(given->withoutCache)},
          [given](Reporter& reporter) { return runBundle(*given, reporter); }};
}

}  // namespace quillory::pack
