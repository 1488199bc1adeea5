#include "support/file_modes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#include "support/new_file.h"
#include "tests/harness/captured_log.h"
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

class WithModes {
 public:
  explicit WithModes(InstallationModes modes) { chooseInstallationModes(modes); }
  ~WithModes() { chooseInstallationModes(InstallationModes::kOpenToAll); }
};

TEST(Chmod777, LogsTheCommandAndRunsNone) {
  const QuietLog log;
  const RecordedShell shell;
  const TempDir folder;
  writeFile(folder / "some where/a", "");
  EXPECT_EQ(chmod777((folder / "some where/a").c_str()), 0);
  EXPECT_EQ(modeOf(folder / "some where/a"), 0777U);
  EXPECT_THAT(shell.commands(), IsEmpty());
  EXPECT_THAT(log.messages(),
              ElementsAre("[ChMod] Executing chmod 777 \"" + (folder / "some where/a") + "\"\n"));
}

TEST(ChmodR755, LogsTheCommandAndRunsNone) {
  const QuietLog log;
  const RecordedShell shell;
  const TempDir folder;
  writeFile(folder / "some where/a", "");
  EXPECT_EQ(chmodR755((folder / "some where/a").c_str()), 0);
  EXPECT_EQ(modeOf(folder / "some where/a"), 0755U);
  EXPECT_THAT(shell.commands(), IsEmpty());
  EXPECT_THAT(log.messages(), ElementsAre("[ChMod] Executing chmod -R 755 \"" +
                                          (folder / "some where/a") + "\"\n"));
}

TEST(ChmodR755, NeedsNoProgramOfTheSystem) {
  const QuietLog log;
  const TempDir folder;
  const char* const path = getenv("PATH");
  const std::string before = path != nullptr ? path : "";
  setenv("PATH", folder.str().c_str(), 1);
  EXPECT_EQ(chmodR755(folder.str().c_str()), 0);
  setenv("PATH", before.c_str(), 1);
  EXPECT_EQ(modeOf(folder.str()), 0755U);
}

TEST(Chmod777, LogsACommandOfAnyLength) {
  const QuietLog log;
  const std::string path = "/" + std::string(6000, 'x');
  EXPECT_NE(chmod777(path.c_str()), 0);
  EXPECT_THAT(log.messages(), ElementsAre("[ChMod] Executing chmod 777 \"" + path + "\"\n"));
}

TEST(Chmod777, LeavesWritingToTheOwnerWhereThatIsChosen) {
  const WithModes modes(InstallationModes::kOwnerWrites);
  const QuietLog log;
  const TempDir folder;
  fs::create_directory(folder / "a");
  changeMode(folder / "a", 0700);
  EXPECT_EQ(installationMode(), 0755U);
  EXPECT_EQ(installationFileMode(), 0644U);
  EXPECT_EQ(chmod777((folder / "a").c_str()), 0);
  EXPECT_EQ(modeOf(folder / "a"), 0755U);
  changeMode(folder / "a", 0777);
  EXPECT_TRUE(openAsInstalled(folder / "a"));
  EXPECT_EQ(modeOf(folder / "a"), 0755U);
  EXPECT_THAT(log.messages(),
              ElementsAre("[ChMod] Executing chmod 755 \"" + (folder / "a") + "\"\n"));
}

TEST(OpenAsInstalled, OpensToEverybodyWithoutALogLine) {
  const QuietLog log;
  const TempDir folder;
  writeFile(folder / "java", "");
  EXPECT_TRUE(openAsInstalled(folder / "java"));
  EXPECT_EQ(modeOf(folder / "java"), 0777U);
  EXPECT_FALSE(openAsInstalled(folder / "missing"));
  EXPECT_THAT(log.messages(), IsEmpty());
}

TEST(Chmod777Folder, IsForFoldersThatAreNoLinks) {
  const QuietLog log;
  const TempDir folder;
  writeFile(folder / "file", "");
  fs::create_directory(folder / "folder");
  fs::create_directory_symlink("folder", folder / "link");
  changeMode(folder / "file", 0600);
  changeMode(folder / "folder", 0700);
  EXPECT_NE(chmod777Folder((folder / "file").c_str()), 0);
  EXPECT_NE(chmod777Folder((folder / "link").c_str()), 0);
  EXPECT_EQ(modeOf(folder / "file"), 0600U);
  EXPECT_EQ(modeOf(folder / "folder"), 0700U);
  EXPECT_EQ(chmod777Folder((folder / "folder").c_str()), 0);
  EXPECT_EQ(modeOf(folder / "folder"), 0777U);
}

TEST(Chmod777, FollowsALinkOfOurs) {
  const QuietLog log;
  const TempDir folder;
  writeFile(folder / "sub/file", "");
  fs::create_symlink("sub/file", folder / "link");
  fs::create_symlink(folder / "link", folder / "link of a link");
  changeMode(folder / "sub/file", 0600);
  EXPECT_EQ(chmod777((folder / "link of a link").c_str()), 0);
  EXPECT_EQ(modeOf(folder / "sub/file"), 0777U);
}

TEST(Chmod777, ComesToAnEndWithLinksThatLeadNowhere) {
  const QuietLog log;
  const TempDir folder;
  fs::create_symlink("round", folder / "round");
  fs::create_symlink("nothing", folder / "dangling");
  EXPECT_NE(chmod777((folder / "round").c_str()), 0);
  EXPECT_NE(chmod777((folder / "dangling").c_str()), 0);
}

// What another user puts into an open folder, and waits for this one to start.
class PlantedByAnother : public ::testing::Test {
 protected:
  static constexpr uid_t kAnother = 65533;

  void SetUp() override {
    if (geteuid() != 0) GTEST_SKIP() << "needs files of two users";
    writeFile(folder_ / "private", "");
    fs::create_directory(folder_ / "home");
    changeMode(folder_ / "private", 0600);
    changeMode(folder_ / "home", 0700);
  }
  void plantLink(const std::string& target, const std::string& name) {
    fs::create_symlink(target, folder_ / name);
    ASSERT_EQ(lchown((folder_ / name).c_str(), kAnother, kAnother), 0);
  }

  const QuietLog log_;
  const TempDir folder_;
};

TEST_F(PlantedByAnother, LinksAreNotFollowed) {
  plantLink("private", "java");
  plantLink("home", "bin");
  EXPECT_TRUE(isForeignLink(folder_ / "java"));
  EXPECT_NE(chmod777((folder_ / "java").c_str()), 0);
  EXPECT_NE(chmodR755((folder_ / "java").c_str()), 0);
  EXPECT_NE(chmod777Folder((folder_ / "bin").c_str()), 0);
  EXPECT_NE(chmodR755((folder_ / "bin").c_str()), 0);
  EXPECT_FALSE(openAsInstalled(folder_ / "bin"));
  EXPECT_EQ(modeOf(folder_ / "private"), 0600U);
  EXPECT_EQ(modeOf(folder_ / "home"), 0700U);
}

TEST_F(PlantedByAnother, ALinkBehindALinkOfOursIsNotFollowed) {
  plantLink("private", "planted");
  fs::create_symlink("planted", folder_ / "ours");
  EXPECT_FALSE(isForeignLink(folder_ / "ours"));
  EXPECT_NE(chmod777((folder_ / "ours").c_str()), 0);
  EXPECT_EQ(modeOf(folder_ / "private"), 0600U);
}

TEST_F(PlantedByAnother, ASecondNameOfAPrivateFileIsLeftAlone) {
  fs::create_hard_link(folder_ / "private", folder_ / "java");
  EXPECT_NE(chmod777((folder_ / "java").c_str()), 0);
  EXPECT_NE(chmodR755((folder_ / "java").c_str()), 0);
  EXPECT_EQ(modeOf(folder_ / "private"), 0600U);
  changeMode(folder_ / "private", 0777);
  EXPECT_EQ(chmod777((folder_ / "java").c_str()), 0) << "it has the mode already";
}

TEST_F(PlantedByAnother, AForeignFolderIsLeftAlone) {
  fs::create_directory(folder_ / "logs");
  changeMode(folder_ / "logs", 0700);
  ASSERT_EQ(chown((folder_ / "logs").c_str(), kAnother, kAnother), 0);
  EXPECT_NE(chmod777Folder((folder_ / "logs").c_str()), 0);
  EXPECT_NE(chmod777((folder_ / "logs").c_str()), 0);
  EXPECT_NE(chmodR755((folder_ / "logs").c_str()), 0);
  EXPECT_EQ(modeOf(folder_ / "logs"), 0700U);
}

TEST_F(PlantedByAnother, ALinkOfTheAdministratorIsFollowed) {
  plantLink("private", "link");
  ASSERT_EQ(chown((folder_ / "private").c_str(), kAnother, kAnother), 0);
  ASSERT_EQ(lchown((folder_ / "link").c_str(), 0, 0), 0);
  ASSERT_EQ(chmod(folder_.str().c_str(), 0755), 0);
  ASSERT_EQ(seteuid(kAnother), 0);
  EXPECT_FALSE(isForeignLink(folder_ / "link"));
  EXPECT_EQ(chmod777((folder_ / "link").c_str()), 0);
  ASSERT_EQ(seteuid(0), 0);
  EXPECT_EQ(modeOf(folder_ / "private"), 0777U);
}

TEST(MayBeUsed, AsksOnlyWhereThatIsChosen) {
  const TempDir folder;
  fs::create_directory(folder / "open");
  changeMode(folder / "open", 0777);
  EXPECT_TRUE(mayBeUsed(folder / "open"));
  EXPECT_TRUE(mayBeUsed(folder / "missing"));
  const WithModes modes(InstallationModes::kOnlyTrustedAreUsed);
  EXPECT_EQ(installationMode(), 0755U);
  EXPECT_FALSE(mayBeUsed(folder / "open"));
  EXPECT_FALSE(mayBeUsed(folder / "missing"));
}

TEST(MayBeUsed, IsForFoldersThatNobodyElseWrites) {
  const WithModes modes(InstallationModes::kOnlyTrustedAreUsed);
  const TempDir folder;
  fs::create_directory(folder / "a");
  fs::create_directory_symlink("a", folder / "link");
  writeFile(folder / "file", "");
  for (const mode_t safe : {0755, 0700, 0555, 01755}) {
    changeMode(folder / "a", safe);
    EXPECT_TRUE(mayBeUsed(folder / "a")) << std::oct << safe;
  }
  for (const mode_t open : {0775, 0757, 0777, 01777}) {
    changeMode(folder / "a", open);
    EXPECT_FALSE(mayBeUsed(folder / "a")) << std::oct << open;
  }
  changeMode(folder / "a", 0755);
  EXPECT_FALSE(mayBeUsed(folder / "link"));
  EXPECT_FALSE(mayBeUsed(folder / "file"));
}

TEST_F(PlantedByAnother, AFolderIsNotUsed) {
  const WithModes modes(InstallationModes::kOnlyTrustedAreUsed);
  fs::create_directory(folder_ / "Quillory-Quillory-999-complete");
  changeMode(folder_ / "Quillory-Quillory-999-complete", 0755);
  EXPECT_TRUE(mayBeUsed(folder_ / "Quillory-Quillory-999-complete"));
  ASSERT_EQ(chown((folder_ / "Quillory-Quillory-999-complete").c_str(), kAnother, kAnother), 0);
  EXPECT_FALSE(mayBeUsed(folder_ / "Quillory-Quillory-999-complete"));
}

TEST(Chmod777, LeavesTheGroupBitOfAFolder) {
  const QuietLog log;
  const TempDir folder;
  fs::create_directory(folder / "a");
  changeMode(folder / "a", 02700);
  EXPECT_EQ(chmod777((folder / "a").c_str()), 0);
  EXPECT_EQ(modeOf(folder / "a"), 02777U);
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

TEST(Chmod777, HandlesAnAwkwardName) {
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

TEST(ChmodR755, HandlesAnAwkwardNameAndFollowsNoLinkInTheTree) {
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

TEST(ChmodR755, HandlesASingleFileToo) {
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

// The same as of a command that ended with status 1.
TEST(Chmod777, TellsAFailureAsTheCommandDoes) {
  const QuietLog log;
  const TempDir folder;
  const int status = chmod777((folder / "missing").c_str());
  EXPECT_EQ(WEXITSTATUS(status), 1);
  EXPECT_EQ(chmod777((folder / "$missing").c_str()), status);
  EXPECT_EQ(chmodR755((folder / "$missing").c_str()), status);
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

TEST(ChmodR755, OpensAFileThatIsBeingWritten) {
  const TempDir folder;
  const testing::CapturedLog log;
  const std::string path = folder / "file";
  {
    NewFile file(path);
    file.write("x", 1);
    EXPECT_EQ(chmodR755(file), 0);
    EXPECT_TRUE(file.close());
    EXPECT_NE(chmodR755(file), 0) << "closed";
  }
  EXPECT_EQ(modeOf(path), 0755U);
  EXPECT_EQ(log.messages()[0], "[ChMod] Executing chmod -R 755 \"" + path + "\"\n");
}

TEST(ChmodR755, LeavesAFileOfTwoNamesAlone) {
  const TempDir folder;
  const QuietLog log;
  writeFile(folder / "private", "secret");
  fs::permissions(folder / "private", fs::perms{0600});
  fs::create_hard_link(folder / "private", folder / "planted");
  NewFile file(folder / "planted", NewFile::Existing::kRewritten);
  EXPECT_NE(chmodR755(file), 0);
  EXPECT_TRUE(file.close());
  EXPECT_EQ(modeOf(folder / "private"), 0600U);
}

}  // namespace
}  // namespace quillory
