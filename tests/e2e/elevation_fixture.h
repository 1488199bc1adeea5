// An ordinary user starts a bundle that installs where only root may write. Each test has a root
// folder of its own, because the places have fixed names: /Library, /tmp, the rules of sudo.
#pragma once
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <chrono>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "tests/e2e/launcher_run.h"
#include "tests/harness/eventually.h"
#include "tests/harness/private_root.h"
#include "tests/harness/stand_in_program.h"
#include "tests/harness/text_count.h"

namespace quillory::testing {

namespace fs = std::filesystem;

inline constexpr char kExecutable[] = "/case/App.app/Contents/MacOS/launcher";
inline constexpr char kTool[] = "/case/App.app/Contents/MacOS/../Resources/elev_mac";
inline constexpr char kSupport[] = "/Library/Application Support";
inline constexpr char kMaster[] = "/Library/Application Support/Quillory-Demo";
inline constexpr char kPrompts[] = "/records/prompts";
inline constexpr char kRefusal[] =
    "[SUDO] The install location still cannot be written after an elevated setup. Will not elevate "
    "again.";

inline uid_t ownerOf(const std::string& path) {
  struct stat found {};
  EXPECT_EQ(lstat(path.c_str(), &found), 0) << path;
  return found.st_uid;
}

inline Tail forAllUsers() {
  Tail tail = quickTail();
  tail.installType = "perm_all";
  return tail;
}

class Elevation : public ::testing::Test {
 protected:
  void SetUp() override {
    if (!PrivateRoot::whyImpossible().empty()) GTEST_SKIP() << PrivateRoot::whyImpossible();
    root_.emplace();
    root_->makeUserFolder("/records");
    makeBundle(forAllUsers());
  }

  void makeBundle(const Tail& tail) {
    fs::remove_all(*root_ / "case");
    bundle_.emplace(*root_ / "case", tail, Parameters{{"jre_name", "JRE"}});
  }
  /// A tool that only keeps what it was asked for.
  void useRecorder(const std::string& then = "exit 0") {
    writeRecorder(bundle_->resource("elev_mac"), kPrompts, then);
  }
  /// The real tool; the recorder in front of it counts how often it asks.
  void useRealTool() {
    fs::copy_file(elevMacUnderTest(), bundle_->resource("real_elev_mac"));
    useRecorder("exec \"${0%/*}/real_elev_mac\" \"$@\"");
  }
  void allowInstallation() { root_->allowSudo(kExecutable); }
  static bool hasSudo() { return fs::exists("/usr/bin/sudo"); }

  ChildResult start(const std::vector<std::string>& arguments = {}) {
    std::vector<std::string> command = {kExecutable};
    command.insert(command.end(), arguments.begin(), arguments.end());
    ChildOptions options;
    options.environment = {{"LC_ALL", "C.UTF-8"}, {"ASAN_OPTIONS", "detect_leaks=0"}};
    options.unset = {"DISPLAY", "WAYLAND_DISPLAY", "DBUS_SESSION_BUS_ADDRESS", "JAVA_TOOL_OPTIONS"};
    options.limit = std::chrono::seconds(120);
    return root_->runAsUser(command, options);
  }

  std::string at(const std::string& inside) const { return *root_ / inside; }
  int prompts() const {
    return fs::exists(at(kPrompts)) ? countOf(readFile(at(kPrompts)), "--prompt=") : 0;
  }
  /// The arguments of the stand-in for Java, a line each; empty when it does not start.
  std::string startedJava() const {
    const std::string path = at(kMaster) + "/started";
    return eventually([&] { return fs::exists(path); }) ? readFile(path) : "";
  }

  std::optional<PrivateRoot> root_;
  std::optional<HandMadeBundle> bundle_;
};

}  // namespace quillory::testing
