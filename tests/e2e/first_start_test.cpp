// The main job: a packed application installs itself, starts, and is found current the next time.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <sstream>

#include "tests/e2e/launcher_run.h"

namespace quillory::testing {
namespace {

namespace fs = std::filesystem;
using ::testing::HasSubstr;

/// One installation for all tests of the suite, which only look at it.
class FirstStart : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    folder = new TempDir;
    user = new TestUser;
    bundle = new HandMadeBundle(folder->str(), offlineTail(),
                                {{"greeting", "grüß dich"}, {"empty", ""}, {"jre_name", "JRE"}});
    first =
        new ChildResult(start(*bundle, *user, {"one", "two words", "drei€𝄞", "", "$HOME\"`\\"}));
    second = new ChildResult(start(*bundle, *user, {"again"}));
  }
  static void TearDownTestSuite() {
    delete second;
    delete first;
    delete bundle;
    delete user;
    delete folder;
  }

  static TempDir* folder;
  static TestUser* user;
  static HandMadeBundle* bundle;
  static ChildResult* first;
  static ChildResult* second;
};
TempDir* FirstStart::folder;
TestUser* FirstStart::user;
HandMadeBundle* FirstStart::bundle;
ChildResult* FirstStart::first;
ChildResult* FirstStart::second;

TEST_F(FirstStart, EndsWithStatusZero) {
  EXPECT_EQ(first->exitStatus, 0) << first->out << first->err;
  EXPECT_EQ(second->exitStatus, 0) << second->out << second->err;
}

TEST_F(FirstStart, InstallsUpdaterApplicationAndRuntimeUnderTheirVersions) {
  EXPECT_THAT(namesIn(user->master()),
              ::testing::ElementsAre("QYAppsSharedConfig", "Quillory-Demo-3-complete",
                                     "Quillory-JRE-17-complete", "Quillory-JRE-17-complete.plugin",
                                     "Quillory-Quillory-1-complete", "logs"));
}

TEST_F(FirstStart, PutsTheApplicationsFilesIntoItsVersionFolder) {
  EXPECT_EQ(readFile(user->master() + "/Quillory-Demo-3-complete/hello.txt"),
            "hello from version 3\n");
  EXPECT_EQ(modeOf(user->master() + "/Quillory-Demo-3-complete/hello.txt"), 0755U);
}

TEST_F(FirstStart, OpensEveryFolderToAllUsers) {
  for (const char* name : {"", "/QYAppsSharedConfig", "/Quillory-Demo-3-complete", "/logs",
                           "/Quillory-Quillory-1-complete", "/Quillory-JRE-17-complete.plugin",
                           "/Quillory-JRE-17-complete"})
    EXPECT_EQ(modeOf(user->master() + name), 0777U) << name;
}

TEST_F(FirstStart, KeepsTheJavaHomeBesideItsBundle) {
  const std::string alias = user->master() + "/Quillory-JRE-17-complete";
  EXPECT_EQ(fs::read_symlink(alias + ".plugin/Contents/Home").string(), alias);
  EXPECT_TRUE(fs::is_regular_file(alias + "/bin/java"));
  EXPECT_FALSE(fs::is_symlink(fs::symlink_status(alias)));
}

TEST_F(FirstStart, RunsTheApplicationInsideItsOwnProcess) {
  EXPECT_NE(reported(*first, "pid"), "(none)") << first->out;
  EXPECT_THAT(first->out, HasSubstr("[JNILaunch] [pid=" + reported(*first, "pid") + "]"));
  EXPECT_EQ(reported(*first, "home"), user->master() + "/Quillory-JRE-17-complete");
}

TEST_F(FirstStart, HandsOverTheUsersArgumentsByteForByte) {
  EXPECT_EQ(reported(*first, "arg 1"), "one");
  EXPECT_EQ(reported(*first, "arg 2"), "two words");
  EXPECT_EQ(reported(*first, "arg 3"), "drei€𝄞");
  EXPECT_EQ(reported(*first, "arg 4"), "");
  EXPECT_EQ(reported(*first, "arg 5"), "$HOME\"`\\");
  EXPECT_EQ(reported(*first, "arg 6"), "(none)");
}

TEST_F(FirstStart, HandsOverTheLaunchPropertiesInOrder) {
  std::vector<std::string> properties;
  for (const std::string& line : reportOf(*first))
    if (line.rfind("property ", 0) == 0) properties.push_back(line.substr(9));
  const std::string updater = user->master() + "/Quillory-Quillory-1-complete";
  EXPECT_THAT(
      properties,
      ::testing::ElementsAre(
          "qydyna_greeting=grüß dich", "qydyna_empty=", "qydyna_jre_name=JRE",
          "qystat_update_url=http://no.invalid/", "qystat_install_type=perm_user",
          "qystat_min_splash_ms=0", "qystat_qysig_public_key=" + testKey().publicHex,
          "qystat_can_override_splash=0", "qystat_app_name=Demo", "qystat_wrapper_app_version=3",
          "qystat_wrapper_gu_version=1", "qystat_silent_parameter=", "qystat_java_version=",
          "qystat_update_url=http://no.invalid/", "qystat_app_dir=" + updater,
          "qystat_jre_name=JRE", "qystat_launched_from_dynprops=" + bundle->executable()));
}

TEST_F(FirstStart, LogsTheStoryOfAnInstallationInOrder) {
  const std::string master = user->master();
  linesInOrder(
      *first,
      {"[Extractor] The absolute wrapper path is " + bundle->executable(),
       "[Extractor] Found Params marker. Extracting now...",
       "+++ Processing 3 dynamic properties",
       "[DynProps] Dynamic Param 0: greeting=[grüß dich]",
       "[DynProps] JRE name from dynamic launch properties is JRE",
       "[Extractor] Will use Static Update URL: http://no.invalid/",
       "[Extractor] Is silent install is 0",
       "[Extractor] Setting up static properties",
       "Permanent install for current user",
       "HomeDir is " + user->home(),
       "[Extractor] Shared dir is " + user->support(),
       "[Extractor] Update URL is currently 'http://no.invalid/'",
       "[Extractor] Update URL is now 'http://no.invalid/'",
       "[Extractor] Master folder is " + master,
       "[JREOverride] No JRE name override, will continue to use JRE",
       "[Extractor] GenericUpdater version is 1",
       "[Extractor] OFFLINE wrapper: App version is 3",
       "[Extractor] Checking for a latest valid GU",
       "[Extractor] No latest GU or JRE version exists, will check tail for online/offline info",
       "[Extractor] Note: No latest JRE version exists",
       "[Extractor] Note: No latest GU version exists",
       "[Extractor] GU folder is " + master + "/Quillory-Quillory-1-complete",
       "[ExtractArchiveFile] Extracting lzma64 (::0)",
       "[Extractor] Ensuring LZMA is executable.",
       "[ExtractArchiveFile] Extracting nativesplash.png (::0)",
       "[ExtractArchiveFile] Extracting cacerts (::0)",
       "[ExtractArchiveFile] Skipping empty file",
       "[ExtractArchiveFile] Extracting GU.p2.l2 (::0)",
       "\t[ExtractArchiveFile] Requires un-LZMA",
       "\t[ExtractArchiveFile] Starting un-p2Archiving",
       "[ExtractArchive] Archive signature verified.",
       "[Extractor] Extracted GU and GU Version",
       "[Extractor] Recreating GU location",
       "[Extractor] Configuring splash",
       "[Extractor] Showing splash",
       "[Extractor] Setting up a JRE",
       "+++ Start: Extracting Offline JRE",
       "[Extractor] Offline installer - no need to download JRE, will extract",
       "[Extractor] Extracting JRE archive...",
       "[Extractor] Extracted JRE JRE",
       "[Extractor] Regenerating jsa...",
       "[Extractor] Renamed JRE folder to " + master + "/Quillory-JRE-17-complete.plugin",
       "+++ Start: OSX JRE initialisation",
       "[Extractor] JRE setup. Overriding cacerts.",
       "[Extractor] Ensuring JRE bin is writable.",
       "[Extractor] Extracting App...",
       "[Extractor] Renaming App folder to " + master + "/Quillory-Demo-3-complete",
       "[Extractor] Will now run latest GU Quillory-Quillory-1-complete",
       "+++ Start: Launching",
       "[Extractor] Using private JRE Quillory-JRE-17-complete",
       "[JNILauncher] About to execute static void method.",
       "[JNILauncher] Run complete.",
       "[JNILauncher] Done!",
       "[Extractor] Return code for JNI launch was 0"});
}

TEST_F(FirstStart, CompletesTheRuntimeOnceAndLogsItOnce) {
  EXPECT_EQ(countLine(*first, "[Extractor] JRE setup. Overriding cacerts."), 1);
  EXPECT_EQ(countLine(*first, "[Extractor] Ensuring JRE bin is writable."), 1);
}

TEST_F(FirstStart, WritesTheSameLinesToALogFileUpToTheLaunch) {
  std::vector<std::string> logs = namesIn(user->master() + "/logs");
  ASSERT_EQ(logs.size(), 2U);
  const std::string log = readFile(user->master() + "/logs/" + logs[0]);
  EXPECT_THAT(log, HasSubstr("[Extractor] Checking for a latest valid GU\n"));
  EXPECT_THAT(log, HasSubstr("[Utils] Closing logging file.\n"));
  EXPECT_THAT(log, ::testing::Not(HasSubstr("[JNILauncher] Run complete.")));
  std::istringstream lines(log);
  for (std::string line; std::getline(lines, line);) {
    // Some section names end with a line end of their own: then an empty line follows.
    if (line.empty()) continue;
    EXPECT_EQ(logLines(line).size(), 1U) << line;
  }
}

TEST(FirstStartOfAUserWithoutALanguage, WorksBelowAnyHomeFolder) {
  const TempDir place;
  const TestUser someone("hömé Ω");
  const HandMadeBundle application(place.str(), offlineTail(), {{"jre_name", "JRE"}});
  ChildOptions options = someone.options();
  options.environment.erase("LC_ALL");
  options.unset.insert(options.unset.end(), {"LC_ALL", "LC_CTYPE", "LANG"});
  const ChildResult result = runChild({application.executable(), "drei€"}, options);
  EXPECT_EQ(result.exitStatus, 0) << result.err;
  EXPECT_EQ(reported(result, "home"), someone.master() + "/Quillory-JRE-17-complete");
  EXPECT_EQ(reported(result, "arg 1"), "drei€");
}

TEST_F(FirstStart, SaysOnceInTheSystemLogThatThereIsNoDisplay) {
  EXPECT_THAT(first->err, HasSubstr("display"));
}

TEST_F(FirstStart, FindsEverythingCurrentTheNextTime) {
  linesInOrder(*second,
               {"[Extractor] Latest GU version exists: Quillory-Quillory-1-complete",
                "[Extractor] Existing JRE exists: Quillory-JRE-17-complete",
                "[Extractor] Latest GUversion is newer or same as our version so will just run",
                "[Extractor] Latest App version is newer or same as our version so will just run",
                "[Extractor] Running without extraction now", "[JNILauncher] Done!"});
  EXPECT_EQ(reported(*second, "arg 1"), "again");
  EXPECT_THAT(second->out, ::testing::Not(HasSubstr("[ExtractArchiveFile]")));
}

TEST_F(FirstStart, RunsNoShellCommandWhenEverythingIsCurrent) {
  EXPECT_THAT(second->out, ::testing::Not(HasSubstr("[ChMod]")));
}

}  // namespace
}  // namespace quillory::testing
