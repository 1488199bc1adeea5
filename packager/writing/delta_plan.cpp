#include "packager/writing/delta_plan.h"

#include <algorithm>
#include <map>
#include <set>
#include <utility>

#include "formats/release_list_format.h"
#include "formats/sha256.h"
#include "packager/reading/plain_archive.h"
#include "packager/report/findings.h"
#include "support/utf8.h"

namespace quillory::pack {
namespace {

constexpr std::string_view kBundlePrograms = "Contents/MacOS/";
constexpr std::string_view kTrustStore = "/cacerts";
constexpr std::string_view kClassArchive = ".jsa";

struct HashedEntry {
  BaseFile file;
  std::int64_t contentAt = 0;
  bool isPlain = false;  ///< not of pack200
};

using Content = std::pair<std::int64_t, std::string>;  // length and SHA-256
Content contentOf(const BaseFile& file) { return {file.length, file.sha256}; }

std::string hashOf(const std::string& archive, const ListedEntry& entry) {
  Sha256 digest;
  readRegion({archive, entry.contentAt, entry.length},
             [&](std::string_view bytes) { digest.update(bytes); });
  return digest.hex();
}

// The files of an archive that are long enough; the hash of each is made here.
std::vector<HashedEntry> filesOf(const std::string& archive, std::int64_t worthNaming) {
  Findings findings;
  const ArchiveListing listing = PlainArchive(wholeFile(archive), false).list(findings, archive);
  if (hasErrors(findings)) throw PackError(asText(findings.front()));
  std::vector<HashedEntry> files;
  for (const ListedEntry& entry : listing.entries) {
    if (entry.type == kFolderType || entry.length < worthNaming) continue;
    files.push_back({{entry.path, entry.length, hashOf(archive, entry)},
                     entry.contentAt,
                     entry.type != kPack200Type});
  }
  return files;
}

// Those that an installation has, each under a path of its own.
std::vector<HashedEntry> installedOf(const std::string& archive, std::string_view role,
                                     std::int64_t worthNaming) {
  std::vector<HashedEntry> files = filesOf(archive, worthNaming);
  std::map<std::string, int> count;
  for (const HashedEntry& entry : files) ++count[entry.file.path];
  std::erase_if(files, [&](const HashedEntry& entry) {
    const std::string& path = entry.file.path;
    return !entry.isPlain || count[path] > 1 || !isBasePath(path) || !isUtf8(path) ||
           std::any_of(path.begin(), path.end(),
                       [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; }) ||
           !isInstalledAsPacked(role, path);
  });
  return files;
}

void addCopies(DeltaPlan& plan, const std::vector<HashedEntry>& older,
               const std::vector<HashedEntry>& newer) {
  std::map<Content, const BaseFile*> byContent;
  std::map<std::string, const BaseFile*> byPath;
  for (const HashedEntry& entry : older) {
    byContent.emplace(contentOf(entry.file), &entry.file);
    byPath.emplace(entry.file.path, &entry.file);
  }
  for (const HashedEntry& entry : newer) {
    const auto same = byContent.find(contentOf(entry.file));
    if (same == byContent.end()) continue;
    const auto atHome = byPath.find(entry.file.path);
    const bool isAtHome =
        atHome != byPath.end() && contentOf(*atHome->second) == contentOf(entry.file);
    plan.copies.push_back({isAtHome ? *atHome->second : *same->second, entry.contentAt});
  }
}

// `newPaths` null: all that are not copied.
void fillDictionary(DeltaPlan& plan, const std::vector<HashedEntry>& older,
                    const std::set<std::string>* newPaths) {
  std::set<Content> copied;
  for (const PlannedCopy& copy : plan.copies) copied.insert(contentOf(copy.file));
  plan.dictionary.clear();
  plan.dictionaryLength = 0;
  for (const HashedEntry& entry : older) {
    if (copied.count(contentOf(entry.file)) != 0) continue;
    if (newPaths != nullptr && newPaths->count(entry.file.path) == 0) continue;
    plan.dictionary.push_back({entry.file, entry.contentAt});
    plan.dictionaryLength += entry.file.length;
  }
}

}  // namespace

std::int64_t DeltaPlan::window() const {
  return std::max(kMinDeltaWindow, dictionaryLength + streamLength);
}

bool isInstalledAsPacked(std::string_view role, std::string_view path) {
  if (role != kRuntimeRole) return true;
  return !path.starts_with(kBundlePrograms) && !path.ends_with(kTrustStore) &&
         !path.ends_with(kClassArchive);
}

DeltaPlan planDelta(const std::string& oldArchive, const std::string& newArchive,
                    std::string_view role, std::int64_t mostMemory, std::int64_t worthNaming) {
  const std::vector<HashedEntry> older = installedOf(oldArchive, role, worthNaming);
  const std::vector<HashedEntry> newer = filesOf(newArchive, worthNaming);
  DeltaPlan plan;
  addCopies(plan, older, newer);
  plan.streamLength = wholeFile(newArchive).length;
  for (const PlannedCopy& copy : plan.copies) plan.streamLength -= copy.file.length;
  fillDictionary(plan, older, nullptr);
  if (plan.window() > mostMemory) {
    std::set<std::string> newPaths;
    for (const HashedEntry& entry : newer) newPaths.insert(entry.file.path);
    fillDictionary(plan, older, &newPaths);
  }
  return plan;
}

}  // namespace quillory::pack
