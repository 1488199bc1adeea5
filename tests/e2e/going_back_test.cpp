// Versions on trial: the real launcher and the real updater, over an installation that is put
// together by hand. docs/formats/update-trials.md says what is expected.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <filesystem>

#include "tests/e2e/launcher_run.h"
#include "tests/harness/eventually.h"

namespace quillory::testing {
namespace {

namespace fs = std::filesystem;
using namespace std::string_literals;
using ::testing::Each;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

constexpr char kSettings[] =
    "1\0stable\0background\0"
    "20\0"
    "24\0"
    "2\0"
    "0\0"
    "0";

Tail installedTail() {
  Tail tail;
  tail.appVersion = "1";
  tail.jreVersion = "17";
  return tail;
}

class GoingBack : public ::testing::Test {
 protected:
  explicit GoingBack(const Parameters& more = {})
      : bundle_(folder_.str(), installedTail(), parameters(more)) {
    installRuntime(user_.master());
    const std::string updater = updaterFolder();
    fs::create_directories(updater);
    fs::copy_file(QUILLORY_UPDATER_JAR, updater + "/updater.jar");
    writeFile(updater + "/QuilloryLaunch",
              launchFileBytes({.mainClass = "io.quillory.updater.Main",
                               .appName = "demo",
                               .classPath = {"updater.jar"},
                               .extraArguments = {},
                               .compatibilityClass = "io.quillory.updater.JreCompatibility"}));
    writeFile(updater + "/QuilloryUpdate", std::string(kSettings, sizeof kSettings));
    install("1");
  }

  static Parameters parameters(const Parameters& more) {
    Parameters all = {{"jre_name", "JRE"}};
    all.insert(all.end(), more.begin(), more.end());
    return all;
  }
  std::string updaterFolder() const { return user_.master() + "/Quillory-Quillory-1-complete"; }
  std::string updates() const { return user_.master() + "/QYUpdates"; }

  void install(const std::string& version) const {
    const std::string folder = user_.master() + "/Quillory-Demo-" + version + "-complete";
    fs::create_directory(folder);
    fs::copy_file(QUILLORY_REPORT_JAR, folder + "/report.jar");
    writeFile(folder + "/QuilloryLaunch", launchFileBytes());
  }

  /// The version that a start ran.
  std::string run(const std::vector<std::string>& arguments = {}) {
    last_ = start(bundle_, user_, arguments);
    return versionIn(last_);
  }
  static std::string versionIn(const ChildResult& result) {
    const std::string path = reported(result, "class.path");
    const std::string before = "/Quillory-Demo-";
    const std::size_t at = path.find(before);
    if (at == std::string::npos) return result.out + result.err;
    const std::size_t begin = at + before.size();
    return path.substr(begin, path.find('-', begin) - begin);
  }
  /// A start that gets this signal once its application runs.
  std::string runUntil(int signal) {
    BackgroundChild child({bundle_.executable(), "--sleep=60000"}, user_.options());
    EXPECT_TRUE(child.waitForOutput("REPORT END"));
    child.sendSignal(signal);
    last_ = child.finish();
    return versionIn(last_);
  }

  TempDir folder_;
  TestUser user_;
  HandMadeBundle bundle_;
  ChildResult last_;
};

TEST_F(GoingBack, AfterTwoBadStartsTheVersionBeforeIsStartedAndItIsToldOnce) {
  EXPECT_EQ(run(), "1");
  install("2");
  EXPECT_EQ(run({"--exit=3"}), "2");
  EXPECT_EQ(last_.exitStatus, 3);
  EXPECT_EQ(run({"--exit=3"}), "2");
  EXPECT_EQ(run(), "1");
  EXPECT_THAT(last_.err, HasSubstr("[Updater] Version 2 of \"Demo\" did not start twice and is not "
                                   "tried again. Version 1 is started.\n"));
  EXPECT_EQ(run(), "1");
  EXPECT_THAT(last_.err, Not(HasSubstr("[Updater]")));
  install("3");
  EXPECT_EQ(run(), "3");
}

TEST_F(GoingBack, AnExceptionAndAKillAreBadStartsToo) {
  EXPECT_EQ(run(), "1");
  install("2");
  EXPECT_EQ(run({"--throw"}), "2");
  EXPECT_EQ(runUntil(SIGKILL), "2");
  EXPECT_EQ(run(), "1");
}

TEST_F(GoingBack, ThreeStartsThatTheUserEndedShowNothing) {
  EXPECT_EQ(run(), "1");
  install("2");
  for (const int signal : {SIGTERM, SIGINT, SIGHUP}) EXPECT_EQ(runUntil(signal), "2");
  EXPECT_EQ(run(), "2");
  EXPECT_THAT(readFile(updates() + "/trials"), HasSubstr("Quillory-Demo-2-complete\0\0"
                                                         "0\0UNKNOWN\0"s));
}

TEST_F(GoingBack, AVersionThatWasGoodOnceSurvivesThreeBadStarts) {
  EXPECT_EQ(run(), "1");
  install("2");
  EXPECT_EQ(run(), "2");
  for (int i = 0; i < 3; ++i) EXPECT_EQ(run({"--exit=3"}), "2");
  EXPECT_EQ(run(), "2");
  EXPECT_THAT(namesIn(updates()), Each(Not(StartsWith("try-"))));
}

TEST_F(GoingBack, WithoutSettingsNothingIsKeptOfAStart) {
  fs::remove(updaterFolder() + "/QuilloryUpdate");
  install("2");
  for (int i = 0; i < 3; ++i) EXPECT_EQ(run({"--exit=3"}), "2");
  EXPECT_FALSE(fs::exists(updates()));
}

class GoingBackOfAProcess : public GoingBack {
 protected:
  GoingBackOfAProcess() : GoingBack({{"force_spawn", "true"}}) {}
};

TEST_F(GoingBackOfAProcess, IsTheSame) {
  fs::create_directory(updates());
  EXPECT_EQ(run(), "1");
  install("2");
  for (int i = 0; i < 2; ++i) EXPECT_EQ(run({"--exit=3"}), "2");
  EXPECT_EQ(run(), "1");
}

/// An installation without an application, and a stand-in for the program that fetches one.
class InstallerWithoutApplication : public GoingBack {
 protected:
  InstallerWithoutApplication() {
    fs::remove_all(user_.master() + "/Quillory-Demo-1-complete");
    install("9");
    fs::rename(user_.master() + "/Quillory-Demo-9-complete", served_);
    fs::copy_file(QUILLORY_UPDATE_WINDOW, updaterFolder() + "/quillory-update-window");
    Tail tail = installedTail();
    tail.appVersion = "";
    writeFile(bundle_.resource("Tail"), tailBytes(tail));
  }
  void program(const std::string& script) const {
    const std::string path = updaterFolder() + "/quillory-update";
    writeFile(path, "#!/bin/sh\necho \"$@\" > '" + (folder_ / "said") + "'\n" + script + "\n");
    fs::permissions(path, fs::perms::owner_all);
  }

  const std::string served_ = folder_ / "served";
};

TEST_F(InstallerWithoutApplication, FetchesTheApplicationAndStartsIt) {
  program("echo offer version=9 size=1000\ncp -R '" + served_ + "' '" + user_.master() +
          "/Quillory-Demo-9-complete'");
  EXPECT_EQ(run({"argument"}), "9") << last_.out << last_.err;
  EXPECT_THAT(last_.err, HasSubstr("[Update] Installing Demo 9\n"));
  EXPECT_THAT(reportOf(last_), ::testing::Contains("arg 1=argument"));
  EXPECT_THAT(readFile(folder_ / "said"),
              HasSubstr("install --properties " + updaterFolder() + "/QYLaunchProperties-"));
  EXPECT_THAT(readFile(folder_ / "said"), HasSubstr(" --own-folder " + user_.master() + "\n"));
}

TEST_F(InstallerWithoutApplication, SaysWhyItCouldNot) {
  program("echo failed reason=no%20line retry=1\nexit 1");
  run();
  EXPECT_EQ(last_.exitStatus, 1);
  EXPECT_THAT(last_.err, HasSubstr("[Update]   no line"));
  EXPECT_THAT(last_.err, HasSubstr("[Updater] No version of \"Demo\" is installed: it could not be "
                                   "fetched. The newest log in " +
                                   user_.master() + "/logs says why."));
}

TEST_F(InstallerWithoutApplication, WithoutItsProgramsSaysWhatItAlwaysSaid) {
  fs::remove(updaterFolder() + "/quillory-update-window");
  run();
  EXPECT_EQ(last_.exitStatus, 1);
  EXPECT_THAT(last_.err, HasSubstr("[Updater] No version of \"Demo\" is installed in " +
                                   user_.master() + ".\n"));
}

TEST_F(GoingBack, AUrlThatComesWhileTheApplicationRunsReachesOneThatListens) {
  writeFile(bundle_.contents() + "/Info.plist",
            "<?xml version=\"1.0\"?><plist version=\"1.0\"><dict><key>CFBundleIdentifier</key>"
            "<string>io.quillory.tests.Open</string></dict></plist>");
  const TempDir busFolder;
  const BackgroundChild bus({"dbus-daemon", "--session", "--address=unix:path=" + busFolder / "bus",
                             "--nofork", "--print-address=1"});
  ChildOptions options = user_.options();
  options.unset.erase(
      std::find(options.unset.begin(), options.unset.end(), "DBUS_SESSION_BUS_ADDRESS"));
  options.environment["DBUS_SESSION_BUS_ADDRESS"] = "unix:path=" + busFolder / "bus";
  ASSERT_TRUE(eventually([&] { return !bus.out().empty(); }));
  BackgroundChild application({bundle_.executable(), "--sleep=60000"}, options);
  ASSERT_TRUE(application.waitForOutput("REPORT END"));

  const std::string prefix = "QYLaunchProperties-";
  std::string requests;
  for (const std::string& name : namesIn(updaterFolder()))
    if (name.starts_with(prefix))
      requests = updaterFolder() + "/QYOpenRequests-" + name.substr(prefix.size());
  writeFile(requests, "");  // As Launch.openRequests() does.
  runChild({"gdbus", "call", "--session", "--dest", "io.quillory.tests.Open", "--object-path",
            "/io/quillory/tests/Open", "--method", "org.freedesktop.Application.Open",
            "['demo://later']", "{}"},
           options);
  EXPECT_TRUE(eventually([&] { return readFile(requests) == "demo://later\0"s; }));
  application.sendSignal(SIGTERM);
  application.finish();
}

}  // namespace
}  // namespace quillory::testing
