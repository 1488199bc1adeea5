// A root folder of a test's own, for what would otherwise happen in places that the whole machine
// shares: /tmp, /Library, the password file, the rules of sudo. The system's programs and libraries
// are seen in it, and cannot be written. Mounts exist for the processes that run in it alone, and
// end with them; the machine outside is never changed.
#pragma once
#include <string>
#include <vector>

#include "tests/harness/child_process.h"
#include "tests/harness/temp_dir.h"

namespace quillory::testing {

class PrivateRoot {
 public:
  /// For tests that are skipped: "" where a private root can be had, else why not. Only root can
  /// make one, and not in every container.
  static std::string whyImpossible();

  PrivateRoot();

  /// The path, on this machine, of a path in there. Joined as texts: an absolute path must not lead
  /// out of it.
  std::string operator/(const std::string& inside) const { return root_.str() + '/' + inside; }

  /// A folder that the user may write to.
  void makeUserFolder(const std::string& inside) const;
  /// Lets the user run what `commands` says, in the words of sudoers, without a password.
  void allowSudo(const std::string& commands) const;

  /// Runs a command as an ordinary user with the home folder kHome and without a terminal.
  ChildResult runAsUser(const std::vector<std::string>& command, ChildOptions options = {}) const;
  ChildResult runAsRoot(const std::vector<std::string>& command, ChildOptions options = {}) const;

  static constexpr char kHome[] = "/home/user";
  static constexpr unsigned kUser = 65534;

 private:
  TempDir root_;
};

}  // namespace quillory::testing
