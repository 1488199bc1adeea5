// Starts of the real launcher with a home folder of the test's own and without a display.
#pragma once
#include <string>
#include <vector>

#include "tests/e2e/hand_made_bundle.h"
#include "tests/harness/child_process.h"
#include "tests/harness/temp_dir.h"

namespace quillory::testing {

/// A user whose home is a temporary folder: the password database is redirected in every process
/// that gets this environment.
class TestUser {
 public:
  /// `name` is that of the home folder inside the temporary one.
  explicit TestUser(const std::string& name = "home");

  const std::string& home() const { return home_; }
  /// Where applications are installed, or a master folder there.
  std::string support() const { return home_ + "/Library/Application Support"; }
  std::string master(const std::string& app = "Demo") const {
    return support() + "/Quillory-" + app;
  }
  /// Environment and time limit for a start of the launcher.
  ChildOptions options() const;

 private:
  TempDir folder_;
  std::string home_;
};

/// A start to its end.
ChildResult start(const HandMadeBundle& bundle, const TestUser& user,
                  const std::vector<std::string>& arguments = {});

/// The runtime of the tests as an installed one: its own folders, links for what is in them.
void installRuntime(const std::string& master);

/// Names in a folder, in byte order.
std::vector<std::string> namesIn(const std::string& folder);

/// The lines of a log or an output that come from our log, without "+123     ".
std::vector<std::string> logLines(const std::string& text);
/// How often `line` stands among them.
int countLine(const ChildResult& result, const std::string& line);
/// Whether they hold all of `lines` in this order, with others between; says what is missing.
bool linesInOrder(const ChildResult& result, const std::vector<std::string>& lines);

/// The arguments of the stand-in runtime's `java`, once it has started; empty if it does not. A
/// later start is told from an earlier one, because reading takes the file away.
std::vector<std::string> startedArguments(const TestUser& user, const std::string& app = "Demo");

/// What the test application reported: the lines between its REPORT BEGIN and REPORT END.
std::vector<std::string> reportOf(const ChildResult& result);
/// The rest of the report's line that begins with `name` and '='; "(none)" without one.
std::string reported(const ChildResult& result, const std::string& name);

}  // namespace quillory::testing
