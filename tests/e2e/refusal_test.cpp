// Starts that cannot go on, and bundles that mean harm.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "tests/e2e/launcher_run.h"
#include "tests/harness/records.h"

namespace quillory::testing {
namespace {

namespace fs = std::filesystem;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

class Refusal : public ::testing::Test {
 protected:
  Tail justALauncher() {
    Tail tail;
    tail.guVersion = "";
    return tail;
  }

  TempDir folder_;
  TestUser user_;
};

TEST_F(Refusal, WithoutAParametersFile) {
  const HandMadeBundle bundle(folder_.str(), quickTail());
  fs::remove(bundle.resource("AppParams.excludefromsigning"));
  const ChildResult result = start(bundle, user_);
  EXPECT_EQ(result.exitStatus, 1);
  EXPECT_THAT(result.out, HasSubstr("[Extractor] *********************** Failed to extract wrapper "
                                    "params - couldn't open params file\n"));
  EXPECT_FALSE(fs::exists(user_.home() + "/Library"));
}

TEST_F(Refusal, WithoutTheMarkerInTheParametersFile) {
  const HandMadeBundle bundle(folder_.str(), quickTail());
  writeFile(bundle.resource("AppParams.excludefromsigning"), records({"0"}));
  const ChildResult result = start(bundle, user_);
  EXPECT_EQ(result.exitStatus, 1);
  EXPECT_EQ(countLine(result, "Could not find marker: Params"), 1);
}

TEST_F(Refusal, WithoutATail) {
  const HandMadeBundle bundle(folder_.str(), quickTail());
  fs::remove(bundle.resource("Tail"));
  const ChildResult result = start(bundle, user_);
  EXPECT_EQ(result.exitStatus, 1);
  const std::string tail = bundle.contents() + "/MacOS/../Resources/Tail";
  linesInOrder(result, {"Could not find marker: Tail", "[Extractor] No tail found. Trying " + tail,
                        "[Extractor] ************************* Failed to extract wrapper tail - "
                        "couldn't open file " +
                            tail});
}

TEST_F(Refusal, OfALauncherWithNothingToLaunch) {
  const HandMadeBundle bundle(folder_.str(), justALauncher());
  const ChildResult result = start(bundle, user_);
  EXPECT_EQ(result.exitStatus, 1);
  EXPECT_EQ(countLine(result, "[Extractor] Unable to run (we are just a launcher)"), 1);
}

TEST_F(Refusal, OfAnEntryThatLeavesItsFolder) {
  for (const char* path : {"../escaped", "a/../../escaped", "..", "a/.."}) {
    SCOPED_TRACE(path);
    Tail tail = quickTail();
    tail.entries = fileEntry(path, "planted") + tail.entries;
    const TempDir folder;
    const TestUser user;
    const ChildResult result = start(HandMadeBundle(folder.str(), tail), user);
    EXPECT_EQ(result.exitStatus, 1);
    int files = 0;
    for (const auto& entry : fs::recursive_directory_iterator(user.home())) {
      if (!entry.is_regular_file()) continue;
      EXPECT_NE(readFile(entry.path()), "planted") << entry.path();
      ++files;
    }
    EXPECT_GT(files, 0) << "there is a log at least";
  }
}

TEST_F(Refusal, OfAFileNameThatIsAShellCommand) {
  Tail tail = quickTail();
  const std::string name = "$(touch ${HOME}/planted)`touch ${HOME}/planted`\"; touch planted #";
  tail.entries = updaterEntries() + scriptRuntimeEntry() +
                 applicationEntries(fileEntry(name, "content"), nullptr);
  const HandMadeBundle bundle(folder_.str(), tail);
  ChildResult result = start(bundle, user_);
  EXPECT_EQ(result.exitStatus, 0);
  EXPECT_FALSE(fs::exists(user_.home() + "/planted"));
}

TEST_F(Refusal, ToFollowALinkThatStandsWhereAnOldTemporaryFileLay) {
  const HandMadeBundle bundle(folder_.str(), quickTail());
  start(bundle, user_);
  startedArguments(user_);
  // Everything installed is writable by all: a link in the runtime's place must not lead outside.
  const std::string alias = user_.master() + "/Quillory-JRE-17-complete";
  writeFile(folder_ / "precious/bin/java", "keep me");
  fs::remove_all(alias);
  fs::create_directory_symlink(folder_ / "precious", alias);
  start(bundle, user_);
  EXPECT_EQ(readFile(folder_ / "precious/bin/java"), "keep me");
}

TEST(HomeFolder, MayHoldCharactersThatTheShellTreatsSpecially) {
  const TempDir folder;
  const TestUser user("$HOME `id` \"quoted\" back\\slash");
  const ChildResult result =
      start(HandMadeBundle(folder.str(), quickTail(), {{"jre_name", "JRE"}}), user, {"argument"});
  EXPECT_EQ(result.exitStatus, 0) << result.out;
  EXPECT_EQ(modeOf(user.master()), 0777U);
  EXPECT_EQ(modeOf(user.master() + "/Quillory-Demo-3-complete/hello.txt"), 0755U);
  EXPECT_THAT(startedArguments(user), ::testing::Contains("argument"));
}

TEST(Tail, InsideTheExecutableWinsOverTheFile) {
  const TempDir folder;
  const TestUser user;
  const HandMadeBundle bundle(folder.str(), quickTail());
  Tail inside = quickTail();
  inside.appName = "Inside";
  std::string executable = readFile(bundle.executable());
  writeFile(bundle.executable(), executable + tailMarker() + tailBytes(inside));
  const ChildResult result = start(bundle, user);
  EXPECT_EQ(countLine(result, "[Extractor] Found tail marker"), 1);
  EXPECT_TRUE(fs::exists(user.master("Inside")));
  EXPECT_FALSE(fs::exists(user.master("Demo")));
}

TEST(Executable, HoldsNeitherMarker) {
  const std::string executable = readFile(launcherUnderTest());
  EXPECT_EQ(executable.find(tailMarker()), std::string::npos);
  EXPECT_EQ(executable.find(paramsMarker()), std::string::npos);
}

TEST(PrepareOnly, InstallsAndEndsWithoutLaunching) {
  const TempDir folder;
  const TestUser user;
  const ChildResult result = start(HandMadeBundle(folder.str(), quickTail()), user,
                                   {"argument", "QYPREPARE_FOR_LAUNCH_ONLY"});
  EXPECT_EQ(result.exitStatus, 0);
  EXPECT_TRUE(fs::exists(user.master() + "/Quillory-Demo-3-complete/hello.txt"));
  EXPECT_THAT(result.out, Not(HasSubstr("+++ Start: Launching")));
  EXPECT_EQ(countLine(result,
                      "[Extractor] This is an elevated run purely to prepare an "
                      "installation. Will not show UI or launch an app"),
            1);
}

TEST(PrepareOnly, IsAnOrdinaryArgumentAnywhereButLast) {
  const TempDir folder;
  const TestUser user;
  start(HandMadeBundle(folder.str(), quickTail(), {{"jre_name", "JRE"}}), user,
        {"QYPREPARE_FOR_LAUNCH_ONLY", "argument"});
  EXPECT_THAT(startedArguments(user), ::testing::Contains("QYPREPARE_FOR_LAUNCH_ONLY"));
}

TEST(StreamThatEndsEarly, IsWaitedForWithoutBurningACore) {
  const TempDir folder;
  const TestUser user;
  Tail tail = quickTail();
  tail.entries.resize(tail.entries.size() / 2);
  const HandMadeBundle bundle(folder.str(), tail);
  BackgroundChild child({bundle.executable()}, user.options());
  ASSERT_TRUE(child.waitForOutput("[ExtractArchive] Waiting for the rest of")) << child.out();
  const auto ticks = [&child] {
    const std::string stat = readFile("/proc/" + std::to_string(child.pid()) + "/stat");
    std::istringstream fields(stat.substr(stat.rfind(')') + 2));
    std::string field;
    long sum = 0;
    for (int i = 3; i <= 15 && fields >> field; ++i)
      if (i == 14 || i == 15) sum += std::stol(field);
    return sum;
  };
  const long before = ticks();
  std::this_thread::sleep_for(std::chrono::seconds(1));
  EXPECT_LT(ticks() - before, 10) << "hundredths of a second of processor time in one second";
}

TEST(KilledStart, LeavesNothingThatANextStartTakesForWhole) {
  for (const char* moment :
       {"Extracting lzma64", "Extracting GU.p2.l2", "[Extractor] Renaming GU folder",
        "Extracting JRE.p2.l2", "Regenerating jsa", "[LNS] Running mv", "Extracting App"}) {
    SCOPED_TRACE(moment);
    const TempDir folder;
    const TestUser user;
    const HandMadeBundle bundle(folder.str(), quickTail(), {{"jre_name", "JRE"}});
    {
      BackgroundChild child({bundle.executable(), "argument"}, user.options());
      ASSERT_TRUE(child.waitForOutput(moment)) << child.out();
      child.sendSignal(SIGKILL);
      child.finish();  // On a busy machine it may have come to its end meanwhile.
    }
    const ChildResult next = start(bundle, user, {"argument"});
    EXPECT_EQ(next.exitStatus, 0) << next.out;
    EXPECT_EQ(readFile(user.master() + "/Quillory-Demo-3-complete/hello.txt"),
              "hello from version 3\n");
    EXPECT_THAT(startedArguments(user), ::testing::Contains("argument"));
  }
}

}  // namespace
}  // namespace quillory::testing
