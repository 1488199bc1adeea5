// A small application to pack: a folder with a configuration, a jar, a runtime of a few files, and
// stand-ins for what travels in every bundle.
#pragma once
#include <string>

#include "tests/harness/temp_dir.h"

namespace quillory::testing {

class Project {
 public:
  /// Without a configuration; see writeConfig().
  Project();

  const TempDir& folder() const { return folder_; }
  std::string operator/(const std::string& inside) const { return folder_ / inside; }

  /// What config() says unless told otherwise, as the text of quillory.toml. `extra` is put behind
  /// the lines of [application], so it can have more of its keys and then other tables.
  std::string config(const std::string& extra = "") const;
  /// Writes a configuration and returns its path.
  std::string writeConfig(const std::string& text) const;

  /// The path of a signing key of 2048 bits, as madeKey() makes it.
  static std::string key();

 private:
  TempDir folder_;
};

}  // namespace quillory::testing
