// A machine on which an online installer is started: its user, the tools in its search path, a Java
// of its own if it has one. And what an update URL offers it.
#pragma once
#include <memory>
#include <string>
#include <vector>

#include "tests/e2e/launcher_run.h"
#include "tests/harness/http_server.h"

namespace quillory::testing {

inline constexpr char kVersionPath[] = "/Quillory-JRE-version.txt";
std::string archivePath(const std::string& version);

/// Puts the release files of a runtime under the server's root.
void publishRuntime(HttpServer& server, const std::string& version, const std::string& packed);
/// The stand-in for a runtime as its archive, signed with the tests' key.
const std::string& packedScriptRuntime();

/// An installer of updater 1 and application 3 that brings no runtime. Only the runtime's signature
/// counts here: the others are left out.
Tail onlineTail(const std::string& updateUrl);

/// Makes a folder with the tools that a start needs, and no Java.
void makeToolFolder(const std::string& folder);
/// Makes a Java home with a script as `java`, and an unpack200: -version answers `version`, the
/// compatibility class ends with `compatibility`, and a start is noted as that of the stand-in
/// runtime.
void makeScriptJre(const std::string& home, const std::string& version = "1.8.0_202",
                   int compatibility = 72);

class OnlineMachine {
 public:
  /// Without a Java in its search path.
  OnlineMachine();

  const TestUser& user() const { return user_; }
  std::string master() const { return user_.master(); }
  /// A file or folder of this machine outside the user's home.
  std::string path(const std::string& name) const { return folder_ / name; }

  /// Makes `java` in the search path a link to `target`.
  void linkJavaTo(const std::string& target) const;
  /// makeScriptJre() in a folder of this machine; returns its path.
  std::string makeScriptJre(const std::string& name, const std::string& version = "1.8.0_202",
                            int compatibility = 72) const;

  /// Environment of a start; more may be added.
  ChildOptions options() const;
  /// Starts a bundle made of `tail` with the argument "argument".
  ChildResult start(const Tail& tail, const Parameters& parameters = {}) const {
    return start(tail, parameters, options());
  }
  ChildResult start(const Tail& tail, const Parameters& parameters,
                    const ChildOptions& options) const;
  /// The same, to be ended by the test.
  std::unique_ptr<BackgroundChild> startInBackground(const Tail& tail,
                                                     const ChildOptions& options) const;

  /// A start that has to succeed: from now on a runtime is installed and the application ran in it.
  void expectGoodStart(const Tail& tail) const;
  /// What an online start leaves that fails before it has a runtime: no half of one.
  void expectNoRuntime() const;

 private:
  HandMadeBundle makeBundle(const Tail& tail, const Parameters& parameters) const;

  TempDir folder_;
  TestUser user_;
};

}  // namespace quillory::testing
