// What tests of the JRE steps share: runtimes made of scripts, a server made of a map, and the
// calls that reach the splash window.
#pragma once
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "formats/downloads.h"
#include "java/jre_request.h"
#include "support/platform.h"
#include "tests/harness/scoped_replace.h"
#include "ui/splash.h"

namespace quillory::testing {

/// Writes an executable shell script.
void writeScript(const std::string& path, const std::string& body);

/// Body of a `java` that answers -version on standard output with `version`, and ends with `status`
/// when it is to run a class.
std::string javaScript(const std::string& version, int status = 72);

/// A Java home: bin/java, bin/unpack200, lib/rt.jar, lib/security/cacerts, lib/jspawnhelper.
void writeJavaHome(const std::string& home, const std::string& version = "1.8.0_202");

/// One line an entry, in byte order: "bin/", "bin/java", "link -> target". Links are not followed.
std::vector<std::string> listTree(const std::string& folder);

/// A file entry of an archive.
std::string fileEntry(const std::string& path, const std::string& content);
/// An archive of a bundle with a Java home of scripts; `extra` stands behind its entries.
std::string jreArchive(const std::string& extra = "");
/// A signature block (of a signature that cannot hold) behind `length` bytes.
std::string brokenSignature(std::size_t length);

/// An environment variable, set until the end of the scope.
class ScopedEnvironment {
 public:
  ScopedEnvironment(const char* name, const std::string& value);
  ~ScopedEnvironment();
  ScopedEnvironment(const ScopedEnvironment&) = delete;
  ScopedEnvironment& operator=(const ScopedEnvironment&) = delete;

 private:
  std::string name_;
  std::string saved_;
};

/// Downloads come from here: files by URL, without what stands behind a '?'.
class FakeServer {
 public:
  FakeServer();
  ~FakeServer();
  std::map<std::string, std::string>& files();
  /// The URLs asked for, whole.
  const std::vector<std::string>& requests() const;
  /// Where the last file was to be stored.
  std::string lastDestination() const;

 private:
  ScopedReplace<decltype(platformCalls.downloadFile)> transport_;
};

/// The splash, as a start that is not silent shows it.
FetchDisplay splashDisplay();

/// Asks the compatibility class of an updater in `masterFolder`, as a start does.
std::function<bool(const std::string& updaterFolder, const std::string& java)> compatibilityClassOf(
    const std::string& masterFolder);

/// Records the calls that reach the splash window: "show", "animate", "close".
class SplashWatch {
 public:
  SplashWatch();
  ~SplashWatch();
  const std::vector<std::string>& calls() const;

 private:
  ScopedReplace<splash::WindowCalls> window_;
};

/// Puts them into the log instead, as lines "splash: show" and "splash: close", in their order with
/// what is logged.
class SplashInTheLog {
 public:
  SplashInTheLog();

 private:
  ScopedReplace<splash::WindowCalls> window_;
};

}  // namespace quillory::testing
