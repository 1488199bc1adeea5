#include "packager/commands/release_list_plan.h"

#include "packager/bytes/byte_sinks.h"
#include "packager/config/rollout.h"

namespace quillory::pack {
namespace {

[[noreturn]] void reject(const Config& config, const char* key, const char* rule,
                         const std::string& what, const std::string& advice) {
  throw RejectedInput({{Severity::kError, rule, what, config.placeOf(key), advice}});
}

std::string notesOf(const Config& config) {
  const std::string& named = config.update.release.notes;
  if (named.empty()) {
    return "";
  }
  const std::string path = config.resolve(named);
  if (!isFile(path)) {
    reject(config, "update.notes", "missing-file", "there is no file " + path,
           "write what is new, or leave out update.notes");
  }
  std::string notes = readBeginningOf(path, kMaxNotesBytes + 1);
  if (notes.size() > kMaxNotesBytes || notes.find('\0') != std::string::npos) {
    reject(config, "update.notes", "notes",
           path + (notes.size() > kMaxNotesBytes ? " has more than 64 KiB" : " is no text"),
           "write what is new since the last release, and a link to the rest");
  }
  return notes;
}

ReleaseFile steppingStoneOf(const Config& config, const ReleaseFolder& folder) {
  const std::int64_t number = config.update.release.steppingStone;
  if (number == 0) {
    return {};
  }
  if (const std::optional<ReleaseFile> list = folder.keptList(number)) {
    return *list;
  }
  reject(config, "update.stepping-stone", "stepping-stone",
         "there is no list of release " + std::to_string(number) + " in " + folder.path(),
         "name one that is there, or get it back from your server");
}

}  // namespace

std::int64_t expiryOf(const Config& config, std::int64_t now) {
  return now + config.update.release.expiresDays * kSecondsOfADay;
}

ReleaseList plannedList(const Config& config, const ReleaseFolder& folder, const UpdateKeys& keys,
                        std::int64_t number, std::int64_t now) {
  const ReleaseConfig& release = config.update.release;
  ReleaseList list;
  list.application = config.application.name;
  list.channel = folder.channel();
  list.number = number;
  list.issued = now;
  list.expires = expiryOf(config, now);
  list.minimumSystem = release.minimumSystem;
  list.minimumFrom = release.minimumFrom;
  list.steppingStone = steppingStoneOf(config, folder);
  list.criticalBelow = release.criticalBelow;
  const RolloutPlan rollout = parseRollout(release.rollout).value_or(RolloutPlan{});
  list.rollout = {now, rollout.days, rollout.percent};
  if (folder.newest() != nullptr) {
    list.withdrawn = folder.newest()->withdrawn;
  }
  list.notes = notesOf(config);
  list.nextKeys = keys.nextKeys;
  return list;
}

}  // namespace quillory::pack
