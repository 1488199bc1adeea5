#include "support/files.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <string>

#include "support/platform.h"
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
using testing::readFile;
using testing::RecordedShell;
using testing::ScopedReplace;
using testing::TempDir;
using testing::writeFile;

TEST(DeleteFolder, EmptiesTheFolderFromTheInsideAndLeavesItInPlace) {
  const QuietLog log;
  const TempDir folder;
  const std::string top = folder / "top";
  writeFile(top + "/a/b/c.txt", "");
  EXPECT_EQ(deleteFolder(top.c_str()), 0);
  EXPECT_TRUE(fs::is_directory(top));
  EXPECT_TRUE(fs::is_empty(top));
  EXPECT_THAT(log.messages(),
              ElementsAre("Deleting DIR " + top + "/a\n", "Deleting DIR " + top + "/a/b\n",
                          "Deleting FILE " + top + "/a/b/c.txt\n"));
}

TEST(DeleteFolder, ReturnsZeroForAnEmptyFolder) {
  const QuietLog log;
  const TempDir folder;
  EXPECT_EQ(deleteFolder(folder.str().c_str()), 0);
  EXPECT_THAT(log.messages(), IsEmpty());
}

TEST(DeleteFolder, DoublesNoSeparator) {
  const QuietLog log;
  const TempDir folder;
  writeFile(folder / "file", "");
  EXPECT_EQ(deleteFolder((folder.str() + "/").c_str()), 0);
  EXPECT_THAT(log.messages(), ElementsAre("Deleting FILE " + (folder / "file") + "\n"));
}

TEST(DeleteFolder, LeavesATwoByteDotNameAndSoTheFoldersAboveIt) {
  const QuietLog log;
  const TempDir folder;
  writeFile(folder / ".x", "kept");
  writeFile(folder / "sub/.x", "kept");
  writeFile(folder / ".DS_Store", "");
  EXPECT_EQ(deleteFolder(folder.str().c_str()), 0);
  EXPECT_EQ(readFile(folder / ".x"), "kept");
  EXPECT_EQ(readFile(folder / "sub/.x"), "kept");
  EXPECT_FALSE(fs::exists(folder / ".DS_Store"));
}

TEST(DeleteFolder, FailsForWhatCannotBeOpened) {
  const QuietLog log;
  const TempDir folder;
  writeFile(folder / "file", "kept");
  EXPECT_EQ(deleteFolder((folder / "missing").c_str()), 1);
  EXPECT_EQ(deleteFolder((folder / "file").c_str()), 1);
  EXPECT_THAT(log.messages(),
              ElementsAre("[DeleteFolder] Deleting from '" + (folder / "missing") + "' is NULL\n",
                          "[DeleteFolder] Deleting from '" + (folder / "file") + "' is NULL\n"));
  EXPECT_EQ(readFile(folder / "file"), "kept");
}

TEST(DeleteFolder, RemovesLinksAndNotWhatTheyPointTo) {
  const QuietLog log;
  const TempDir folder;
  writeFile(folder / "outside/file", "kept");
  fs::create_directory(folder / "top");
  fs::create_directory_symlink(folder / "outside", folder / "top/folder");
  fs::create_symlink(folder / "outside/file", folder / "top/file");
  fs::create_symlink("nowhere", folder / "top/dangling");
  EXPECT_EQ(deleteFolder((folder / "top").c_str()), 0);
  EXPECT_TRUE(fs::is_empty(folder / "top"));
  EXPECT_EQ(readFile(folder / "outside/file"), "kept");
  EXPECT_TRUE(log.contains("Deleting FILE " + (folder / "top/folder") + "\n"));
}

TEST(DeleteFolder, DoesNotEmptyAFolderThroughALink) {
  const QuietLog log;
  const TempDir folder;
  writeFile(folder / "outside/file", "kept");
  fs::create_directory_symlink(folder / "outside", folder / "link");
  EXPECT_EQ(deleteFolder((folder / "link").c_str()), 1);
  EXPECT_EQ(readFile(folder / "outside/file"), "kept");
}

// Another user can exchange a folder for a link between any two steps; here at the first line of a
// file in it.
TEST(DeleteFolder, FollowsNoLinkThatTakesTheFoldersPlaceMeanwhile) {
  const QuietLog log;
  const TempDir folder;
  static std::string sub, aside, precious;
  sub = folder / "top/sub";
  aside = folder / "aside";
  precious = folder / "precious";
  for (const std::string& place : {sub, precious})
    for (const char* name : {"a", "b", "c"}) writeFile(place + '/' + name, "kept");
  const ScopedReplace exchange(
      platformCalls.systemLog, +[](const char* message) {
        if (!std::string(message).starts_with("Deleting FILE " + sub) || fs::exists(aside)) return;
        fs::rename(sub, aside);
        fs::create_directory_symlink(precious, sub);
      });
  EXPECT_EQ(deleteFolder((folder / "top").c_str()), 0);
  EXPECT_TRUE(fs::exists(aside));
  for (const char* name : {"a", "b", "c"}) EXPECT_TRUE(fs::exists(precious + '/' + name)) << name;
}

TEST(DeleteFolder, GoesOnBehindAFileThatCannotBeRemoved) {
  const QuietLog log;
  const AsOrdinaryUser user;
  const TempDir folder;
  writeFile(folder / "locked/file", "kept");
  writeFile(folder / "other/file", "");
  fs::permissions(folder / "locked", fs::perms::owner_read | fs::perms::owner_exec);
  EXPECT_EQ(deleteFolder(folder.str().c_str()), 0);
  EXPECT_TRUE(log.contains("Failed to delete file " + (folder / "locked/file") + "\n"));
  EXPECT_EQ(readFile(folder / "locked/file"), "kept");
  EXPECT_FALSE(fs::exists(folder / "other"));
}

TEST(DeleteFolder, TakesAFolderThatCannotBeOpenedForAFile) {
  const QuietLog log;
  const AsOrdinaryUser user;
  const TempDir folder;
  writeFile(folder / "closed/file", "");
  fs::permissions(folder / "closed", fs::perms::none);
  EXPECT_EQ(deleteFolder(folder.str().c_str()), 0);
  EXPECT_THAT(log.messages(), ElementsAre("Deleting FILE " + (folder / "closed") + "\n",
                                          "Failed to delete file " + (folder / "closed") + "\n"));
}

// No more than this many files may be open while it lives.
class OpenFilesLimit {
 public:
  explicit OpenFilesLimit(rlim_t count) {
    getrlimit(RLIMIT_NOFILE, &before_);
    const rlimit limited{count, before_.rlim_max};
    setrlimit(RLIMIT_NOFILE, &limited);
  }
  ~OpenFilesLimit() { setrlimit(RLIMIT_NOFILE, &before_); }

 private:
  rlimit before_{};
};

TEST(DeleteFolder, GoesDeeperThanFilesMayBeOpen) {
  const QuietLog log;
  const TempDir folder;
  std::string level = folder / "top";
  for (int depth = 0; depth < 200; ++depth, level += "/d") ASSERT_EQ(mkdir(level.c_str(), 0700), 0);
  const OpenFilesLimit limit(50);
  EXPECT_EQ(deleteFolder((folder / "top").c_str()), 0);
  EXPECT_TRUE(fs::is_empty(folder / "top"));
}

TEST(RemoveTree, RemovesEverythingWithoutALogLine) {
  const QuietLog log;
  const TempDir folder;
  writeFile(folder / "top/sub/.x", "");
  writeFile(folder / "outside", "kept");
  fs::create_symlink(folder / "outside", folder / "top/link");
  EXPECT_TRUE(removeTree(folder / "top"));
  EXPECT_FALSE(fs::exists(folder / "top"));
  EXPECT_EQ(readFile(folder / "outside"), "kept");
  EXPECT_THAT(log.messages(), IsEmpty());
}

TEST(RemoveTree, RemovesALinkAndNotWhatItPointsTo) {
  const TempDir folder;
  writeFile(folder / "outside/file", "kept");
  fs::create_directory_symlink(folder / "outside", folder / "link");
  EXPECT_TRUE(removeTree(folder / "link"));
  EXPECT_FALSE(fs::is_symlink(folder / "link"));
  EXPECT_EQ(readFile(folder / "outside/file"), "kept");
}

TEST(RemoveTree, IsTrueWhereNothingIs) {
  const TempDir folder;
  EXPECT_TRUE(removeTree(folder / "missing"));
}

TEST(RemoveTree, IsFalseWhenSomethingIsLeft) {
  const AsOrdinaryUser user;
  const TempDir folder;
  writeFile(folder / "locked/file", "");
  fs::permissions(folder / "locked", fs::perms::owner_read | fs::perms::owner_exec);
  EXPECT_FALSE(removeTree(folder / "locked"));
}

TEST(MakeDir, RunsNoShellForAFolderThatExists) {
  const QuietLog log;
  const RecordedShell shell;
  const TempDir folder;
  EXPECT_EQ(makeDir(folder.str().c_str()), 0);
  EXPECT_THAT(shell.commands(), IsEmpty());
  EXPECT_THAT(log.messages(), IsEmpty());
}

TEST(MakeDir, OpensTheNewFolderToEverybodyWhateverTheUmask) {
  const QuietLog log;
  const TempDir folder;
  const mode_t before = umask(077);
  EXPECT_EQ(makeDir((folder / "new").c_str()), 0);
  umask(before);
  EXPECT_EQ(modeOf(folder / "new"), 0777U);
  EXPECT_THAT(log.messages(),
              ElementsAre("[ChMod] Executing chmod 777 \"" + (folder / "new") + "\"\n"));
}

TEST(MakeDir, MakesAFolderWithAnAwkwardName) {
  const QuietLog log;
  const TempDir folder;
  const mode_t before = umask(077);
  EXPECT_EQ(makeDir((folder / "$HOME \"x\"").c_str()), 0);
  umask(before);
  EXPECT_EQ(modeOf(folder / "$HOME \"x\""), 0777U);
}

TEST(MakeDir, MakesOneLevelOnly) {
  const QuietLog log;
  const RecordedShell shell;
  const TempDir folder;
  EXPECT_EQ(makeDir((folder / "a/b").c_str()), -1);
  EXPECT_FALSE(fs::exists(folder / "a"));
}

// What is there is no folder, and may be anybody's: only the line is as for a new folder.
TEST(MakeDir, ReturnsTheFailureAndLeavesAFileAsItIs) {
  const QuietLog log;
  const TempDir folder;
  writeFile(folder / "file", "");
  fs::permissions(folder / "file", fs::perms::owner_read);
  EXPECT_EQ(makeDir((folder / "file").c_str()), -1);
  EXPECT_EQ(modeOf(folder / "file"), 0400U);
  EXPECT_THAT(log.messages(),
              ElementsAre("[ChMod] Executing chmod 777 \"" + (folder / "file") + "\"\n"));
}

TEST(MakeDir, OpensAFolderOfOursThatIsClosed) {
  const QuietLog log;
  const AsOrdinaryUser user;
  const TempDir folder;
  fs::create_directory(folder / "closed");
  fs::permissions(folder / "closed", fs::perms::none);
  EXPECT_EQ(makeDir((folder / "closed").c_str()), -1);
  EXPECT_EQ(modeOf(folder / "closed"), 0777U);
}

TEST(MakeDir, ChangesNothingBehindALinkToAFile) {
  const QuietLog log;
  const TempDir folder;
  writeFile(folder / "private", "");
  fs::permissions(folder / "private", fs::perms::owner_read);
  fs::create_symlink("private", folder / "QYAppsSharedConfig");
  EXPECT_EQ(makeDir((folder / "QYAppsSharedConfig").c_str()), -1);
  EXPECT_EQ(modeOf(folder / "private"), 0400U);
}

TEST(MakeDir, TakesALinkOfOursToAFolderForTheFolder) {
  const QuietLog log;
  const TempDir folder;
  fs::create_directory(folder / "elsewhere");
  fs::permissions(folder / "elsewhere", fs::perms::owner_all);
  fs::create_directory_symlink("elsewhere", folder / "logs");
  EXPECT_EQ(makeDir((folder / "logs").c_str()), 0);
  EXPECT_EQ(modeOf(folder / "elsewhere"), 0700U);
  EXPECT_THAT(log.messages(), IsEmpty());
}

TEST(MakeDir, RefusesALinkOfAnotherUser) {
  const QuietLog log;
  const TempDir folder;
  if (geteuid() != 0) GTEST_SKIP() << "needs files of two users";
  fs::create_directory_symlink(".", folder / "logs");
  ASSERT_EQ(lchown((folder / "logs").c_str(), 65533, 65533), 0);
  EXPECT_EQ(makeDir((folder / "logs").c_str()), -1);
  EXPECT_THAT(log.messages(), ElementsAre("[Extractor] The link " + (folder / "logs") +
                                          " belongs to another user: it is not followed\n"));
}

TEST(MakeNewDir, MakesAFolderAsMakeDirDoes) {
  const QuietLog log;
  const TempDir folder;
  const mode_t before = umask(077);
  EXPECT_EQ(makeNewDir((folder / "new").c_str()), 0);
  umask(before);
  EXPECT_EQ(modeOf(folder / "new"), 0777U);
  EXPECT_THAT(log.messages(),
              ElementsAre("[ChMod] Executing chmod 777 \"" + (folder / "new") + "\"\n"));
}

TEST(MakeNewDir, FailsWhereAnythingStands) {
  const QuietLog log;
  const TempDir folder;
  writeFile(folder / "file", "");
  fs::create_directory(folder / "folder");
  fs::create_directory_symlink("folder", folder / "link");
  fs::create_symlink("nowhere", folder / "dangling");
  for (const char* there : {"file", "folder", "link", "dangling"})
    EXPECT_EQ(makeNewDir((folder / there).c_str()), -1) << there;
  EXPECT_FALSE(fs::exists(folder / "nowhere"));
  EXPECT_THAT(log.messages(), IsEmpty());
}

TEST(MakeDirWithParents, MakesEveryMissingLevelAsTheSystemWould) {
  const QuietLog log;
  const TempDir folder;
  const mode_t before = umask(022);
  EXPECT_TRUE(makeDirWithParents(folder / "a/b c/d"));
  EXPECT_TRUE(makeDirWithParents(folder / "private", 0700));
  umask(before);
  for (const char* made : {"a", "a/b c", "a/b c/d"}) EXPECT_EQ(modeOf(folder / made), 0755U);
  EXPECT_EQ(modeOf(folder / "private"), 0700U);
  EXPECT_THAT(log.messages(), ElementsAre("[Extractor] Created " + (folder / "a") + "\n",
                                          "[Extractor] Created " + (folder / "a/b c") + "\n",
                                          "[Extractor] Created " + (folder / "a/b c/d") + "\n",
                                          "[Extractor] Created " + (folder / "private") + "\n"));
}

TEST(MakeDirWithParents, OpensToNobodyWhatTheUmaskCloses) {
  const QuietLog log;
  const TempDir folder;
  const mode_t before = umask(077);
  EXPECT_TRUE(makeDirWithParents(folder / "a/b"));
  umask(before);
  for (const char* made : {"a", "a/b"}) EXPECT_EQ(modeOf(folder / made), 0700U);
}

TEST(MakeDirWithParents, LeavesExistingFoldersAsTheyAre) {
  const QuietLog log;
  const TempDir folder;
  fs::create_directory(folder / "a");
  fs::permissions(folder / "a", fs::perms::owner_all);
  EXPECT_TRUE(makeDirWithParents(folder / "a/b"));
  EXPECT_EQ(modeOf(folder / "a"), 0700U);
  EXPECT_TRUE(makeDirWithParents(folder / "a/b"));
}

TEST(MakeDirWithParents, TakesATrailingSlash) {
  const QuietLog log;
  const TempDir folder;
  EXPECT_TRUE(makeDirWithParents(folder / "a/b/"));
  EXPECT_TRUE(fs::is_directory(folder / "a/b"));
}

TEST(MakeDirWithParents, FailsBehindAFileThatIsInTheWay) {
  const QuietLog log;
  const RecordedShell shell;
  const TempDir folder;
  writeFile(folder / "file", "");
  EXPECT_FALSE(makeDirWithParents(folder / "file/a/b"));
  EXPECT_FALSE(makeDirWithParents(""));
}

TEST(DoesFileExist, IsTrueAndLoggedForWhatCanBeOpened) {
  const QuietLog log;
  const TempDir folder;
  writeFile(folder / "file", "");
  EXPECT_TRUE(doesFileExist((folder / "file").c_str()));
  EXPECT_TRUE(doesFileExist(folder.str().c_str()));
  EXPECT_THAT(log.messages(), ElementsAre("File exists: " + (folder / "file") + "\n",
                                          "File exists: " + folder.str() + "\n"));
}

TEST(DoesFileExist, IsFalseWithoutALogLineOtherwise) {
  const QuietLog log;
  const AsOrdinaryUser user;
  const TempDir folder;
  writeFile(folder / "closed", "");
  fs::permissions(folder / "closed", fs::perms::none);
  fs::create_symlink("nowhere", folder / "dangling");
  EXPECT_FALSE(doesFileExist((folder / "missing").c_str()));
  EXPECT_FALSE(doesFileExist((folder / "closed").c_str()));
  EXPECT_FALSE(doesFileExist((folder / "dangling").c_str()));
  EXPECT_FALSE(doesFileExist(""));
  EXPECT_THAT(log.messages(), IsEmpty());
}

TEST(IsFolder, IsTrueForFoldersAndLinksToThem) {
  const QuietLog log;
  const TempDir folder;
  writeFile(folder / "file", "");
  fs::create_directory_symlink(folder.path(), folder / "link");
  EXPECT_TRUE(isFolder(folder.str()));
  EXPECT_TRUE(isFolder(folder / "link"));
  EXPECT_FALSE(isFolder(folder / "file"));
  EXPECT_FALSE(isFolder(folder / "missing"));
  EXPECT_THAT(log.messages(), IsEmpty());
}

TEST(IsRealFolder, IsTrueForNoLinkAndForAFolderThatIsClosed) {
  const QuietLog log;
  const TempDir folder;
  writeFile(folder / "file", "");
  fs::create_directory_symlink(folder.path(), folder / "link");
  fs::create_directory(folder / "closed");
  fs::permissions(folder / "closed", fs::perms::none);
  EXPECT_TRUE(isRealFolder(folder.str()));
  EXPECT_TRUE(isRealFolder(folder / "closed"));
  EXPECT_FALSE(isRealFolder(folder / "link"));
  EXPECT_FALSE(isRealFolder(folder / "file"));
  EXPECT_FALSE(isRealFolder(folder / "missing"));
  EXPECT_THAT(log.messages(), IsEmpty());
}

}  // namespace
}  // namespace quillory
