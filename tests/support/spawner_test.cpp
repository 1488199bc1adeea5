#include "support/spawner.h"

#include <gmock/gmock.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <cerrno>
#include <filesystem>
#include <string>
#include <vector>

#include "support/process.h"
#include "tests/harness/captured_log.h"
#include "tests/harness/scoped_replace.h"
#include "tests/harness/temp_dir.h"

namespace quillory {
namespace {

using quillory::testing::CapturedLog;
using quillory::testing::readFile;
using quillory::testing::ScopedReplace;
using quillory::testing::TempDir;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::MatchesRegex;

class SpawnerTest : public ::testing::Test {
 protected:
  void SetUp() override { spawner_ = createSpawner(); }
  void TearDown() override { deleteSpawner(spawner_); }

  // /bin/sh -c `script`; `texts_` keeps what the spawner borrows.
  void setShell(const std::string& script) {
    script_ = script;
    setSpawnerExe(spawner_, "/bin/sh");
    addSpawnerArg(spawner_, "-c");
    addSpawnerArg(spawner_, script_.c_str());
  }

  CapturedLog log_;
  Spawner* spawner_ = nullptr;
  std::string script_;
};

using CreateSpawner = SpawnerTest;
using SetSpawnerExe = SpawnerTest;
using AddSpawnerArg = SpawnerTest;
using SpawnerOf = SpawnerTest;
using ToolOfAnyLength = SpawnerTest;
using RunSpawnerAndWait = SpawnerTest;

TEST_F(CreateSpawner, GivesAnEmptyListAndLogsIt) {
  for (const char* argument : spawner_->arguments) EXPECT_EQ(argument, nullptr);
  EXPECT_THAT(log_.messages(), ElementsAre("[Spawner] Creating spawner\n"));
}

TEST_F(SetSpawnerExe, TakesTheFirstSlotAndLogsTwice) {
  setSpawnerExe(spawner_, "/bin/true");
  EXPECT_STREQ(spawner_->arguments[0], "/bin/true");
  EXPECT_THAT(log_.messages(), ElementsAre("[Spawner] Creating spawner\n",
                                           "[Spawner] Setting spawner exe to /bin/true\n",
                                           "[Spawner] Appended argument /bin/true\n"));
}

TEST_F(SetSpawnerExe, AppendsWhenItIsNotTheFirstCall) {
  addSpawnerArg(spawner_, "first");
  setSpawnerExe(spawner_, "/bin/true");
  EXPECT_STREQ(spawner_->arguments[0], "first");
  EXPECT_STREQ(spawner_->arguments[1], "/bin/true");
}

TEST_F(AddSpawnerArg, BorrowsTheTextsInOrder) {
  const std::string one = "one";
  addSpawnerArg(spawner_, one.c_str());
  addSpawnerArg(spawner_, "");
  EXPECT_EQ(spawner_->arguments[0], one.c_str());
  EXPECT_STREQ(spawner_->arguments[1], "");
  EXPECT_EQ(spawner_->arguments[2], nullptr);
}

TEST_F(AddSpawnerArg, AcceptsThe500thAndDropsThe501st) {
  for (std::size_t i = 0; i < kSpawnerSlots; ++i) addSpawnerArg(spawner_, "x");
  EXPECT_STREQ(spawner_->arguments[499], "x");
  EXPECT_FALSE(log_.contains("WARNING"));
  addSpawnerArg(spawner_, "one too many");
  EXPECT_EQ(log_.messages().back(), "[Spawner] WARNING: couldn't append argument one too many\n");
  EXPECT_EQ(spawner_->arguments[500], nullptr) << "a full list is terminated";
}

TEST_F(SpawnerOf, IsTheExecutableAndItsArgumentsInOrder) {
  const std::string tool = "/bin/tool";
  const OwnedSpawner spawner = spawnerOf({tool.c_str(), "one", ""});
  EXPECT_EQ(spawner->arguments[0], tool.c_str()) << "borrowed";
  EXPECT_STREQ(spawner->arguments[1], "one");
  EXPECT_STREQ(spawner->arguments[2], "");
  EXPECT_EQ(spawner->arguments[3], nullptr);
  EXPECT_THAT(log_.messages(),
              ElementsAre("[Spawner] Creating spawner\n", "[Spawner] Creating spawner\n",
                          "[Spawner] Setting spawner exe to /bin/tool\n",
                          "[Spawner] Appended argument /bin/tool\n",
                          "[Spawner] Appended argument one\n", "[Spawner] Appended argument \n"));
}

TEST_F(ToolOfAnyLength, HasTheLogLinesOfASpawner) {
  Tool({"/bin/tool", "one", ""});
  EXPECT_THAT(log_.messages(),
              ElementsAre("[Spawner] Creating spawner\n", "[Spawner] Creating spawner\n",
                          "[Spawner] Setting spawner exe to /bin/tool\n",
                          "[Spawner] Appended argument /bin/tool\n",
                          "[Spawner] Appended argument one\n", "[Spawner] Appended argument \n"));
}

TEST_F(ToolOfAnyLength, RunsWithAllOfItsArguments) {
  for (const std::size_t count : {496u, 497u, 600u, 2000u}) {
    std::vector<std::string> arguments = {"/bin/sh", "-c", "[ $# = \"$1\" ] && exit 42", "sh",
                                          std::to_string(count)};
    arguments.resize(4 + count, "x");
    EXPECT_EQ(Tool(arguments).runAndWait(), 42) << count;
  }
  EXPECT_FALSE(log_.contains("WARNING"));
}

TEST_F(ToolOfAnyLength, TellsFailuresAsASpawnerDoes) {
  EXPECT_EQ(Tool({"/nonexistent/tool"}).runAndWait(), -1);
  EXPECT_EQ(log_.messages().back(), "Launch Error 2.\n");
  EXPECT_EQ(Tool({"/bin/sh", "-c", "kill -9 $$"}).runAndWait(), 0);
  EXPECT_EQ(log_.messages().back(), "[Spawner] runSpawnerAndWait returned 0\n");
}

TEST_F(RunSpawnerAndWait, RunsAFullList) {
  setShell("exit $#");
  for (std::size_t i = 3; i < kSpawnerSlots; ++i) addSpawnerArg(spawner_, "x");
  // The first word behind the script is $0; 496 more, of which an exit status keeps the low byte.
  EXPECT_EQ(runSpawnerAndWait(spawner_), 496 % 256);
}

TEST_F(RunSpawnerAndWait, ReturnsTheExitStatus) {
  for (const int status : {0, 1, 72, 255}) {
    Spawner* const spawner = createSpawner();
    const std::string script = "exit " + std::to_string(status);
    setSpawnerExe(spawner, "/bin/sh");
    addSpawnerArg(spawner, "-c");
    addSpawnerArg(spawner, script.c_str());
    EXPECT_EQ(runSpawnerAndWait(spawner), status);
    deleteSpawner(spawner);
  }
}

TEST_F(RunSpawnerAndWait, LogsTheRawWaitStatus) {
  setShell("exit 3");
  runSpawnerAndWait(spawner_);
  const std::vector<std::string> messages = log_.messages();
  ASSERT_GE(messages.size(), 2U);
  EXPECT_EQ(messages[messages.size() - 2], "Spawn call returned 0.\n");
  EXPECT_THAT(messages.back(), MatchesRegex("Spawn call done [0-9]+ 768\\.\n"));
}

TEST_F(RunSpawnerAndWait, CountsAKilledChildAsSuccess) {
  setShell("kill -9 $$");
  EXPECT_EQ(runSpawnerAndWait(spawner_), 0);
  EXPECT_EQ(log_.messages().back(), "[Spawner] runSpawnerAndWait returned 0\n");
}

TEST_F(RunSpawnerAndWait, ReportsAProgramThatDoesNotExist) {
  setSpawnerExe(spawner_, "/nonexistent/tool");
  EXPECT_EQ(runSpawnerAndWait(spawner_), -1);
  EXPECT_EQ(log_.messages().back(), "Launch Error 2.\n");
}

TEST_F(RunSpawnerAndWait, ReportsAnEmptyList) {
  EXPECT_EQ(runSpawnerAndWait(spawner_), -1);
  EXPECT_THAT(log_.messages().back(), HasSubstr("Launch Error "));
}

TEST_F(RunSpawnerAndWait, DoesNotSearchThePath) {
  setSpawnerExe(spawner_, "true");
  EXPECT_EQ(runSpawnerAndWait(spawner_), -1);
}

TEST_F(RunSpawnerAndWait, HandsOverTheArgumentsAsTheyAre) {
  TempDir dir;
  setShell("printf '<%s>' \"$@\" > \"$0\"");
  const std::string out = dir / "out";
  addSpawnerArg(spawner_, out.c_str());
  for (const char* text : {"a b", "", "$HOME", "\"quoted\"", "`id`"}) addSpawnerArg(spawner_, text);
  EXPECT_EQ(runSpawnerAndWait(spawner_), 0);
  EXPECT_EQ(readFile(out), "<a b><><$HOME><\"quoted\"><`id`>");
}

TEST_F(RunSpawnerAndWait, GivesTheChildTheEnvironment) {
  setenv("QUILLORY_TEST_VALUE", "42", 1);
  setShell("exit $QUILLORY_TEST_VALUE");
  EXPECT_EQ(runSpawnerAndWait(spawner_), 42);
  unsetenv("QUILLORY_TEST_VALUE");
}

TEST_F(RunSpawnerAndWait, RunsInTheDirectoryAndComesBack) {
  TempDir dir;
  const std::filesystem::path before = std::filesystem::current_path();
  setShell("pwd > here");
  EXPECT_EQ(runSpawnerAndWait(spawner_, dir.str().c_str()), 0);
  EXPECT_EQ(readFile(dir.path() / "here"), dir.str() + "\n");
  EXPECT_EQ(std::filesystem::current_path(), before);
}

TEST_F(RunSpawnerAndWait, RunsInTheCurrentDirectoryWhereTheGivenOneIsMissing) {
  const std::filesystem::path before = std::filesystem::current_path();
  setShell("exit 5");
  EXPECT_EQ(runSpawnerAndWait(spawner_, "/nonexistent/folder"), 5);
  EXPECT_TRUE(log_.contains("couldn't change to /nonexistent/folder"));
  EXPECT_EQ(std::filesystem::current_path(), before);
}

TEST_F(RunSpawnerAndWait, IsNoSuccessWhenTheEndCannotBeWaitedFor) {
  ScopedReplace wait(
      processCalls.waitFor, +[](pid_t child, int*) -> pid_t {
        waitpid(child, nullptr, 0);
        errno = ECHILD;
        return -1;
      });
  setShell("exit 0");
  EXPECT_EQ(runSpawnerAndWait(spawner_), -1);
}

}  // namespace
}  // namespace quillory
