// A small application to pack: a folder with a configuration, a jar, a runtime of a few files, and
// stand-ins for what travels in every bundle.
#pragma once
#include <string>
#include <vector>

#include "packager/report/findings.h"
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

  /// The path of a signing key of 2048 bits, made once a process by openssl.
  static std::string key();

 private:
  TempDir folder_;
};

struct CommandResult {
  int status = 0;
  std::string out;
  std::string err;
};

/// A run of the command line in this process. Bundles are for Linux, as the stand-ins are, unless
/// --target says otherwise.
CommandResult pack(std::vector<std::string> arguments);
/// The path of the bundle that a project makes from this configuration, in its folder dist; a test
/// failure when it makes none.
std::string bundleOf(const Project& project, const std::string& config);

/// The names of the findings, in order.
std::vector<std::string> rulesOf(const pack::Findings& findings);
bool hasRule(const pack::Findings& findings, const std::string& rule);
/// The first finding of that rule; a test failure when there is none.
pack::Finding findingOf(const pack::Findings& findings, const std::string& rule);

}  // namespace quillory::testing
