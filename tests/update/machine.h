// A machine on which the application Demo is installed, in a folder of the test's own, with a clock
// that the test sets.
#pragma once
#include <functional>
#include <string>
#include <vector>

#include "formats/update_settings.h"
#include "support/clock.h"
#include "tests/harness/captured_log.h"
#include "tests/harness/scoped_replace.h"
#include "tests/harness/temp_dir.h"
#include "tests/update/folder_transport.h"
#include "tests/update/release_folder.h"
#include "update/commands.h"
#include "update/state.h"

namespace quillory::testing {

inline constexpr char kServer[] = "http://one.test/app/";

/// What a run said and how it ended.
struct RunResult {
  int status = -1;
  std::vector<std::string> lines;

  /// The last line that begins with `word`; "" without one.
  std::string line(const std::string& word) const;
};

/// Seconds that the machine's clock tells. Sleeping moves it.
extern std::int64_t machineTime;

class Machine {
 public:
  /// With an updater of version 1, the settings of a bundle and, unless "", that version of the
  /// application; the server is `releases`.
  explicit Machine(const ReleaseFolder& releases, const std::string& appVersion = "1");

  std::string master() const { return folder_.str(); }
  std::string operator/(const std::string& inside) const { return folder_ / inside; }
  std::string updaterFolder() const;

  /// Puts a version folder there, as a launcher does.
  void installApplication(const std::string& version, const Content& content) const;
  void writeSettings(const UpdateSettings& settings) const;

  /// The launch properties of a start, which the next run is told.
  update::Installation installation() const;
  RunResult run(update::Command command, const std::string& argument = "");
  /// The same of an installation that was read before.
  RunResult runOn(const update::Installation& its, update::Command command,
                  const std::string& argument = "");

  update::State state() const { return update::readState(folder_ / "QYUpdates"); }
  /// Which versions of the application are there, in order of their names.
  std::vector<std::string> versions() const;
  /// The content of a file of an installed application; "(none)" without it.
  std::string fileOf(const std::string& version, const std::string& path) const;

  FolderTransport transport;
  UpdateSettings settings;      ///< as they were written last
  std::string extraProperties;  ///< put behind the others
  std::string ownFolder;        ///< "": the master folder
  std::string administrators;   ///< the folder of the administrator's files
  std::string draw;             ///< of who has asked for the run
  /// As update::CommandRequest has it.
  std::function<int(const std::string& draw)> elevate;

 private:
  TempDir folder_;
  TempDir administratorsFolder_;
  CapturedLog log_;
  ScopedReplace<decltype(timeCalls.nowMillis)> clock_;
  ScopedReplace<decltype(timeCalls.sleepMicros)> sleep_;
  ScopedReplace<decltype(logCalls.show)> quiet_;
};

/// A property as it stands in the file.
std::string property(const std::string& key, const std::string& value);

}  // namespace quillory::testing
