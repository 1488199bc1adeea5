// A file that appears under its name only when it is complete. It is written beside its place, so
// that a run that fails or is killed by a signal leaves what was there before; a symbolic link that
// stands at the place is replaced, never followed. support/new_file.h has the other of the pair,
// for places where nothing is worth keeping.
#pragma once
#include <cstddef>
#include <string>
#include <string_view>

#include "support/steady_file.h"

namespace quillory {

/// What the name of a file begins with that is being written beside its place; a random part
/// follows.
inline constexpr std::string_view kUnfinishedPrefix = ".unfinished-";

/// The mode of a finished file, whatever the umask.
struct ExactMode {
  unsigned bits;
};

/// Whether the disk has a file before it gets its name, so that a power cut leaves the old one or
/// the new one and never an empty one. It costs a wait for the disk, see support/durable.h.
enum class Durability {
  kFlushed,         ///< for what stays: installed files, keys, what was packed
  kLeftToTheSystem  ///< for what is scratch, or flushed with the folder around it
};

class OutputFile {
 public:
  /// Nothing is created when `path` names something that is neither a plain file nor a link.
  /// `mode` is the mode of the finished file, less the process's umask.
  explicit OutputFile(std::string path, unsigned mode = 0666,
                      Durability durability = Durability::kFlushed);
  OutputFile(std::string path, ExactMode mode, Durability durability = Durability::kFlushed);
  ~OutputFile();
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;

  /// Whether it could be created; error() says why not.
  bool isOpen() const { return file_.isOpen(); }
  int descriptor() const { return file_.descriptor(); }
  /// False after this or any earlier failure; error() says what it was.
  bool write(const void* data, std::size_t size);
  /// Moves the file to its place. Without it, the destructor removes what was written. What the
  /// disk refuses to keep is not moved; that it may still lose the new name is in the log only.
  bool commit();
  /// "<path>: <what went wrong>", of the first failure; "" as long as there is none.
  const std::string& error() const { return error_; }

 private:
  bool fail(const char* what, int number);
  bool isFlushed();

  std::string path_;
  std::string beside_;
  Durability durability_;
  SteadyWriter file_;
  std::string error_;
};

/// Lets SIGINT, SIGTERM and SIGHUP remove the files that are being written before they end the
/// process. For the beginning of main(); at most 16 files at a time are covered.
void removeUnfinishedFilesOnSignals();

}  // namespace quillory
