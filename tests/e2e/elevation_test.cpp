// Elevation as it should go: one prompt, one installation for all users, one start.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>

#include "tests/e2e/elevation_fixture.h"

namespace quillory::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::Not;

TEST_F(Elevation, RunsTheToolOnceWithItsArgumentsInOrder) {
  useRecorder();
  const ChildResult result = start({"-x", "two words", "", "$HOME `id` \"q\" 'ü€𝄞'\n", "last"});
  EXPECT_EQ(result.exitStatus, 0) << result.out;
  EXPECT_THAT(recordedIn(at(kPrompts)),
              ElementsAre("--prompt=Demo", kExecutable, "-x", "two words", "",
                          "$HOME `id` \"q\" 'ü€𝄞'\n", "last", "QYPREPARE_FOR_LAUNCH_ONLY"));
}

TEST_F(Elevation, RunsTheToolWhereTheMasterFolderIsNotTheUsers) {
  Tail tail = quickTail();
  tail.appName = "My App";
  makeBundle(tail);
  useRecorder();
  root_->makeUserFolder("/home/user/Library/Application Support");
  fs::create_directory(at("/home/user/Library/Application Support/Quillory-My App"));
  EXPECT_EQ(start({"argument"}).exitStatus, 0);
  EXPECT_THAT(recordedIn(at(kPrompts)),
              ElementsAre("--prompt=My App", kExecutable, "argument", "QYPREPARE_FOR_LAUNCH_ONLY"));
}

TEST_F(Elevation, RelaunchesItselfWithItsOwnArguments) {
  useRecorder();
  const ChildResult result = start({"one", "two words", ""});
  EXPECT_EQ(countOf(result.err, "main(0)=" + std::string(kExecutable)), 2) << result.err;
  EXPECT_EQ(countOf(result.err, "main(1)=one\n"), 2);
  EXPECT_EQ(countOf(result.err, "main(2)=two words\n"), 2);
  EXPECT_EQ(countOf(result.err, "main(3)="), 2);
  EXPECT_EQ(countOf(result.err, "main(4)="), 0);
  EXPECT_THAT(result.err, Not(HasSubstr("=QYPREPARE_FOR_LAUNCH_ONLY")));
}

TEST_F(Elevation, LogsItsStepsInOrder) {
  useRecorder();
  const std::string rule = "[SUDO] ==============================================";
  linesInOrder(start({"a"}),
               {"Permanent install for all users",
                "[Extractor] Unable to create GU Temp folder - assuming elevation required",
                "[ExtractArchiveFile] Extracting lzma64 (::0)",
                "[ExtractArchiveFile] Extracting nativesplash.png (::0)",
                "[Extractor] Native Splash PNG path is /tmp/nativesplash.png",
                "[Extractor] Configuring splash",
                "[Extractor] Performing elevated setup and launch",
                "[SUDO] Elevation required.",
                "[SUDO] On OS X, UI-based elevation utility is required. Using bundled 'elev_mac'",
                std::string("[SUDO] Elev_mac path is ") + kTool,
                "[Spawner] Appended argument --prompt=Demo",
                std::string("[Spawner] Appended argument ") + kExecutable,
                "[Spawner] Appended argument a",
                "[Spawner] Appended argument QYPREPARE_FOR_LAUNCH_ONLY",
                rule,
                "[SUDO] ======      Launching elevated setup    ======",
                rule,
                "[SUDO] Elevated setup complete",
                "[SUDO] Elevated setup complete",
                "[Spawner] Appended argument a",
                rule,
                "[SUDO] ======      Relaunching post setup      ======",
                rule,
                "[SUDO] Relaunch complete"});
}

/// With the real tool, a real sudo, and a rule for this executable.
class RealElevation : public Elevation {
 protected:
  void SetUp() override {
    Elevation::SetUp();
    if (IsSkipped()) return;
    if (!hasSudo()) GTEST_SKIP() << "needs sudo";
    useRealTool();
    allowInstallation();
  }
};

TEST_F(RealElevation, InstallsForAllUsersAndStartsJavaAsTheUser) {
  const ChildResult result = start({"one", "two words", "$HOME `id` \"q\" 'ü€𝄞'", "last"});
  EXPECT_EQ(result.exitStatus, 0) << result.out << result.err;
  EXPECT_EQ(prompts(), 1);
  EXPECT_THAT(startedJava(), EndsWith("\none\ntwo words\n$HOME `id` \"q\" 'ü€𝄞'\nlast\n"));
  EXPECT_EQ(ownerOf(at(kMaster) + "/started"), PrivateRoot::kUser);
  EXPECT_EQ(readFile(at(kMaster) + "/Quillory-Demo-3-complete/hello.txt"),
            "hello from version 3\n");
  EXPECT_EQ(ownerOf(at(kMaster) + "/Quillory-Demo-3-complete"), 0U);
  EXPECT_EQ(countLine(result, "[SUDO] Relaunch complete"), 1);
  EXPECT_THAT(result.out, Not(HasSubstr("elev_mac ended with status")));
}

// The last argument of the copy with the administrator's rights says that it starts no application.
TEST_F(RealElevation, TakesAnyNumberOfArguments) {
  const std::vector<std::string> arguments(600, "x");
  const ChildResult result = start(arguments);
  EXPECT_EQ(result.exitStatus, 0) << result.err;
  EXPECT_EQ(countOf(result.out, "[Extractor] Launching '"), 1) << "by the relaunched copy";
  const std::string java = startedJava();
  EXPECT_EQ(countOf(java, "\nx"), 600);
  EXPECT_EQ(ownerOf(at(kMaster) + "/started"), PrivateRoot::kUser);
}

TEST_F(RealElevation, PreparesWithoutAWindowAndWithoutStartingJava) {
  const ChildResult result = start({"argument"});
  const std::string& out = result.out;
  const std::size_t begin = out.find("[SUDO] ======      Launching elevated setup");
  const std::size_t end = out.find("[SUDO] Elevated setup complete");
  ASSERT_NE(end, out.npos) << out;
  const std::string elevated = out.substr(begin, end - begin);
  EXPECT_THAT(elevated, HasSubstr("[Extractor] This is an elevated run purely to prepare an "
                                  "installation. Will not show UI or launch an app"));
  EXPECT_THAT(elevated, HasSubstr("[Extractor] Will now run latest GU"));
  EXPECT_THAT(elevated, Not(HasSubstr("[Extractor] Launching '")));
  EXPECT_EQ(countOf(out, "[Extractor] Launching '"), 1) << "by the relaunched copy";
  EXPECT_EQ(countOf(result.err, "ShowSplash"), 1) << "that of the first copy";
  EXPECT_NE(startedJava(), "");
  EXPECT_EQ(countLine(result, "[Extractor] Running without extraction now"), 1);
}

TEST_F(RealElevation, MakesTheFolderOfAllUsersForTheSystemAlone) {
  start();
  for (const char* folder : {"/Library", kSupport}) {
    EXPECT_EQ(modeOf(at(folder)), 0755U) << folder;
    EXPECT_EQ(ownerOf(at(folder)), 0U) << folder;
  }
  EXPECT_EQ(modeOf(at(kMaster)), 0777U);
}

TEST_F(RealElevation, LeavesAFolderOfAllUsersThatIsThereAsItIs) {
  fs::create_directories(at(kSupport));
  chmod(at(kSupport).c_str(), 0711);
  start();
  EXPECT_NE(startedJava(), "");
  EXPECT_EQ(modeOf(at(kSupport)), 0711U);
}

TEST_F(RealElevation, IsNotNeededAgain) {
  start();
  ASSERT_NE(startedJava(), "");
  fs::remove(at(kMaster) + "/started");
  const ChildResult second = start({"again"});
  EXPECT_EQ(second.exitStatus, 0);
  EXPECT_EQ(prompts(), 1);
  EXPECT_THAT(startedJava(), HasSubstr("again\n"));
}

TEST_F(RealElevation, IsNotNeededForAnUpdateByTheUser) {
  start();
  ASSERT_NE(startedJava(), "");
  Tail newer = forAllUsers();
  newer.appVersion = "4";
  makeBundle(newer);
  useRealTool();
  EXPECT_EQ(start().exitStatus, 0);
  EXPECT_EQ(prompts(), 1);
  EXPECT_TRUE(fs::exists(at(kMaster) + "/Quillory-Demo-4-complete/hello.txt"));
}

TEST_F(RealElevation, ThatFailsIsLoggedAndNotTriedAgain) {
  writeFile(at("/Library"), "a file, in which nobody can install");
  const ChildResult result = start();
  EXPECT_EQ(result.exitStatus, 0);
  EXPECT_EQ(prompts(), 1);
  linesInOrder(result,
               {"[SUDO] The elevated setup cannot write to the install location either. Giving up.",
                "[SUDO] elev_mac ended with status 1: elevation was denied, or set-up failed",
                kRefusal, "[SUDO] Relaunch complete"});
}

TEST_F(RealElevation, CannotHelpAnInstallationOfOneUser) {
  // Root installs in its own home folder, as the Install Type says.
  makeBundle(quickTail());
  useRealTool();
  root_->makeUserFolder("/home/user/Library/Application Support");
  fs::create_directory(at("/home/user/Library/Application Support/Quillory-Demo"));
  const ChildResult result = start();
  EXPECT_EQ(result.exitStatus, 0);
  EXPECT_EQ(prompts(), 1);
  EXPECT_EQ(countLine(result, kRefusal), 1);
  EXPECT_TRUE(fs::exists(at("/root/Library/Application Support/Quillory-Demo")));
}

TEST_F(Elevation, IsNotTriedByACopyThatIsToPrepareOnly) {
  useRecorder();
  const ChildResult result = start({"QYPREPARE_FOR_LAUNCH_ONLY"});
  EXPECT_EQ(result.exitStatus, 1);
  EXPECT_EQ(prompts(), 0);
  EXPECT_EQ(
      countLine(
          result,
          "[SUDO] The elevated setup cannot write to the install location either. Giving up."),
      1);
}

// As in containers that run as a number: what is installed for all users needs no home.
TEST_F(Elevation, IsNotNeededByAUserOfNoNameWhoMayWriteThere) {
  root_->makeUserFolder(kSupport);
  writeFile(at("/run/passwd"), "root:x:0:0:root:/root:/bin/sh\n");
  useRecorder();
  const ChildResult result = start({"argument"});
  EXPECT_EQ(result.exitStatus, 0) << result.out << result.err;
  EXPECT_EQ(prompts(), 0);
  EXPECT_THAT(startedJava(), EndsWith("argument\n"));
}

// Only an elevated run makes it, even if the user is the administrator.
TEST_F(Elevation, IsWhatMakesTheFolderOfAllUsers) {
  useRecorder();
  const ChildResult result = root_->runAsRoot({kExecutable, "ordinary"});
  EXPECT_EQ(prompts(), 1) << result.out;
  EXPECT_FALSE(fs::exists(at("/Library")));
}

TEST_F(Elevation, ShowsTheSplashMeanwhile) {
  useRecorder();
  const ChildResult result = start();
  EXPECT_EQ(countOf(result.err, "ShowSplash"), 1) << result.err;
  EXPECT_EQ(countOf(result.err, "HideSplash"), 1) << result.err;
}

TEST_F(Elevation, NeverShowsTheSplashInASilentRun) {
  Tail tail = forAllUsers();
  tail.silentParameter = "-quiet";
  makeBundle(tail);
  useRecorder();
  const ChildResult result = start({"-quiet"});
  EXPECT_EQ(prompts(), 1);
  EXPECT_EQ(countOf(result.err, "ShowSplash"), 0) << result.err;
}

}  // namespace
}  // namespace quillory::testing
