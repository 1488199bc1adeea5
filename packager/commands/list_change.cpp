#include "packager/commands/list_change.h"

#include <ctime>
#include <utility>

#include "packager/bytes/folder_lock.h"
#include "packager/bytes/work_folder.h"
#include "packager/commands/bundle_key.h"
#include "packager/commands/release_list_plan.h"
#include "packager/commands/shared_arguments.h"
#include "packager/commands/update_keys.h"
#include "packager/report/dates.h"
#include "packager/report/exit_statuses.h"
#include "packager/writing/release_list_writer.h"

namespace quillory::pack {
namespace {

// With the keys would have to change what their archives are signed with.
void requireSameKeys(const Config& config, const UpdateKeys& keys, const ReleaseList& list) {
  if (!keys.nextKeys.empty() && keys.nextKeys != list.nextKeys) {
    throw RejectedInput(
        {{Severity::kError, "next-keys",
          "update.next-keys are not those of release " + std::to_string(list.number) +
              ", and keys change with the archives that they sign",
          config.placeOf("update.next-keys"),
          "quillory-pack release, with a larger application.version"}});
  }
}

ReleaseList nextList(const Config& config, const ReleaseFolder& folder, std::int64_t now) {
  if (folder.newest() == nullptr) {
    throw RejectedInput({{Severity::kError,
                          "no-release",
                          "there is no release list of channel \"" + folder.channel() + "\" here",
                          {folder.path(), 0},
                          "quillory-pack release makes the first one; or get the folder back from "
                          "your server"}});
  }
  ReleaseList list = *folder.newest();
  list.number = folder.nextNumber();
  list.issued = now;
  list.expires = expiryOf(config, now);
  return list;
}

// The kept one first: a number that was in force is never used again.
std::string putLists(const ReleaseFolder& folder, const ReleaseList& list, const UpdateKeys& keys,
                     Salt salt) {
  const std::vector<const SigningKey*> signers = keys.forLists();
  const std::string path = folder / releaseListName(list.application, list.channel);
  for (const std::string& place :
       {folder / keptReleaseListName(list.application, list.channel, list.number), path}) {
    stopIfInterrupted();
    writeReleaseList(place, list, signers, salt);
  }
  return path;
}

}  // namespace

ChangedList changeList(const Config& config, const ListChangeOptions& options,
                       const ListChange& change, Reporter& reporter) {
  std::optional<SigningKey> key = bundleKey(config, false, reporter);
  const UpdateKeys keys = loadUpdateKeys(config, std::move(*key), reporter);
  const FolderLock lock(options.output, [&] {
    reporter.line("waiting for another release that is made in " + options.output);
  });
  Findings findings;
  const ReleaseFolder folder(options.output + "/release", config.application.name,
                             options.channel.empty() ? config.update.channel : options.channel,
                             keys.known(), findings);
  reporter.findings(findings);
  ReleaseList list = nextList(config, folder, options.now);
  requireSameKeys(config, keys, list);
  change(list, folder);
  const std::string path = putLists(folder, list, keys, config.signing.salt);
  return {std::move(list), path};
}

std::vector<Argument> listArguments(ListArguments& given) {
  return {configArgument(given.config),
          {.name = "-o,--output",
           .description = "the folder of the releases, instead of dist",
           .into = &given.output},
          {.name = "--channel",
           .description = "the channel of the list, instead of the one in [update]",
           .into = &given.channel}};
}

int runListChange(const ListArguments& given, const ListChange& change, Reporter& reporter) {
  Findings findings;
  const Config config = loadConfig(given.config, findings);
  reporter.findings(findings);
  const ListChangeOptions options{
      given.output.empty() ? config.resolve(config.bundle.output) : given.output, given.channel,
      std::time(nullptr)};
  const auto [list, path] = changeList(config, options, change, reporter);
  reporter.value("number", static_cast<std::uint64_t>(list.number));
  reporter.value("list", path);
  reporter.value("expires", static_cast<std::uint64_t>(list.expires));
  reporter.result("release " + std::to_string(list.number) + ": " + path);
  reporter.line("good until " + readableTime(list.expires) +
                "; copy it to your server, and the same file with its number");
  return kDone;
}

}  // namespace quillory::pack
