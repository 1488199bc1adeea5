// Whole starts in a child process, with real archives and a shell script as `java`.
#pragma once
#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "tests/harness/temp_dir.h"
#include "tests/launcher/in_child.h"
#include "tests/launcher/test_bundle.h"

namespace quillory::testing {

/// A `java` that writes its arguments, one a line, to the file "started" in the master folder.
extern const char kStartedJava[];

/// The entries of a tail. `mainClass` is what the launch file of the updater names.
std::string updaterEntries(const char* mainClass);
std::string jreEntry(std::string_view java = kStartedJava);
std::string appEntries(std::string_view content);

/// Updater 7, JRE 17 and application 3.
TailText offlineTail();

/// That all `lines` are in the log, each behind the one before.
void expectInOrder(const std::string& log, const std::vector<std::string>& lines);

/// Has a bundle of all three, and a home folder without any of them.
class WholeStart : public ::testing::Test {
 protected:
  WholeStart();

  void writeParams(const Pairs& pairs) const;
  void writeTail(const TailText& tail, const std::string& entries) const;

  Ended start(std::vector<std::string> arguments = {}, bool prepareOnly = false) const;

  /// The arguments of the application, which the launcher does not wait for; "" when none starts.
  std::string started() const { return startedIn(master_); }
  static std::string startedIn(const std::string& masterFolder);

  /// The launch properties of the start whose arguments are `arguments`.
  static std::string launchProperties(const std::string& arguments);

  std::string installed(const std::string& inside) const { return master_ + "/" + inside; }

  TempDir home_;
  TestBundle bundle_;
  const std::string master_ = home_ / "Library/Application Support/Quillory-Demo";
};

}  // namespace quillory::testing
