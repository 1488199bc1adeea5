#include "launcher/run_thread.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <string>
#include <vector>

#include "tests/harness/scoped_replace.h"
#include "tests/harness/temp_dir.h"

namespace quillory {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using testing::readFile;
using testing::ScopedReplace;
using testing::TempDir;

struct DriverCall {
  std::string exePath;
  std::vector<std::string> args;
  std::vector<std::string> fullArgs;
  bool prepareOnly;
};
std::vector<DriverCall> driverCalls;
std::vector<std::string> runnerCalls;

// Calls of a driver that returns, and of the command runner behind it.
class Run : public ::testing::Test {
 protected:
  static constexpr auto kDriver = [](char* exePath, int argCount, char** args, int fullArgc,
                                     char** fullArgv, bool prepareOnly) {
    driverCalls.push_back(
        {exePath, {args, args + argCount}, {fullArgv, fullArgv + fullArgc}, prepareOnly});
  };
  static constexpr auto kRunner = [](int count, char** arguments, int* status) {
    runnerCalls.assign(arguments, arguments + count);
    *status = -1;
  };

  Run() {
    driverCalls.clear();
    runnerCalls.clear();
  }

  // What a run prints with these arguments.
  std::string runWith(std::vector<std::string> arguments) {
    std::vector<char*> pointers;
    for (std::string& argument : arguments) pointers.push_back(argument.data());
    pointers.push_back(nullptr);
    const ScopedReplace count(argc, static_cast<int>(arguments.size()));
    const ScopedReplace values(argv, pointers.data());
    ::testing::internal::CaptureStdout();
    runSteps({.drive = kDriver, .runCommand = kRunner});
    return ::testing::internal::GetCapturedStdout();
  }

  ScopedReplace<int> status_{returnCode, 0};
};

TEST_F(Run, HandsTheArgumentsToTheDriver) {
  EXPECT_EQ(runWith({"./app", "-a", "b c", ""}), "Extracting wrapper tail...\n");
  ASSERT_EQ(driverCalls.size(), 1U);
  EXPECT_EQ(driverCalls[0].exePath, "./app");
  EXPECT_THAT(driverCalls[0].args, ElementsAre("-a", "b c", ""));
  EXPECT_THAT(driverCalls[0].fullArgs, ElementsAre("./app", "-a", "b c", ""));
  EXPECT_FALSE(driverCalls[0].prepareOnly);
}

TEST_F(Run, HandsOverAnEmptyListWithoutArguments) {
  runWith({"/a/app"});
  EXPECT_THAT(driverCalls[0].args, IsEmpty());
  EXPECT_FALSE(driverCalls[0].prepareOnly);
}

TEST_F(Run, PreparesOnlyForTheLastArgument) {
  runWith({"app", "x", "QYPREPARE_FOR_LAUNCH_ONLY"});
  EXPECT_TRUE(driverCalls[0].prepareOnly);
  EXPECT_THAT(driverCalls[0].args, ElementsAre("x", "QYPREPARE_FOR_LAUNCH_ONLY"));
}

TEST_F(Run, TakesTheMarkAnywhereElseForAnArgument) {
  runWith({"app", "QYPREPARE_FOR_LAUNCH_ONLY", "x"});
  runWith({"app", "QYPREPARE_FOR_LAUNCH_ONLYX"});
  runWith({"app", "qyprepare_for_launch_only"});
  runWith({"app", "QYPREPARE_FOR_LAUNCH_ONLY", ""});
  for (const DriverCall& call : driverCalls) EXPECT_FALSE(call.prepareOnly);
}

TEST_F(Run, ReachesTheCommandRunnerBehindADriverThatReturns) {
  runWith({"app", "x"});
  EXPECT_THAT(runnerCalls, ElementsAre("app", "x"));
  EXPECT_EQ(returnCode, -1);
}

// What the driver does next may be the end of the process.
TEST_F(Run, HasItsLineOutBeforeTheDriverBegins) {
  const TempDir folder;
  const std::string path = folder / "out";
  const pid_t child = fork();
  if (child == 0) {
    std::string name = "app";
    char* pointers[] = {name.data(), nullptr};
    argc = 1;
    argv = pointers;
    // A file gets what is buffered when it is flushed, and _exit() flushes nothing.
    if (std::freopen(path.c_str(), "w", stdout) == nullptr) _exit(2);
    runSteps(
        {.drive = [](char*, int, char**, int, char**, bool) { _exit(0); }, .runCommand = kRunner});
    _exit(3);
  }
  int status = 0;
  waitpid(child, &status, 0);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(readFile(path), "Extracting wrapper tail...\n");
}

TEST(RunSteps, AreTheDriverAndTheRunner) {
  const RunSteps steps;
  EXPECT_EQ(steps.drive, &extractWrapperTail);
  EXPECT_EQ(steps.runCommand, &runConfiguredCommand);
}

}  // namespace
}  // namespace quillory
