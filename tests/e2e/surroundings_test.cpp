// Starts from unusual places, with unusual arguments, in an unusual environment.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "tests/e2e/launcher_run.h"

namespace quillory::testing {
namespace {

namespace fs = std::filesystem;
using ::testing::Contains;
using ::testing::HasSubstr;

class Surroundings : public ::testing::Test {
 protected:
  ChildResult startAs(const std::string& executable, const std::string& directory) {
    ChildOptions options = user_.options();
    options.directory = directory;
    return runChild({executable, "argument"}, options);
  }

  TempDir folder_;
  TestUser user_;
  HandMadeBundle bundle_{folder_.str(), quickTail(), {{"jre_name", "JRE"}}};
};

TEST_F(Surroundings, AnyWorkingFolderWillDo) {
  EXPECT_EQ(startAs(bundle_.executable(), "/").exitStatus, 0);
  EXPECT_THAT(startedArguments(user_), Contains("argument"));
}

// `launcher | head -1`: writes that fail are no reason to install nothing.
TEST_F(Surroundings, AnOutputThatNobodyReadsIsNoFailure) {
  for (const char* const script :
       {"{ \"$0\" argument 2>&1; echo $? >\"$1\"; } | true",
        "{ \"$0\" argument 2>/dev/null; echo $? >\"$1\"; } | head -1",
        "{ \"$0\" argument 2>&1 >/dev/null; echo $? >\"$1\"; } | true"}) {
    SCOPED_TRACE(script);
    fs::remove_all(user_.master());
    runChild({"/bin/sh", "-c", script, bundle_.executable(), folder_ / "status"}, user_.options());
    EXPECT_EQ(readFile(folder_ / "status"), "0\n");
    EXPECT_THAT(startedArguments(user_), Contains("argument"));
    EXPECT_TRUE(fs::exists(user_.master() + "/Quillory-Demo-3-complete/hello.txt"));
  }
}

TEST_F(Surroundings, WithoutAThreadForTheWorkNothingIsDoneWhichIsSaid) {
  ChildOptions options = user_.options();
  options.environment["LD_PRELOAD"] += ":" QUILLORY_REFUSED_THREAD;
  options.environment["QUILLORY_REFUSED_THREAD"] = "1";
  const ChildResult result = runChild({bundle_.executable()}, options);
  EXPECT_EQ(result.exitStatus, 1);
  EXPECT_THAT(result.err, HasSubstr(" The run thread cannot be started.\n"));
  EXPECT_FALSE(fs::exists(user_.master()));
}

TEST_F(Surroundings, ARelativePathIsTakenFromTheWorkingFolder) {
  const ChildResult result = startAs("./launcher", bundle_.contents() + "/MacOS");
  EXPECT_EQ(result.exitStatus, 0);
  linesInOrder(
      result,
      {"[Extractor] The absolute wrapper path is " + bundle_.contents() + "/MacOS/./launcher",
       "[Extractor] The executable name is ./launcher",
       "[Extractor] The executable dir is " + bundle_.contents() + "/MacOS/.",
       "[Extractor] No tail found. Trying " + bundle_.contents() + "/MacOS/./../Resources/Tail"});
  EXPECT_THAT(startedArguments(user_), Contains("argument"));
}

TEST_F(Surroundings, AnExecutableFoundInTheSearchPathDoesNotKnowItsBundle) {
  ChildOptions options = user_.options();
  options.directory = "/";
  options.environment["PATH"] = bundle_.contents() + "/MacOS:/usr/bin:/bin";
  const ChildResult result = runChild({"/bin/sh", "-c", "exec launcher"}, options);
  EXPECT_EQ(result.exitStatus, 1);
  EXPECT_EQ(countLine(result, "[Extractor] The absolute wrapper path is /launcher"), 1);
}

TEST_F(Surroundings, TheBundleIsLookedForBesideALinkToTheExecutable) {
  fs::create_symlink(bundle_.executable(), folder_ / "elsewhere");
  EXPECT_EQ(startAs(folder_ / "elsewhere", "/").exitStatus, 1);
  fs::create_symlink("launcher", bundle_.contents() + "/MacOS/beside");
  EXPECT_EQ(startAs(bundle_.contents() + "/MacOS/beside", "/").exitStatus, 0);
  EXPECT_THAT(startedArguments(user_), Contains("argument"));
}

TEST_F(Surroundings, AUserOfNoNameHasNoFolderOfHisOwn) {
  ChildOptions options = user_.options();
  options.environment["NSS_WRAPPER_PASSWD"] = "/dev/null";
  const ChildResult result = runChild({bundle_.executable()}, options);
  EXPECT_EQ(result.exitStatus, 1);
  EXPECT_THAT(result.out, HasSubstr("ERROR: Unable to get shared dir!"));
  EXPECT_FALSE(fs::exists(user_.support()));
}

TEST_F(Surroundings, ABundlePathMayHoldAnyCharacter) {
  const std::string folder = folder_ / "\"quoted\" $HOME `id` \\ 'ünï€𝄞'; rm -rf *";
  fs::create_directories(folder);
  fs::rename(folder_ / "App.app", folder + "/App.app");
  EXPECT_EQ(startAs(folder + "/App.app/Contents/MacOS/launcher", "/").exitStatus, 0);
  EXPECT_THAT(startedArguments(user_), Contains("argument"));
}

TEST_F(Surroundings, WithoutStandardStreamsNothingIsWrittenIntoOtherFiles) {
  // Long enough to fill any pipe that took the place of a stream.
  std::string entries;
  for (int i = 0; i < 300; ++i) entries += fileEntry("file" + std::to_string(i), "content\n");
  Tail tail = quickTail();
  tail.entries = updaterEntries() + scriptRuntimeEntry() + applicationEntries(entries, nullptr);
  const TempDir folder;
  const HandMadeBundle bundle(folder.str(), tail, {{"jre_name", "JRE"}});
  const ChildResult result = runChild(
      {"/bin/sh", "-c", "exec \"$0\" argument <&- >&- 2>&-", bundle.executable()}, user_.options());
  EXPECT_EQ(result.exitStatus, 0);
  EXPECT_THAT(startedArguments(user_), Contains("argument"));
  for (int i = 0; i < 300; ++i)
    EXPECT_EQ(readFile(user_.master() + "/Quillory-Demo-3-complete/file" + std::to_string(i)),
              "content\n");
  const std::vector<std::string> logs = namesIn(user_.master() + "/logs");
  ASSERT_EQ(logs.size(), 1U);
  EXPECT_THAT(readFile(user_.master() + "/logs/" + logs[0]),
              HasSubstr("[Utils] Closing logging file.\n"));
}

TEST_F(Surroundings, AnEmptyEnvironmentWillDo) {
  std::vector<std::string> command = {"/usr/bin/env", "-i"};
  for (const char* name : {"LD_PRELOAD", "NSS_WRAPPER_PASSWD", "NSS_WRAPPER_GROUP", "ASAN_OPTIONS"})
    command.push_back(std::string(name) + "=" + user_.options().environment.at(name));
  command.insert(command.end(), {bundle_.executable(), "argument"});
  const ChildResult result = runChild(command, user_.options());
  EXPECT_EQ(result.exitStatus, 0) << result.err;
  EXPECT_EQ(countLine(result, "HomeDir is " + user_.home()), 1);
  EXPECT_THAT(startedArguments(user_), Contains("argument"));
}

TEST_F(Surroundings, ArgumentsNeedNotBeUtf8) {
  EXPECT_EQ(start(bundle_, user_, {"\xff\xfe", "gr\xfc\xdf", "gr\xc3\xbc\xc3\x9f"}).exitStatus, 0);
  const std::vector<std::string> started = startedArguments(user_);
  for (const char* argument : {"\xff\xfe", "gr\xfc\xdf", "gr\xc3\xbc\xc3\x9f"})
    EXPECT_THAT(started, Contains(argument));
}

TEST_F(Surroundings, TheEnvironmentNeedNotBeUtf8AndReachesJavaAsItIs) {
  start(bundle_, user_);
  startedArguments(user_);
  writeFile(user_.master() + "/Quillory-JRE-17-complete/bin/report",
            "#!/bin/sh\necho \"$LATIN\" >\"${0%/*/*/*}/said\"\n"
            "mv \"${0%/*/*/*}/said\" \"${0%/*/*/*}/started\"\n");
  ChildOptions options = user_.options();
  options.environment["LATIN"] = "gr\xfc\xdf";
  EXPECT_EQ(runChild({bundle_.executable()}, options).exitStatus, 0);
  EXPECT_THAT(startedArguments(user_), ::testing::ElementsAre("gr\xfc\xdf"));
}

TEST(SurroundingPaths, NeedNotBeUtf8) {
  const TempDir folder;
  const TestUser user("h\xf6me");
  const HandMadeBundle bundle(folder / "b\xfcndle", quickTail(), {{"jre_name", "JRE"}});
  EXPECT_EQ(start(bundle, user, {"argument"}).exitStatus, 0);
  EXPECT_THAT(startedArguments(user), Contains("argument"));
}

TEST_F(Surroundings, TheHomeFolderIsNotThatOfTheEnvironment) {
  ChildOptions options = user_.options();
  options.environment["HOME"] = folder_ / "other";
  EXPECT_EQ(runChild({bundle_.executable()}, options).exitStatus, 0);
  EXPECT_FALSE(fs::exists(folder_ / "other"));
  EXPECT_TRUE(fs::exists(user_.master()));
}

TEST_F(Surroundings, TwoThousandArgumentsAndOneOfAHundredThousandBytesArrive) {
  std::vector<std::string> arguments(2000);
  for (std::size_t i = 0; i < arguments.size(); ++i) arguments[i] = "a" + std::to_string(i);
  arguments[1000] = std::string(100000, 'x');
  EXPECT_EQ(start(bundle_, user_, arguments).exitStatus, 0);
  const std::vector<std::string> started = startedArguments(user_);
  ASSERT_GE(started.size(), arguments.size());
  EXPECT_TRUE(std::equal(arguments.rbegin(), arguments.rend(), started.rbegin()));
}

TEST_F(Surroundings, ALogsFolderThatIsNoneLeavesTheOtherSinks) {
  writeFile(user_.master() + "/logs", "a file");
  const ChildResult result = start(bundle_, user_, {"argument"});
  EXPECT_EQ(result.exitStatus, 0);
  EXPECT_EQ(countLine(result, "[Utils] Closing logging file."), 1);
  EXPECT_THAT(startedArguments(user_), Contains("argument"));
}

}  // namespace
}  // namespace quillory::testing
