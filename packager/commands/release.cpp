#include "packager/commands/release.h"

#include <algorithm>
#include <ctime>
#include <deque>
#include <filesystem>
#include <map>
#include <memory>
#include <nlohmann/json.hpp>
#include <utility>

#include "packager/bytes/byte_sinks.h"
#include "packager/bytes/folder_lock.h"
#include "packager/commands/archive_facts.h"
#include "packager/commands/bundle_making.h"
#include "packager/commands/release_deltas.h"
#include "packager/commands/release_folder.h"
#include "packager/commands/release_list_plan.h"
#include "packager/commands/released_archive.h"
#include "packager/commands/shared_arguments.h"
#include "packager/report/dates.h"
#include "packager/report/exit_statuses.h"
#include "packager/writing/release_list_writer.h"

namespace quillory::pack {
namespace {

namespace fs = std::filesystem;

struct ReleaseArguments {
  std::string config = "quillory.toml";
  std::string output;  ///< "": where the configuration says
  std::string channel;
  std::string target;
  std::optional<int> compression;
  std::optional<int> number;
  bool withoutCache = false;
};

// A part of the release on its way into the list.
struct ReleasedPart {
  const char* role;
  const PackedPart& part;
  std::string shownVersion;
};

void requireClient(const Config& config) {
  if (!config.update.hasClient) {
    throw RejectedInput({{Severity::kError, "no-client",
                          "[update] has neither mode nor channel: no installation would look for "
                          "this release",
                          config.placeOf("update"), "mode = \"background\" in [update]"}});
  }
}

std::int64_t numberFor(const ReleaseOptions& options, const ReleaseFolder& folder) {
  const std::int64_t number = options.number.value_or(folder.nextNumber());
  if (number < folder.nextNumber()) {
    throw RejectedInput(
        {{Severity::kError,
          "number-used",
          "release " + std::to_string(number) + " is not above the newest one here, which is " +
              std::to_string(folder.nextNumber() - 1) + ": installations take no smaller number",
          {folder.path(), 0},
          "leave out --number, or give a larger one"}});
  }
  return number;
}

// Installations compare versions as numbers, and have the highest one that was ever offered.
void requireHighest(const Config& config, const ReleaseFolder& folder) {
  const std::int64_t version = config.application.version;
  const std::int64_t highest = folder.highestVersion(config.application.name);
  if (version < highest) {
    throw RejectedInput({{Severity::kError, "version-order",
                          "application.version is " + std::to_string(version) + ", and version " +
                              std::to_string(highest) + " was released already",
                          config.placeOf("application.version"),
                          "raise it; quillory-pack withdraw takes a bad version back"}});
  }
}

void requireSamePlatform(const ReleaseFolder& folder, const std::string& platform) {
  if (folder.newest() != nullptr && folder.newest()->platform != platform) {
    throw RejectedInput({{Severity::kError,
                          "platform",
                          "the releases in this folder are for " + folder.newest()->platform +
                              ", and this one is for " + platform,
                          {folder.path(), 0},
                          "give each system an output folder and an update URL of its own"}});
  }
}

std::vector<ReleasedPart> partsOf(const Config& config, const PackedParts& packed) {
  std::vector<ReleasedPart> parts = {{kUpdaterRole, packed.updater, packed.updater.version}};
  if (packed.runtime) {
    parts.push_back({kRuntimeRole, *packed.runtime, packed.runtime->version});
  }
  parts.push_back({kApplicationRole, packed.application, config.application.displayVersion});
  return parts;
}

// With the deltas that lead to them, which are made from their plain archives.
void addComponents(ReleaseList& list, const std::vector<ReleasedPart>& parts,
                   const ReleaseFolder& folder, const DeltaOptions& options, Reporter& reporter) {
  std::deque<ArchiveFacts> unpacked;
  std::map<std::string, std::string> plainArchives;
  for (const auto& [role, part, shownVersion] : parts) {
    const ArchiveFacts& facts = unpacked.emplace_back(part.archive);
    plainArchives[role] = facts.plain().path();
    ReleaseComponent component = facts.component(role, releaseArchiveName(part.name, part.version));
    component.shownVersion = shownVersion;
    list.components.push_back(std::move(component));
  }
  addDeltas(list, plainArchives, folder, options, reporter);
}

// The launcher's version files tell of the channel that bundles are made for.
void keepVersionFilesOf(const Config& config, const ReleaseFolder& folder,
                        const std::string& made) {
  if (folder.channel() == config.update.channel) {
    return;
  }
  for (const auto& entry : fs::directory_iterator(made)) {
    if (entry.path().string().ends_with(kVersionFileSuffix)) {
      fs::remove(entry.path());
    }
  }
}

void writeLists(const ReleaseList& list, const std::string& bytes, const std::string& made) {
  for (const std::string& name : {keptReleaseListName(list.application, list.channel, list.number),
                                  releaseListName(list.application, list.channel)}) {
    writeWholeFile(made + '/' + name, bytes, 0666, Durability::kLeftToTheSystem);
  }
}

void tell(const ReleaseList& list, Reporter& reporter) {
  nlohmann::ordered_json components = nlohmann::ordered_json::array();
  for (const ReleaseComponent& component : list.components) {
    const auto bytes = static_cast<std::uint64_t>(component.archive.length);
    nlohmann::ordered_json deltas = nlohmann::ordered_json::array();
    std::string line = component.name + ' ' + component.version + ": " + readableSize(bytes);
    for (const ReleaseDelta& delta : component.deltas) {
      line += "; from version " + delta.baseVersion + ": " +
              readableSize(static_cast<std::uint64_t>(delta.file.length));
      deltas.push_back({{"from", delta.baseVersion}, {"bytes", delta.file.length}});
    }
    reporter.line(line);
    components.push_back({{"role", component.role},
                          {"name", component.name},
                          {"version", component.version},
                          {"bytes", bytes},
                          {"deltas", deltas}});
  }
  reporter.value("components", components);
}

int runRelease(const ReleaseArguments& given, Reporter& reporter) {
  Findings findings;
  const Config config = loadConfig(given.config, findings);
  reporter.findings(findings);
  ReleaseOptions options;
  options.bundle = {given.output.empty() ? config.resolve(config.bundle.output) : given.output,
                    given.compression.value_or(config.bundle.compression), false,
                    targetNamed(given.target).value_or(nativeTarget()),
                    given.withoutCache ? "" : standardCacheFolder()};
  options.channel = given.channel;
  options.number = given.number;
  options.now = std::time(nullptr);
  const ReleaseResult result = makeRelease(config, options, reporter);
  reporter.value("number", static_cast<std::uint64_t>(result.number));
  reporter.value("bundle", result.bundle.bundle);
  reporter.value("release", result.bundle.releaseFolder);
  reporter.value("list", result.list);
  reporter.result("release " + std::to_string(result.number) + ": " + result.list);
  reporter.line("copy " + result.bundle.releaseFolder +
                " to your server, the file that ends with \"-releases\" last; for new users there "
                "is " +
                result.bundle.bundle);
  return kDone;
}

}  // namespace

ReleaseResult makeRelease(const Config& config, const ReleaseOptions& options, Reporter& reporter) {
  requireClient(config);
  BundleMaking making(config, options.bundle, reporter);
  const UpdateKeys& keys = *making.updateKeys();
  fs::create_directories(options.bundle.output);
  const FolderLock lock(options.bundle.output, [&] {
    reporter.line("waiting for another release that is made in " + options.bundle.output);
  });
  Findings findings;
  const ReleaseFolder folder(options.bundle.output + "/release", config.application.name,
                             options.channel.empty() ? config.update.channel : options.channel,
                             keys.known(), findings);
  reporter.findings(findings);
  ReleaseList list = plannedList(config, folder, keys, numberFor(options, folder), options.now);
  list.platform = nameOf(options.bundle.target);
  requireSamePlatform(folder, list.platform);
  requireHighest(config, folder);
  const PackedParts packed = making.pack(
      [&](const PackingJob& job) { return releasedArchive(folder, job, keys.forArchives()); });
  const MadeFiles made = making.assemble(packed);
  addComponents(list, partsOf(config, packed), folder, {config.update.release.deltas, made.release},
                reporter);
  writeLists(list, releaseListBytes(list, keys.forLists(), config.signing.salt), made.release);
  keepVersionFilesOf(config, folder, made.release);
  const BundleResult bundle = making.finish(made);
  tell(list, reporter);
  return {bundle, list.number, folder / releaseListName(list.application, list.channel)};
}

Command releaseCommand() {
  const auto given = std::make_shared<ReleaseArguments>();
  return {"release",
          "makes a bundle, its updates and the signed list that installations look for",
          "quillory-pack release --output /tmp/out myapp.toml",
          {configArgument(given->config),
           {.name = "-o,--output",
            .description = "folder for the results, instead of dist; earlier releases in it are "
                           "what updates lead from",
            .into = &given->output},
           {.name = "--channel",
            .description = "the channel of this release, instead of the one in [update]",
            .into = &given->channel},
           {.name = "--number",
            .description = "its number, instead of the next one",
            .into = &given->number,
            .numberRange = {{1, 1'000'000'000}}},
           compressionOption(given->compression),
           targetOption(given->target),
           noCacheOption(given->withoutCache)},
          [given](Reporter& reporter) { return runRelease(*given, reporter); }};
}

}  // namespace quillory::pack
