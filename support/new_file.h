// A file that is written at its place, from its first byte to its last. What could not be written
// whole is removed: a file that is there is complete. support/output_file.h has the other of the
// pair, which leaves what was there until the new file is complete.
#pragma once
#include <cstddef>
#include <cstdio>
#include <string>

#include "support/owned.h"
#include "support/steady_file.h"

namespace quillory {

class NewFile {
 public:
  /// What becomes of something that stands at the path. A folder stays, and nothing is opened.
  enum class Existing {
    kUnlinked,   ///< whatever it is: the file is a new one, with the mode of new files
    kRewritten,  ///< a file keeps its mode and its other names; a link is unlinked, not followed
    kFollowed,   ///< as fopen() with "wb" does; for a path that a user chose
  };

  explicit NewFile(std::string path, Existing existing = Existing::kUnlinked);
  /// Removes the file unless close() has succeeded. A device stays, and what was reached by
  /// kFollowed does.
  ~NewFile();
  NewFile(NewFile&& other) noexcept;
  NewFile& operator=(NewFile&&) = delete;

  /// False when it could not be opened, and after close().
  bool isOpen() const { return file_.isOpen(); }
  int descriptor() const { return file_.descriptor(); }
  /// For what prints, behind what was written; errors of it are found by close(). Null when it is
  /// not open.
  std::FILE* stream();
  /// After a failure nothing more is written.
  bool write(const void* data, std::size_t size);
  /// Gives it this mode, whatever the umask; a file of a second name, which may be somebody's
  /// private one elsewhere, keeps its own. Whether it has the mode now.
  bool setMode(unsigned mode);
  /// Writes what is still buffered, and closes: the last bytes may meet a full disk only now. False
  /// after any earlier failure, too.
  bool close();
  const std::string& path() const { return path_; }
  /// The errno of what failed first; 0 as long as nothing has.
  int error() const { return error_; }

 private:
  bool fail(int error);

  std::string path_;
  Existing existing_;
  SteadyWriter file_;
  OwnedFile stream_;  // of a descriptor of its own; writes everything from stream() on
  bool isIncomplete_ = false;
  int error_ = 0;
};

}  // namespace quillory
