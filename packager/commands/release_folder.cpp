#include "packager/commands/release_folder.h"

#include <algorithm>
#include <utility>

#include "formats/sha256.h"
#include "packager/bytes/byte_sinks.h"
#include "support/folder_listing.h"

namespace quillory::pack {
namespace {

bool isNumber(const std::string& text) {
  constexpr std::size_t kMostDigits = 18;  // which fit into 64 bits
  return !text.empty() && text.size() <= kMostDigits && text.front() != '0' &&
         text.find_first_not_of("0123456789") == std::string::npos;
}

}  // namespace

ReleaseFolder::ReleaseFolder(std::string path, std::string application, std::string channel,
                             const std::vector<std::string>& keys, Findings& findings)
    : path_(std::move(path)), application_(std::move(application)), channel_(std::move(channel)) {
  readKept();
  readNewest(keys, findings);
  std::sort(lists_.begin(), lists_.end(),
            [](const ReleaseList& a, const ReleaseList& b) { return a.number > b.number; });
}

// It lies in its owner's folder, and says itself what is expected of it: nobody installs from here.
ReleaseList ReleaseFolder::readOwn(const std::string& name) const {
  const std::string file = *this / name;
  const std::string bytes = readBeginningOf(file, kMaxReleaseListBytes + 1);
  const ReleaseListVerdict verdict = readSteppingStoneBytes(
      bytes, {name, static_cast<std::int64_t>(bytes.size()), sha256Hex(bytes)});
  if (!verdict.list) {
    throw PackError("is no release list: " + verdict.refusal, "get it back from your server",
                    {file, 0});
  }
  const ReleaseList& list = *verdict.list;
  const bool isKept = name != releaseListName(list.application, list.channel);
  if (isKept && name != keptReleaseListName(list.application, list.channel, list.number)) {
    throw PackError("is the list of release " + std::to_string(list.number) + " of \"" +
                        list.application + "\", channel \"" + list.channel + '"',
                    "get the one of this name back from your server", {file, 0});
  }
  return list;
}

void ReleaseFolder::readKept() {
  const std::string prefix = std::string(kReleasePrefix) + application_ + '-';
  const std::string nameless = keptReleaseListName("", "", 0);
  const std::string middle = nameless.substr(nameless.find("-releases"));  // "-releases-0"
  for (const std::string& name : namesIn(path_)) {
    const std::size_t number = name.rfind('-') + 1;
    const std::string before = name.substr(0, number);
    if (!name.starts_with(prefix) || !isNumber(name.substr(number)) ||
        !before.ends_with(middle.substr(0, middle.size() - 1))) {
      continue;
    }
    ReleaseList list = readOwn(name);
    (list.channel == channel_ ? lists_ : others_).push_back(std::move(list));
  }
}

void ReleaseFolder::readNewest(const std::vector<std::string>& keys, Findings& findings) {
  const std::string name = releaseListName(application_, channel_);
  if (!isFile(*this / name)) {
    return;
  }
  newest_ = readOwn(name);
  if (!readReleaseList(*this / name, keys).list) {
    findings.push_back({Severity::kWarning,
                        "other-key",
                        "the release list is signed with none of the keys that are named here",
                        {*this / name, 0},
                        "installations go on only where a key that they trust signs the next one"});
  }
  const bool isKept = std::any_of(lists_.begin(), lists_.end(), [this](const ReleaseList& list) {
    return list.number == newest_->number;
  });
  if (!isKept) {
    lists_.push_back(*newest_);
  }
}

std::int64_t ReleaseFolder::nextNumber() const {
  return lists_.empty() ? 1 : lists_.front().number + 1;
}

const ReleaseComponent* ReleaseFolder::released(const std::string& name,
                                                const std::string& version) const {
  for (const std::vector<ReleaseList>* lists : {&lists_, &others_}) {
    for (const ReleaseList& list : *lists) {
      for (const ReleaseComponent& component : list.components) {
        if (component.name == name && component.version == version) {
          return &component;
        }
      }
    }
  }
  return nullptr;
}

std::int64_t ReleaseFolder::highestVersion(const std::string& name) const {
  std::int64_t highest = 0;
  for (const ReleaseList& list : lists_) {
    for (const ReleaseComponent& component : list.components) {
      if (component.name == name && isNumber(component.version)) {
        highest = std::max<std::int64_t>(highest, std::stoll(component.version));
      }
    }
  }
  return highest;
}

std::optional<ReleaseFile> ReleaseFolder::keptList(std::int64_t number) const {
  const std::string name = keptReleaseListName(application_, channel_, number);
  const std::optional<HashedFile> file = hashFile(*this / name);
  if (!file) {
    return std::nullopt;
  }
  return ReleaseFile{name, file->length, file->sha256};
}

}  // namespace quillory::pack
