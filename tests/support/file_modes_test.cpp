#include "support/file_modes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <filesystem>
#include <string>

#include "tests/harness/scoped_replace.h"
#include "tests/harness/temp_dir.h"
#include "tests/support/ordinary_user.h"
#include "tests/support/quiet_log.h"
#include "tests/support/recorded_shell.h"

namespace quillory {
namespace {

namespace fs = std::filesystem;
using testing::AsOrdinaryUser;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using testing::modeOf;
using testing::QuietLog;
using testing::RecordedShell;
using testing::TempDir;
using testing::writeFile;

// Names that a shell would read as something else, between double quotes or as an option.
constexpr const char* kAwkwardNames[] = {"a\"b",        "$HOME", "$(touch hit)",
                                         "`touch hit`", "a\\",   "\";touch hit;\""};

void changeMode(const std::string& path, mode_t mode) { ASSERT_EQ(chmod(path.c_str(), mode), 0); }

TEST(Chmod777, RunsTheCommandInTheShellAndLogsIt) {
  const QuietLog log;
  const RecordedShell shell;
  EXPECT_EQ(chmod777("/some where/a"), 0);
  EXPECT_THAT(shell.commands(), ElementsAre("chmod 777 \"/some where/a\""));
  EXPECT_THAT(log.messages(), ElementsAre("[ChMod] Executing chmod 777 \"/some where/a\"\n"));
}

TEST(ChmodR755, RunsTheCommandInTheShellAndLogsIt) {
  const QuietLog log;
  const RecordedShell shell;
  EXPECT_EQ(chmodR755("/some where/a"), 0);
  EXPECT_THAT(shell.commands(), ElementsAre("chmod -R 755 \"/some where/a\""));
  EXPECT_THAT(log.messages(), ElementsAre("[ChMod] Executing chmod -R 755 \"/some where/a\"\n"));
}

TEST(Chmod777, ReturnsTheStatusOfTheCommand) {
  const QuietLog log;
  const RecordedShell shell(42 << 8);
  EXPECT_EQ(chmod777("/a"), 42 << 8);
  EXPECT_EQ(chmodR755("/a"), 42 << 8);
}

TEST(Chmod777, RunsACommandOfAnyLength) {
  const QuietLog log;
  const RecordedShell shell;
  const std::string path = "/" + std::string(6000, 'x');
  chmod777(path.c_str());
  EXPECT_THAT(shell.commands(), ElementsAre("chmod 777 \"" + path + "\""));
}

TEST(Chmod777, OpensAFolderToEverybody) {
  const QuietLog log;
  const TempDir folder;
  fs::create_directory(folder / "it's (a) folder & more");
  changeMode(folder / "it's (a) folder & more", 0700);
  EXPECT_EQ(chmod777((folder / "it's (a) folder & more").c_str()), 0);
  EXPECT_EQ(modeOf(folder / "it's (a) folder & more"), 0777U);
}

void makeTree(const std::string& top) {
  writeFile(top + "/sub/file", "");
  fs::create_symlink("../../outside", top + "/sub/link");
  changeMode(top + "/sub/file", 0600);
  changeMode(top + "/sub", 0700);
  changeMode(top, 0700);
}

TEST(ChmodR755, MakesTheWholeTreeReadableAndExecutable) {
  const QuietLog log;
  const TempDir folder;
  makeTree(folder / "top");
  EXPECT_EQ(chmodR755((folder / "top").c_str()), 0);
  EXPECT_EQ(modeOf(folder / "top"), 0755U);
  EXPECT_EQ(modeOf(folder / "top/sub"), 0755U);
  EXPECT_EQ(modeOf(folder / "top/sub/file"), 0755U);
}

TEST(Chmod777, HandlesAnAwkwardNameWithoutAShellAndLogsTheSameLine) {
  for (const std::string name : kAwkwardNames) {
    SCOPED_TRACE(name);
    const QuietLog log;
    const RecordedShell shell;
    const TempDir folder;
    const std::string path = folder / name;
    fs::create_directory(path);
    changeMode(path, 0700);
    EXPECT_EQ(chmod777(path.c_str()), 0);
    EXPECT_EQ(modeOf(path), 0777U);
    EXPECT_THAT(shell.commands(), IsEmpty());
    EXPECT_THAT(log.messages(), ElementsAre("[ChMod] Executing chmod 777 \"" + path + "\"\n"));
  }
}

TEST(ChmodR755, HandlesAnAwkwardNameWithoutAShellAndFollowsNoLinkInTheTree) {
  for (const std::string name : kAwkwardNames) {
    SCOPED_TRACE(name);
    const QuietLog log;
    const RecordedShell shell;
    const TempDir folder;
    const std::string path = folder / name;
    makeTree(path);
    writeFile(folder / "outside", "");
    changeMode(folder / "outside", 0600);
    EXPECT_EQ(chmodR755(path.c_str()), 0);
    EXPECT_EQ(modeOf(path), 0755U);
    EXPECT_EQ(modeOf(path + "/sub"), 0755U);
    EXPECT_EQ(modeOf(path + "/sub/file"), 0755U);
    EXPECT_EQ(modeOf(folder / "outside"), 0600U);
    EXPECT_THAT(shell.commands(), IsEmpty());
    EXPECT_THAT(log.messages(), ElementsAre("[ChMod] Executing chmod -R 755 \"" + path + "\"\n"));
  }
}

TEST(ChmodR755, HandlesASingleFileWithoutAShellToo) {
  const QuietLog log;
  const TempDir folder;
  writeFile(folder / "$file", "");
  EXPECT_EQ(chmodR755((folder / "$file").c_str()), 0);
  EXPECT_EQ(modeOf(folder / "$file"), 0755U);
}

TEST(ChmodR755, EntersAFolderThatItHasJustOpened) {
  const QuietLog log;
  const AsOrdinaryUser user;
  const TempDir folder;
  makeTree(folder / "$top");
  changeMode(folder / "$top/sub", 0);
  EXPECT_EQ(chmodR755((folder / "$top").c_str()), 0);
  EXPECT_EQ(modeOf(folder / "$top/sub/file"), 0755U);
}

TEST(Chmod777, DoesNotTakeAPathForAnOption) {
  const QuietLog log;
  const RecordedShell shell;
  EXPECT_NE(chmod777("--reference=/etc/passwd"), 0);
  EXPECT_THAT(shell.commands(), IsEmpty());
}

// The same as of a command that ended with status 1, whether or not a shell was used.
TEST(Chmod777, TellsAFailureAsTheCommandDoes) {
  const QuietLog log;
  const TempDir folder;
  ::testing::internal::CaptureStderr();  // chmod complains there
  const int byShell = chmod777((folder / "missing").c_str());
  EXPECT_NE(::testing::internal::GetCapturedStderr(), "");
  EXPECT_EQ(WEXITSTATUS(byShell), 1);
  EXPECT_EQ(chmod777((folder / "$missing").c_str()), byShell);
  EXPECT_EQ(chmodR755((folder / "$missing").c_str()), byShell);
}

TEST(ChmodR755, GoesOnBehindAFailureButTellsIt) {
  const QuietLog log;
  const TempDir folder;
  makeTree(folder / "$top");
  if (geteuid() != 0) GTEST_SKIP() << "needs files of two users";
  ASSERT_EQ(chmod(folder.str().c_str(), 0755), 0);
  ASSERT_EQ(chown((folder / "$top").c_str(), 65534, 65534), 0);
  ASSERT_EQ(chown((folder / "$top/sub").c_str(), 65534, 65534), 0);
  writeFile(folder / "$top/mine", "");
  changeMode(folder / "$top/mine", 0600);
  const AsOrdinaryUser user;  // who owns the folders, but neither of the files
  EXPECT_EQ(WEXITSTATUS(chmodR755((folder / "$top").c_str())), 1);
  EXPECT_EQ(modeOf(folder / "$top/sub"), 0755U);
  EXPECT_EQ(modeOf(folder / "$top/mine"), 0600U);
}

}  // namespace
}  // namespace quillory
