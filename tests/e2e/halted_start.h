// A start of the real launcher on a window server and, if wanted, a session bus of its own, that
// halts in the middle of the installation for as long as a test needs to look at it: the stand-in
// runtime holds it up while it prepares itself.
#pragma once
#include <gtest/gtest.h>

#include <filesystem>
#include <memory>

#include "tests/e2e/launcher_run.h"
#include "tests/harness/eventually.h"
#include "tests/ui/x_server.h"

namespace quillory::testing {

inline constexpr char kHaltedIdentifier[] = "io.quillory.tests.Halted";  ///< of the bundle

class HaltedStart : public ::testing::Test {
 protected:
  HaltedStart() {
    tail_.appVersion = "3";
    tail_.jreVersion = "17";
    tail_.silentParameter = "silent";
  }

  /// Starts the launcher and waits until it halts in the middle of the installation.
  void startAndHalt(const Parameters& parameters = {},
                    const std::vector<std::string>& arguments = {}) {
    tail_.entries = entries();
    const HandMadeBundle bundle(folder_.str(), tail_, parameters);
    writeFile(bundle.contents() + "/Info.plist",
              "<plist><dict><key>CFBundleIdentifier</key><string>" +
                  std::string(kHaltedIdentifier) + "</string></dict></plist>");
    ChildOptions options = user_.options();
    options.environment["DISPLAY"] = xServer_.display();
    if (refusedThread_ > 0) {
      options.environment["LD_PRELOAD"] += ":" QUILLORY_REFUSED_THREAD;
      options.environment["QUILLORY_REFUSED_THREAD"] = std::to_string(refusedThread_);
    }
    if (!libraryPath_.empty()) options.environment["LD_LIBRARY_PATH"] = libraryPath_;
    if (!busAddress_.empty()) options.environment["DBUS_SESSION_BUS_ADDRESS"] = busAddress_;
    std::vector<std::string> command = {bundle.executable()};
    command.insert(command.end(), arguments.begin(), arguments.end());
    start_ = std::make_unique<BackgroundChild>(command, options);
    ASSERT_TRUE(eventually([&] { return std::filesystem::exists(folder_ / "halted"); }))
        << start_->out() << start_->err();
  }

  void letGoOn() const { writeFile(folder_ / "go", ""); }

  /// The rest of the start.
  ChildResult finish() const {
    letGoOn();
    return start_->finish();
  }

  /// What the application said of itself; "" if it was not started.
  std::string report() const {
    const std::string path = folder_ / "report";
    return eventually([&] { return std::filesystem::exists(path); }) ? readFile(path) : "";
  }

  TempDir folder_;
  XServer xServer_;
  Screen screen_{xServer_};
  TestUser user_;
  Tail tail_;
  std::string picture_ = readFile(QUILLORY_TEST_PICTURE);
  std::string busAddress_;
  std::string libraryPath_;
  int refusedThread_ = 0;       ///< counted from the run thread, 1; 0: none
  bool hasJvmLibrary_ = false;  ///< the application runs in the launcher's own process
  std::unique_ptr<BackgroundChild> start_;

 private:
  /// As `java` of the runtime: halts while it is prepared, for twenty seconds at most and no
  /// longer than the test's folder is there, and hands over to a real Java when the application
  /// starts.
  std::string runtimeScript() const {
    return "#!/bin/sh\n"
           "cd '" +
           folder_.str() +
           "' || exit 1\n"
           "if [ \"$1\" = -Xshare:dump ]; then\n"
           "  touch halted\n"
           "  tries=0\n"
           "  while [ -e halted ] && [ ! -e go ] && [ $((tries += 1)) -lt 1000 ]; do sleep 0.02; "
           "done\n"
           "  exit 0\n"
           "fi\n"
           "touch started\n"
           "'" QUILLORY_TEST_RUNTIME
           "/bin/java' \"$@\" >reporting 2>&1\n"
           "mv reporting report\n";
  }

  std::string runtime() const {
    const std::string java = "Contents/Home/bin/java";
    const std::string script = fileEntry(java, runtimeScript());
    if (!hasJvmLibrary_)
      return folderEntry("Contents") + script +
             fileEntry("Contents/Home/lib/rt.jar", "not looked into");
    std::string content = runtimeContent();
    const std::string program = fileEntry(java, readFile(QUILLORY_TEST_RUNTIME "/bin/java"));
    return content.replace(content.find(program), program.size(), script);
  }

  // No archive is signed: signatures are not what is looked at here.
  std::string entries() const {
    const std::string updater = fileEntry("QuilloryLaunch", launchFileBytes()) +
                                fileEntry("report.jar", readFile(QUILLORY_REPORT_JAR));
    return fileEntry("lzma64", readFile(lzma64UnderTest())) +
           fileEntry("nativesplash.png", picture_) + emptyEntry("cacerts") +
           emptyEntry("verpatch.exe") + fileEntry("GU.p2.l2", packedArchive(updater, nullptr)) +
           fileEntry("JRE.p2.l2", packedArchive(runtime(), nullptr)) +
           applicationEntries(fileEntry("hello.txt", "hello\n"), nullptr);
  }
};

}  // namespace quillory::testing
