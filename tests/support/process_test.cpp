#include "support/process.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/time.h>
#include <sys/wait.h>

#include <cerrno>
#include <string>
#include <vector>

#include "support/strings.h"
#include "tests/harness/temp_dir.h"

namespace quillory {
namespace {

using testing::readFile;
using testing::TempDir;

int runToItsEnd(const char* script) {
  std::string shell = "/bin/sh", option = "-c", text = script;
  char* arguments[] = {shell.data(), option.data(), text.data(), nullptr};
  pid_t child = -1;
  EXPECT_EQ(processCalls.spawn(&child, "/bin/sh", nullptr, arguments, getEnvP()), 0);
  int status = -1;
  EXPECT_EQ(processCalls.waitFor(child, &status), child);
  return status;
}

TEST(Spawn, RunsAProgramWhoseStatusIsWaitedFor) {
  const int status = runToItsEnd("exit 7");
  ASSERT_TRUE(WIFEXITED(status));
  EXPECT_EQ(WEXITSTATUS(status), 7);
}

TEST(Spawn, GivesTheArgumentsAndTheEnvironment) {
  const TempDir folder;
  std::string shell = "/bin/sh", option = "-c", text = "echo \"$1 $GIVEN\" > \"$0\"",
              file = folder / "out", argument = "an argument", variable = "GIVEN=a value";
  char* arguments[] = {shell.data(), option.data(),   text.data(),
                       file.data(),  argument.data(), nullptr};
  char* environment[] = {variable.data(), nullptr};
  pid_t child = -1;
  ASSERT_EQ(processCalls.spawn(&child, "/bin/sh", nullptr, arguments, environment), 0);
  int status = -1;
  ASSERT_EQ(processCalls.waitFor(child, &status), child);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(readFile(file), "an argument a value\n");
}

TEST(Spawn, ReturnsAnErrorNumberForAMissingProgram) {
  std::string name = "/no/such/program";
  char* arguments[] = {name.data(), nullptr};
  pid_t child = -1;
  EXPECT_EQ(processCalls.spawn(&child, name.c_str(), nullptr, arguments, getEnvP()), ENOENT);
}

TEST(WaitFor, FailsForAProcessThatIsNoChild) {
  int status = -1;
  EXPECT_EQ(processCalls.waitFor(getpid(), &status), -1);
  EXPECT_EQ(errno, ECHILD);
}

volatile sig_atomic_t alarms = 0;

TEST(WaitFor, GoesOnWaitingWhenASignalInterruptsIt) {
  struct sigaction onAlarm {};
  onAlarm.sa_handler = +[](int) { alarms = alarms + 1; };  // without SA_RESTART
  struct sigaction before {};
  ASSERT_EQ(sigaction(SIGALRM, &onAlarm, &before), 0);
  const itimerval every20Millis{{0, 20000}, {0, 20000}};
  ASSERT_EQ(setitimer(ITIMER_REAL, &every20Millis, nullptr), 0);

  const int status = runToItsEnd("sleep 0.3; exit 3");

  const itimerval off{};
  setitimer(ITIMER_REAL, &off, nullptr);
  sigaction(SIGALRM, &before, nullptr);
  EXPECT_GT(alarms, 0);
  EXPECT_EQ(WEXITSTATUS(status), 3);
}

TEST(RunShell, ReturnsTheStatusOfTheCommand) {
  EXPECT_EQ(processCalls.runShell("true"), 0);
  EXPECT_EQ(WEXITSTATUS(processCalls.runShell("exit 42")), 42);
  EXPECT_EQ(WEXITSTATUS(processCalls.runShell("/no/such/command 2>/dev/null")), 127);
}

TEST(ArgumentPointers, EndWithANull) {
  const std::vector<std::string> texts = {"first", "", "with space"};
  const std::vector<char*> pointers = argumentPointers(texts);
  ASSERT_EQ(pointers.size(), 4U);
  for (std::size_t i = 0; i < texts.size(); ++i) EXPECT_EQ(pointers[i], texts[i].c_str());
  EXPECT_EQ(pointers[3], nullptr);
  EXPECT_EQ(argumentPointers({}), std::vector<char*>{nullptr});
}

TEST(IsSafeInShellQuotes, IsFalseForWhatExpandsBetweenDoubleQuotes) {
  EXPECT_TRUE(isSafeInShellQuotes(""));
  EXPECT_TRUE(isSafeInShellQuotes("/Applications/My App (1) 'old' & *new*; #1!/ü"));
  for (const char* path : {"/a\"b", "/a$b", "/a`b", "/a\\b", "\"", "/a/$", "$HOME"}) {
    SCOPED_TRACE(path);
    EXPECT_FALSE(isSafeInShellQuotes(path));
  }
}

// Tells for every byte whether the shell leaves it alone, with the shell itself as the judge.
TEST(IsSafeInShellQuotes, AgreesWithTheShellAboutEveryByte) {
  const TempDir folder;
  const std::string out = folder / "out";
  for (int byte = 1; byte < 256; ++byte) {
    const std::string path = "/a" + std::string(1, static_cast<char>(byte)) + "b";
    if (!isSafeInShellQuotes(path)) continue;
    SCOPED_TRACE(byte);
    const std::string command = "printf %s \"" + path + "\" > " + out;
    ASSERT_EQ(processCalls.runShell(command.c_str()), 0);
    EXPECT_EQ(readFile(out), path);
  }
}

}  // namespace
}  // namespace quillory
