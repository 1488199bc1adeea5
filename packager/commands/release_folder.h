// A release folder as it lies there: what it has offered so far. Every list stays in it under a
// name with its number, because later ones are made of them.
#pragma once
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "formats/release_list.h"
#include "packager/report/findings.h"

namespace quillory::pack {

class ReleaseFolder {
 public:
  /// Reads the lists of one application, and keeps those of one channel apart from all others; a
  /// folder that is not there has none. `keys`
  /// are those of its owner, in hexadecimal: a newest list that none of them has signed becomes a
  /// finding, and is read all the same, since keys are lost and exchanged. Throws PackError for a
  /// list that is damaged, or is not what its name says.
  ReleaseFolder(std::string path, std::string application, std::string channel,
                const std::vector<std::string>& keys, Findings& findings);

  const std::string& path() const { return path_; }
  const std::string& channel() const { return channel_; }
  std::string operator/(const std::string& name) const { return path_ + '/' + name; }

  /// Kept ones of the channel, the newest number first; the list in force is among them.
  const std::vector<ReleaseList>& lists() const { return lists_; }
  /// The list in force; null when there is none.
  const ReleaseList* newest() const { return newest_ ? &*newest_ : nullptr; }
  /// Larger than every number that was used.
  std::int64_t nextNumber() const;

  /// A component as a list of any channel has it; null when none does.
  const ReleaseComponent* released(const std::string& name, const std::string& version) const;
  /// The largest version under which it was ever offered in the channel; 0 for none.
  std::int64_t highestVersion(const std::string& name) const;
  /// A kept list as a file that others can name; none when there is none of that number.
  std::optional<ReleaseFile> keptList(std::int64_t number) const;

 private:
  void readKept();
  void readNewest(const std::vector<std::string>& keys, Findings& findings);
  ReleaseList readOwn(const std::string& name) const;

  std::string path_;
  std::string application_;
  std::string channel_;
  std::optional<ReleaseList> newest_;
  std::vector<ReleaseList> lists_;
  std::vector<ReleaseList> others_;  ///< of other channels
};

}  // namespace quillory::pack
