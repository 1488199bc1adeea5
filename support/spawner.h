// Starting an external tool with a list of arguments, and shell commands whose output is needed.
#pragma once
#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "support/program.h"

namespace quillory {

inline constexpr std::size_t kSpawnerSlots = 500;

/// An argument list. Slot 0 is the executable path (never searched for in PATH); the first null
/// slot ends the list. The texts are borrowed.
struct Spawner {
  const char* arguments[kSpawnerSlots + 1];  ///< one more than can be filled: always terminated
};

Spawner* createSpawner();              ///< an empty list; deleteSpawner() releases it
void deleteSpawner(Spawner* spawner);  ///< null is allowed; the texts stay

struct SpawnerDeleter {
  void operator()(Spawner* spawner) const { deleteSpawner(spawner); }
};
using OwnedSpawner = std::unique_ptr<Spawner, SpawnerDeleter>;

/// Must be the first call after createSpawner(): it appends like addSpawnerArg().
void setSpawnerExe(Spawner* spawner, const char* path);
/// Appends; a 501st argument is dropped with a warning in the log.
void addSpawnerArg(Spawner* spawner, const char* text);

/// An external tool and its arguments, as many as there are: a Spawner's log lines, without its
/// slots. For lists that others make longer, such as the arguments of a start.
class Tool {
 public:
  /// `arguments` begin with the path of the executable, which is never searched for in PATH. Logged
  /// as a Spawner is that gets them.
  explicit Tool(std::vector<std::string> arguments);
  /// As runSpawnerAndWait().
  int runAndWait() const;

 private:
  std::vector<std::string> arguments_;
};

/// A new spawner with the executable and its arguments, which it borrows.
OwnedSpawner spawnerOf(const std::vector<const char*>& arguments);

/// The exit status (0 to 255); -1 when the process could not be started. A child that a signal
/// killed counts as 0, by intent; one that cannot be waited for as -1. `directory` is the child's
/// working directory.
int runSpawnerAndWait(const Spawner* spawner);
int runSpawnerAndWait(const Spawner* spawner, const char* directory);

/// Without waiting for it. One that could not be started is logged.
ProgramResult startSpawner(const Spawner* spawner, const char* directory);

}  // namespace quillory
