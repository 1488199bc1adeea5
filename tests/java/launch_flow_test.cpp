#include "java/launch_flow.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "java/for_embedders.h"
#include "java/jre_bundle.h"
#include "support/opened_files.h"
#include "support/platform.h"
#include "support/url_request.h"
#include "tests/harness/records.h"
#include "tests/java/launch_fixture.h"

namespace quillory {
namespace {

namespace fs = std::filesystem;
using namespace std::string_literals;
using ::quillory::testing::LaunchFileText;
using ::quillory::testing::LaunchTest;
using ::quillory::testing::modeOf;
using ::quillory::testing::readFile;
using ::quillory::testing::records;
using ::quillory::testing::ScopedReplace;
using ::quillory::testing::writeFile;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::SizeIs;

/// No JVM is created here: the JRE has no JVM library, or the spawn is forced.
class LaunchFromLaunchFile : public LaunchTest {
 protected:
  std::string classPath() const { return app_ + "/a.jar:" + app_ + "/lib/b.jar"; }

  ScopedReplace<bool> spawn_{forceSpawn, true};
};

using LaunchApp = LaunchFromLaunchFile;
using CheckAppJreCompatibility = LaunchFromLaunchFile;

TEST_F(LaunchFromLaunchFile, StartsTheCopyOfJavaWithTheListInOrder) {
  writeFile(master_ + "/QYApps/JRE-LastSuccessfulOptions-Quillory-JRE-17-complete",
            records({"2", "-Dremembered=1", "-Dremembered=2"}));
  writeLaunchFile({.memory = "256", .stack = "64"});
  recordSpawn();
  EXPECT_EQ(launch(kLaunchApplication), 0);
  EXPECT_THAT(spawned(), ElementsAre(executable_, "-Xmx256m", "-Xms64m", "-cp", classPath(),
                                     "-Dremembered=1", "-Dremembered=2", "com.example.Main",
                                     properties_, "extra", "user", "two words"));
}

TEST_F(LaunchFromLaunchFile, PassesTheFilesThatTheUserOpenedBehindTheArguments) {
  forgetOpenedFiles();
  openFile("/tmp/a document");
  recordSpawn();
  launch(kLaunchApplication);
  EXPECT_THAT(spawned(), ElementsAre(executable_, "-cp", classPath(), "com.example.Main",
                                     properties_, "extra", "user", "two words", "/tmp/a document"));
  EXPECT_THAT(log_.text(), HasSubstr("[Extractor] Appending 3 command line args\n"));
  forgetOpenedFiles();
}

TEST_F(LaunchFromLaunchFile, LeavesThoseFilesToTheApplicationWhenItAsksForCompatibility) {
  forgetOpenedFiles();
  openFile("/tmp/a document");
  recordSpawn();
  launch(kLaunchCompatibilityCheck);
  EXPECT_THAT(takeOpenedFiles(), ElementsAre("/tmp/a document"));
  forgetOpenedFiles();
}

TEST_F(LaunchFromLaunchFile, AddsNoMemoryOptionForNumbersBelowOne) {
  writeLaunchFile({.memory = "0", .stack = "-64"});
  recordSpawn();
  launch(kLaunchApplication);
  EXPECT_THAT(spawned(), ElementsAre(executable_, "-cp", classPath(), "com.example.Main",
                                     properties_, "extra", "user", "two words"));
}

TEST_F(LaunchFromLaunchFile, HasAnEmptyClassPathForACountOfZero) {
  writeLaunchFile({.classPath = {}});
  recordSpawn();
  launch(kLaunchApplication);
  EXPECT_THAT(spawned(), ElementsAre(executable_, "-cp", "", "com.example.Main", properties_,
                                     "extra", "user", "two words"));
}

TEST_F(LaunchFromLaunchFile, AnUpdaterThatWantsItGetsTheApplicationOnItsClassPath) {
  const std::string version = master_ + "/Quillory-demo-7-complete";
  writeFile(version + "/QuilloryLaunch",
            LaunchFileText{.classPath = {"app.jar"}, .options = {"-Dof.application=1"}}.bytes());
  writeLaunchFile({.memory = "256", .options = {"-Dquillory.class.path=application"}});
  writeFile(master_ + "/QYApps/JRE-LastSuccessfulOptions-Quillory-JRE-17-complete",
            records({"1", "-Dremembered=1"}));
  recordSpawn();
  EXPECT_EQ(launch(kLaunchApplication), 0);
  EXPECT_THAT(
      spawned(),
      ElementsAre(executable_, "-Xmx256m", "-cp", classPath() + ":" + version + "/app.jar",
                  "-Dquillory.application=" + version, "-Dof.application=1", "-Dremembered=1",
                  "com.example.Main", properties_, "extra", "user", "two words"));
  EXPECT_THAT(readFile(properties_), Not(HasSubstr("of.application")));
}

TEST_F(LaunchFromLaunchFile, AnApplicationHasAStartupArchiveOnlyIfItWantsOne) {
  const std::string home = jre_ + kBundleSuffix + "/Contents/Home";
  writeFile(home + "/release", "JAVA_VERSION=\"17.0.9\"\n");
  writeFile(home + "/lib/modules", "modules");
  writeLaunchFile({.options = {"-Dquillory.class.path=application"}});
  recordSpawn();
  const std::string file = master_ + "/Quillory-demo-7-complete/QuilloryLaunch";
  const auto hasArchive = Contains(HasSubstr("-Dquillory.archive.base="));
  writeFile(file, LaunchFileText{.options = {}}.bytes());
  launch(kLaunchApplication);
  EXPECT_THAT(spawned(), Not(hasArchive));
  writeFile(file, LaunchFileText{.options = {"-Dquillory.startup.archive=true"}}.bytes());
  launch(kLaunchApplication);
  EXPECT_THAT(spawned(), hasArchive);
}

TEST_F(LaunchFromLaunchFile, ARuntimeIsTriedWithoutAnApplication) {
  writeFile(master_ + "/Quillory-demo-7-complete/QuilloryLaunch", LaunchFileText{}.bytes());
  writeLaunchFile({.options = {"-Dquillory.class.path=application"}});
  recordSpawn();
  launch(kLaunchCompatibilityCheck, jre_ + "/bin/java");
  EXPECT_THAT(spawned(), Contains(classPath()));
}

TEST_F(LaunchFromLaunchFile, WritesThePropertiesOfTheLaunch) {
  writeFile(master_ + "/QYApps/JRE-LastSuccessfulOptions-Quillory-JRE-17-complete",
            records({"1", "-Dremembered=1"}));
  const ScopedReplace request(
      platformCalls.requestedUrl, +[] { return "demo://x"; });
  updateUrl_ = "D";
  dynamicUpdateUrl_ = "http://dynamic/";
  recordSpawn();
  launch(kLaunchApplication);
  EXPECT_EQ(readFile(properties_) + '\0',
            records({"qystat_app_name", "Demo", "qystat_update_url", "D", "qydyna_update_url",
                     "http://dynamic/", "qystat_app_dir", app_, "qystat_jre_name", "JRE",
                     "qystat_launched_from_dynprops", "/bin/launcher", "qydyna_url_req", "demo://x",
                     "qystat_jvm_options_count", "1", "qystat_jvm_options_0", "-Dremembered=1"}));
}

TEST_F(LaunchFromLaunchFile, LeavesTheCallersBlockAsItIs) {
  const std::string before = block_.bytes();
  recordSpawn();
  launch(kLaunchApplication);
  EXPECT_EQ(block_.bytes(), before);
}

TEST_F(LaunchFromLaunchFile, LogsTheWholeLaunch) {
  recordSpawn();
  launch(kLaunchApplication);
  const std::string plus = std::string(48, '+') + "\n";
  const std::string minus = std::string(43, '*') + "\n";
  EXPECT_EQ(log_.text(),
            plus + "+++ Start: Launching\n" + plus +
                "[Extractor] Launching 'Quillory-Demo-3-complete' from master folder '" + master_ +
                "' of class 0 using JRE 'JRE'\n"
                "[PickFolder] Folder Quillory-JRE-17-complete matches JRE with version 17\n"
                "[PickFolder] Set latest to 17 Quillory-JRE-17-complete\n"
                "[Extractor] Using private JRE Quillory-JRE-17-complete\n"
                "[Extractor] Copying FILE " +
                executable_ +
                "\n"
                "[Extractor] JRE LSO file is " +
                master_ +
                "/QYApps/JRE-LastSuccessfulOptions-Quillory-JRE-17-complete\n"
                "[Extractor] Building classpath\n"
                "[Extractor] Creating launch properties\n"
                "[Quillory] [URL] Latest request is NULL\n"
                "[Extractor] Checking LSO file\n"
                "[Extractor] Reading " +
                master_ + "/QYApps/JRE-LastSuccessfulOptions-Quillory-JRE-17-complete\n" + minus +
                "JRE LSO file does not exist\n" + minus +
                "[Extractor] Writing launch properties file\n"
                "[Extractor] Writing launch properties to " +
                properties_ +
                "\n"
                "[Extractor] Launch properties length is " +
                std::to_string(fs::file_size(properties_)) +
                "\n"
                "[Extractor] Writing to file\n"
                "[Extractor] Finished writing launch properties file\n"
                "[Extractor] Reading 1 extra args\n"
                "[Extractor] Read JRE compatibility class com.example.Compatible\n"
                "[Extractor] Appending 2 command line args\n"
                "[Extractor] Executable: " +
                executable_ +
                "\n"
                "[Extractor] Argument 0: " +
                executable_ +
                "\n"
                "[Extractor] Argument 1: -cp\n"
                "[Extractor] Argument 2: " +
                classPath() +
                "\n"
                "[Extractor] Argument 3: com.example.Main\n"
                "[Extractor] Argument 4: " +
                properties_ +
                "\n"
                "[Extractor] Argument 5: extra\n"
                "[Extractor] Argument 6: user\n"
                "[Extractor] Argument 7: two words\n"
                "[Extractor] This is a newer extractor... launchclass is 0\n"
                "[Extractor] JRE folder is " +
                jre_ +
                "\n"
                "[BundleLoader] Creating jre path URL for path " +
                jre_ +
                ".plugin\n"
                "[BundleLoader] Bundle is null?"
                "[Extractor] Adjusted JRE folder is " +
                jre_ +
                ".plugin/Contents/Home\n"
                "[Extractor] Attempting spawn launch\n" +
                plus + "+++ Start: Spawn launch\n\n" + plus + "[Utils] Closing logging file.\n");
}

TEST_F(LaunchFromLaunchFile, MakesTheCopyOfJavaOnceAndForEveryone) {
  recordSpawn();
  launch(kLaunchApplication);
  EXPECT_EQ(readFile(executable_), readFile(jre_ + "/bin/java"));
  EXPECT_EQ(modeOf(executable_), 0777U);
  writeFile(executable_, "still this");
  launch(kLaunchApplication);
  EXPECT_EQ(readFile(executable_), "still this");
}

TEST_F(LaunchFromLaunchFile, UsesJavaItselfForAnAppNameThatLeadsOutOfTheFolder) {
  for (const std::string name : {"", "..", "../../outside", "/tmp/outside"}) {
    SCOPED_TRACE(name);
    writeLaunchFile({.appName = name});
    recordSpawn();
    EXPECT_EQ(launch(kLaunchApplication), 0);
    EXPECT_EQ(spawned().at(0), jre_ + "/bin/java");
  }
  EXPECT_FALSE(fs::exists(jre_ + "/outside"));
}

TEST_F(LaunchFromLaunchFile, TakesTheNewestPrivateJre) {
  writeJava(master_ + "/Quillory-JRE-9-complete/bin/java", "");
  writeJava(master_ + "/Quillory-JRE-21-complete/bin/java", "");
  fs::create_directories(master_ + "/Quillory-JRE-21-complete.plugin");
  recordSpawn();
  launch(kLaunchApplication);
  EXPECT_EQ(spawned().at(0), master_ + "/Quillory-JRE-21-complete/bin/demo");
}

TEST_F(LaunchFromLaunchFile, GrowsWithTheNumberOfArgumentsAndTheLengthOfTheClassPath) {
  writeLaunchFile({.classPath = std::vector<std::string>(3000, "some/where/in/lib.jar"),
                   .extraArguments = std::vector<std::string>(1500, "extra")});
  userArguments_ = std::vector<std::string>(2000, "user");
  recordSpawn();
  EXPECT_EQ(launch(kLaunchApplication), 0);
  EXPECT_THAT(spawned(), SizeIs(5 + 1500 + 2000));
  EXPECT_THAT(spawned().at(2), SizeIs(3000 * (app_ + "/some/where/in/lib.jar:").size() - 1));
}

TEST_F(LaunchFromLaunchFile, EndsAtTheEndOfAFileWhoseCountsPromiseMore) {
  const std::string header = records({"6", "Main", "", "demo", "", "0", "0", "0"});
  writeFile(app_ + "/QuilloryLaunch", header + records({"2000000000", "a.jar"}));
  recordSpawn();
  EXPECT_EQ(launch(kLaunchApplication), 0);
  EXPECT_THAT(spawned(), ElementsAre(executable_, "-cp", app_ + "/a.jar", "Main", properties_,
                                     "user", "two words"));
  writeFile(app_ + "/QuilloryLaunch", header + records({"0", "9000000000000000000", "extra"}));
  EXPECT_EQ(launch(kLaunchApplication), 0);
  EXPECT_THAT(log_.messages(), Contains("[Extractor] Reading 9000000000000000000 extra args\n"));
  EXPECT_THAT(spawned(), SizeIs(8));
}

TEST_F(LaunchFromLaunchFile, SurvivesALaunchFileCutAnywhere) {
  const std::string whole = LaunchFileText{}.bytes();
  recordSpawn();
  for (std::size_t length = 0; length < whole.size(); ++length) {
    SCOPED_TRACE(length);
    writeFile(app_ + "/QuilloryLaunch", whole.substr(0, length));
    EXPECT_EQ(launch(kLaunchApplication), 0);
    EXPECT_THAT(spawned(), Contains("-cp"));
  }
}

TEST_F(LaunchFromLaunchFile, SurvivesALaunchFileWithAnyByteChanged) {
  const std::string whole = LaunchFileText{}.bytes();
  recordSpawn();
  for (std::size_t at = 0; at < whole.size(); ++at) {
    for (const char byte : {'\0', '9', '\xFF', '/'}) {
      SCOPED_TRACE(at);
      std::string changed = whole;
      changed[at] = byte;
      writeFile(app_ + "/QuilloryLaunch", changed);
      EXPECT_EQ(launch(kLaunchApplication), 0);
    }
  }
}

TEST_F(LaunchFromLaunchFile, ReturnsMinusOneForAnyOtherClassAndStartsNothing) {
  recordSpawn();
  EXPECT_EQ(launch(2), -1);
  EXPECT_EQ(launch(-1, "no such JRE"), -1);
  EXPECT_THAT(spawned(), IsEmpty());
}

TEST_F(LaunchFromLaunchFile, EndsTheProcessWithoutALaunchFile) {
  ::testing::GTEST_FLAG(death_test_style) = "threadsafe";
  fs::remove(app_ + "/QuilloryLaunch");
  EXPECT_EXIT(launch(kLaunchApplication), ::testing::ExitedWithCode(1), "");
  EXPECT_EXIT(
      {
        const ScopedReplace toStderr(
            platformCalls.systemLog, +[](const char* text) { std::fputs(text, stderr); });
        launch(kLaunchCompatibilityCheck, "/java");
      },
      ::testing::ExitedWithCode(1), "\\*{43}\nUnable to open launch file .*/QuilloryLaunch\n\\*");
}

TEST_F(LaunchFromLaunchFile, EndsTheProcessWhenTheLaunchFileIsAFolder) {
  ::testing::GTEST_FLAG(death_test_style) = "threadsafe";
  fs::remove(app_ + "/QuilloryLaunch");
  fs::create_directory(app_ + "/QuilloryLaunch");
  EXPECT_EXIT(launch(kLaunchApplication), ::testing::ExitedWithCode(1), "");
}

TEST_F(LaunchFromLaunchFile, EndsTheProcessWithoutAPrivateJre) {
  ::testing::GTEST_FLAG(death_test_style) = "threadsafe";
  EXPECT_EXIT(
      {
        const ScopedReplace toStderr(
            platformCalls.systemLog, +[](const char* text) { std::fputs(text, stderr); });
        launch(kLaunchApplication, "Other");
      },
      ::testing::ExitedWithCode(1), "\\*{43}\nNo private JRE available!\n\\*{43}\n");
}

TEST_F(LaunchFromLaunchFile, EndsTheProcessWithoutLaunchProperties) {
  ::testing::GTEST_FLAG(death_test_style) = "threadsafe";
  const ScopedReplace noWait(
      timeCalls.sleepMicros, +[](std::uint64_t) {});
  // A folder has the name of the file, and the time stands still.
  fs::create_directory(app_ + "/QYLaunchProperties-1700000000123-4");
  EXPECT_EXIT(launch(kLaunchApplication), ::testing::ExitedWithCode(99), "");
}

/// The launches of the driver, which end no process.
class Launch : public LaunchFromLaunchFile {
 protected:
  LaunchRequest request(int launchClass = kLaunchApplication) const {
    LaunchRequest request = {.masterFolder = master_,
                             .appFolderName = "Quillory-Demo-3-complete",
                             .properties = block_,
                             .userArguments = {"user"},
                             .updateUrl = "D",
                             .dynamicUpdateUrl = "http://dynamic/",
                             .launchedFromDynprops = "/bin/launcher",
                             .launchClass = launchClass};
    request.jreName = "JRE";
    request.javaToCheck = java_;
    return request;
  }
  /// The exit status of a launcher that could launch nothing.
  int exitStatusOf(const LaunchRequest& request) const {
    const LaunchResult result = quillory::launch(request);
    EXPECT_EQ(result.status, std::nullopt);
    return result.exitStatus;
  }

  std::string java_ = dir_ / "system java";
};

TEST_F(Launch, StartsTheApplicationOnThePrivateJre) {
  recordSpawn();
  const LaunchResult result = quillory::launch(request());
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.exitStatus, 0);
  EXPECT_THAT(spawned(), ElementsAre(executable_, "-cp", classPath(), "com.example.Main",
                                     properties_, "extra", "user"));
  EXPECT_EQ(readFile(properties_) + '\0',
            records({"qystat_app_name", "Demo", "qystat_update_url", "D", "qydyna_update_url",
                     "http://dynamic/", "qystat_app_dir", app_, "qystat_jre_name", "JRE",
                     "qystat_launched_from_dynprops", "/bin/launcher"}));
}

TEST_F(Launch, RunsTheCompatibilityClassUnderTheJavaToCheck) {
  for (const int status : {0, 72, 255}) {
    SCOPED_TRACE(status);
    writeJava(java_, "exit " + std::to_string(status));
    const LaunchResult result = quillory::launch(request(kLaunchCompatibilityCheck));
    EXPECT_EQ(result.status, status);
    EXPECT_EQ(result.exitStatus, 0);
    EXPECT_EQ(isCompatible(result), status == 72);
  }
  EXPECT_THAT(readFile(properties_), HasSubstr("qystat_jre_name\0"s + java_))
      << "by intent what is checked, not the name of the private JRE";
}

TEST_F(Launch, LaunchesNothingOfAnotherClass) {
  recordSpawn();
  const LaunchResult result = quillory::launch(request(2));
  EXPECT_EQ(result.status, -1);
  EXPECT_FALSE(isCompatible(result));
  EXPECT_THAT(spawned(), IsEmpty());
}

TEST_F(Launch, SaysWithWhichStatusTheLauncherEnds) {
  recordSpawn();
  LaunchRequest withoutJre = request();
  withoutJre.jreName = "Other";
  EXPECT_EQ(exitStatusOf(withoutJre), 1);
  EXPECT_THAT(log_.messages(), Contains("No private JRE available!\n"));

  const ScopedReplace noWait(
      timeCalls.sleepMicros, +[](std::uint64_t) {});
  fs::create_directory(app_ + "/QYLaunchProperties-1700000000123-4");
  EXPECT_EQ(exitStatusOf(request()), 99);
  EXPECT_THAT(log_.messages(), Contains("Unable to write Launch Properties file! Cannot run!\n"));

  fs::remove(app_ + "/QuilloryLaunch");
  EXPECT_EQ(exitStatusOf(request()), 1);
  EXPECT_EQ(exitStatusOf(request(kLaunchCompatibilityCheck)), 1);
  EXPECT_FALSE(isCompatible(quillory::launch(request(kLaunchCompatibilityCheck))));
  EXPECT_THAT(spawned(), IsEmpty());
}

TEST_F(LaunchApp, IsALaunchOfTheApplication) {
  recordSpawn();
  char argument[] = "user";
  char* arguments[] = {argument};
  EXPECT_EQ(launchApp(master_.c_str(), block_, 1, arguments, "Quillory-Demo-3-complete", "u",
                      nullptr, "JRE", "ignored", true, "ignored", "/from", true, "ignored"),
            0);
  EXPECT_THAT(spawned(), ElementsAre(executable_, "-cp", classPath(), "com.example.Main",
                                     properties_, "extra", "user"));
  EXPECT_THAT(readFile(properties_), HasSubstr("qystat_launched_from_dynprops\0/from"s));
}

TEST_F(LaunchApp, ReturnsTheErrorNumberOfAFailedStart) {
  recordSpawn(13);
  EXPECT_EQ(launchApp(master_.c_str(), block_, 0, nullptr, "Quillory-Demo-3-complete", nullptr,
                      nullptr, "JRE", nullptr, false, nullptr, nullptr, false, nullptr),
            13);
  EXPECT_THAT(log_.messages(), Contains("Launch Error 13.\n"));
}

/// A `java` of the system, outside the master folder.
class CompatibilityCheck : public LaunchFromLaunchFile {
 protected:
  bool isCompatible(const std::string& end) {
    writeJava(java_, end);
    char argument[] = "user";
    char* arguments[] = {argument};
    return checkAppJreCompatibility(master_.c_str(), block_, 1, arguments,
                                    "Quillory-Demo-3-complete", "http://u/", nullptr, java_.c_str(),
                                    "/bin/launcher");
  }

  std::string java_ = dir_ / "system java";
};

TEST_F(CompatibilityCheck, RunsTheCompatibilityClassUnderTheGivenJava) {
  writeLaunchFile({.memory = "256"});
  EXPECT_TRUE(isCompatible("exit 72"));
  EXPECT_THAT(seenBy(java_), ElementsAre("-Xmx256m", "-cp", classPath(), "com.example.Compatible",
                                         properties_, "extra", "user"));
  EXPECT_THAT(readFile(properties_), HasSubstr("qystat_jre_name\0"s + java_));
  EXPECT_FALSE(fs::exists(executable_));
}

TEST_F(CompatibilityCheck, IsPassedByTheStatus72Only) {
  EXPECT_TRUE(isCompatible("exit 72"));
  for (const char* end :
       {"exit 0", "exit 1", "exit 71", "exit 73", "exit 255", "kill -9 $$", "kill -TERM $$"}) {
    SCOPED_TRACE(end);
    EXPECT_FALSE(isCompatible(end));
  }
}

TEST_F(CompatibilityCheck, IsNotPassedWhenJavaCannotBeStarted) {
  java_ = dir_ / "none";
  char* none[] = {nullptr};
  EXPECT_FALSE(checkAppJreCompatibility(master_.c_str(), block_, 0, none,
                                        "Quillory-Demo-3-complete", "", nullptr, java_.c_str(),
                                        ""));
  EXPECT_TRUE(log_.contains("Launch Error 2.\n"));
}

TEST_F(CompatibilityCheck, CannotBePassedWithAFileOlderThanVersion3) {
  writeLaunchFile({.version = "2"});
  // The list ends before the class. A java without one says how it is used, and fails.
  EXPECT_FALSE(isCompatible("test $# -gt 2 && exit 72; exit 1"));
  EXPECT_THAT(seenBy(java_), ElementsAre("-cp", classPath()));
  EXPECT_THAT(log_.messages(), Contains("[Extractor] Argument 2: " + classPath() + "\n"));
  EXPECT_FALSE(log_.contains("[Extractor] Argument 3:"));
}

TEST_F(CompatibilityCheck, LooksForNoRememberedOptions) {
  isCompatible("exit 0");
  EXPECT_TRUE(log_.contains("[Extractor] Checking for existing system JRE " + java_ + "\n"));
  EXPECT_TRUE(log_.contains("Not a private JRE (no need to check for LSO file)\n"));
  EXPECT_FALSE(log_.contains("JRE LSO file is"));
}

TEST_F(CompatibilityCheck, GivesTheStatusOfTheClassAndMinusOneForASignal) {
  writeJava(java_, "exit 255");
  EXPECT_EQ(launch(kLaunchCompatibilityCheck, java_), 255);
  writeJava(java_, "kill -9 $$");
  EXPECT_EQ(launch(kLaunchCompatibilityCheck, java_), -1);
}

}  // namespace
}  // namespace quillory
