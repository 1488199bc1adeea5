// doRename() of support/files.cpp: the ladder from a rename down to a copy.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <string>
#include <vector>

#include "support/clock.h"
#include "support/files.h"
#include "support/platform.h"
#include "tests/harness/scoped_replace.h"
#include "tests/harness/temp_dir.h"
#include "tests/support/quiet_log.h"

namespace quillory {
namespace {

namespace fs = std::filesystem;
using testing::QuietLog;
using testing::readFile;
using testing::ScopedReplace;
using testing::TempDir;
using testing::writeFile;

// What the file manager and the clock are asked, and what the file manager does at its n-th call.
struct Rescue {
  int atCall = 0;  ///< 0: never
  void (*action)() = nullptr;
  bool moves = false;
};
Rescue rescue;
int movesAsked = 0;
std::vector<std::uint64_t> waits;
std::string missingParent;

bool askedToMove(const char*, const char*, std::string& error) {
  if (++movesAsked == rescue.atCall) {
    if (rescue.action != nullptr) rescue.action();
    if (rescue.moves) return true;
  }
  error = "it is not to be moved";
  return false;
}

class DoRename : public ::testing::Test {
 protected:
  DoRename() {
    rescue = {};
    movesAsked = 0;
    waits.clear();
  }

  std::string renamed() const { return "[Rename] File '" + old_ + "' renamed to '" + new_ + "'\n"; }
  std::string failedWith(int error) const {
    return "[Rename] Could not rename '" + old_ + "' to '" + new_ + "' [" + std::to_string(error) +
           "]\n";
  }
  std::string attemptsFailingWith(int error, int count) const {
    std::string text;
    for (int i = 0; i < count; ++i)
      text += failedWith(error) + "[Rename] Unable to move item: it is not to be moved";
    return text;
  }
  void rename() { doRename(old_.c_str(), new_.c_str()); }
  void pointIntoAMissingFolder() {
    missingParent = folder_ / "parent";
    new_ = missingParent + "/new";
  }

  const TempDir folder_;
  const std::string workingDir_ =
      "[Extractor] Working dir is '" + fs::current_path().string() + "'\n";
  std::string old_ = folder_ / "old";
  std::string new_ = folder_ / "new";
  const ScopedReplace<decltype(platformCalls.moveItem)> move_{platformCalls.moveItem, askedToMove};
  const ScopedReplace<decltype(timeCalls.sleepMicros)> sleep_{
      timeCalls.sleepMicros, +[](std::uint64_t micros) { waits.push_back(micros); }};
  const QuietLog log_;
};

TEST_F(DoRename, MovesAFolderIntoPlaceAtOnce) {
  writeFile(old_ + "/file", "content");
  rename();
  EXPECT_FALSE(fs::exists(old_));
  EXPECT_EQ(readFile(new_ + "/file"), "content");
  EXPECT_EQ(log_.text(), workingDir_ + renamed());
  EXPECT_TRUE(waits.empty());
}

TEST_F(DoRename, EmptiesAnExistingFolderFirst) {
  writeFile(old_ + "/file", "new content");
  writeFile(new_ + "/sub/other", "old content");
  rename();
  EXPECT_EQ(log_.text(), workingDir_ + "File exists: " + new_ + "\n" +
                             "[Rename] The target already exists. Deleting.\n" + "Deleting DIR " +
                             new_ + "/sub\n" + "Deleting FILE " + new_ + "/sub/other\n" +
                             renamed());
  EXPECT_EQ(readFile(new_ + "/file"), "new content");
  EXPECT_FALSE(fs::exists(new_ + "/sub"));
  EXPECT_FALSE(fs::exists(old_));
}

TEST_F(DoRename, ReplacesAnExistingFile) {
  writeFile(old_, "new content");
  writeFile(new_, "old content");
  rename();
  EXPECT_EQ(readFile(new_), "new content");
  EXPECT_EQ(log_.text(), workingDir_ + "File exists: " + new_ + "\n" +
                             "[Rename] The target already exists. Deleting.\n" +
                             "[DeleteFolder] Deleting from '" + new_ + "' is NULL\n" + renamed());
}

TEST_F(DoRename, ReplacesALinkAndKeepsWhatItPointsTo) {
  writeFile(old_ + "/file", "new content");
  writeFile(folder_ / "outside/file", "kept");
  fs::create_directory_symlink(folder_ / "outside", new_);
  rename();
  EXPECT_FALSE(fs::is_symlink(new_));
  EXPECT_EQ(readFile(new_ + "/file"), "new content");
  EXPECT_EQ(readFile(folder_ / "outside/file"), "kept");
  EXPECT_TRUE(waits.empty());
}

TEST_F(DoRename, ReplacesADanglingLink) {
  writeFile(old_ + "/file", "new content");
  fs::create_symlink("nowhere", new_);
  rename();
  EXPECT_EQ(readFile(new_ + "/file"), "new content");
  EXPECT_EQ(log_.text(), workingDir_ + "Deleting FILE " + new_ + "\n" + renamed());
}

TEST_F(DoRename, MovesALinkItself) {
  fs::create_symlink("nowhere", old_);
  rename();
  EXPECT_EQ(fs::read_symlink(new_), "nowhere");
}

TEST_F(DoRename, LeavesItToTheFileManagerWhenARenameFails) {
  pointIntoAMissingFolder();
  writeFile(old_, "");
  rescue = {1, nullptr, true};
  rename();
  EXPECT_EQ(log_.text(),
            workingDir_ + failedWith(ENOENT) + "[Rename] OSX Rename worked.\n" + renamed());
  EXPECT_EQ(movesAsked, 1);
  EXPECT_TRUE(waits.empty());
}

TEST_F(DoRename, TriesAgainUntilTheRenameWorks) {
  pointIntoAMissingFolder();
  writeFile(old_, "content");
  rescue = {3, [] { fs::create_directory(missingParent); }, false};
  rename();
  EXPECT_EQ(log_.text(), workingDir_ + attemptsFailingWith(ENOENT, 3) + renamed());
  EXPECT_EQ(waits, std::vector<std::uint64_t>(3, 300000));
  EXPECT_EQ(readFile(new_), "content");
}

TEST_F(DoRename, TakesARenameThatWorksAtTheLastAttempt) {
  pointIntoAMissingFolder();
  writeFile(old_, "content");
  rescue = {10, [] { fs::create_directory(missingParent); }, false};
  rename();
  EXPECT_EQ(log_.text(), workingDir_ + attemptsFailingWith(ENOENT, 10) + renamed());
  EXPECT_EQ(waits.size(), 10U);
}

// A folder that still holds a two-byte dot name is not empty.
TEST_F(DoRename, CopiesAfterTenAttemptsAndKeepsTheOldFolder) {
  writeFile(old_ + "/file", "content");
  writeFile(new_ + "/.x", "kept");
  rename();
  const std::string copied = "[Rename] [FAIL] Could not rename '" + old_ + "' to '" + new_ + "' [" +
                             std::to_string(ENOTEMPTY) + "]\n" +
                             "[Rename] Can do no better than a copy on this filesystem\n" +
                             "[Rename] Created folder " + new_ + "\n" +
                             "[CopyFolder] Copying FILE " + new_ + "/file\n" + "[Rename] Copied " +
                             old_ + " to " + new_ + "\n";
  EXPECT_EQ(log_.text(), workingDir_ + "File exists: " + new_ + "\n" +
                             "[Rename] The target already exists. Deleting.\n" +
                             attemptsFailingWith(ENOTEMPTY, 10) + copied);
  EXPECT_EQ(movesAsked, 10);
  EXPECT_EQ(waits, std::vector<std::uint64_t>(10, 300000));
  EXPECT_EQ(readFile(new_ + "/file"), "content");
  EXPECT_EQ(readFile(new_ + "/.x"), "kept");
  EXPECT_EQ(readFile(old_ + "/file"), "content");
}

TEST_F(DoRename, SaysSoWhenEvenTheCopyFails) {
  rename();  // nothing is there to rename
  EXPECT_TRUE(log_.contains("[CopyFolder] SourceDir from '" + old_ + "' is NULL\n"));
  EXPECT_EQ(log_.messages().back(), "[Rename] Copy failed too! Severe filesystem issues.\n");
}

TEST_F(DoRename, LogsTheErrnoOfTheRenameAcrossFileSystems) {
  struct stat here {
  }, there{};
  ASSERT_EQ(stat(folder_.str().c_str(), &here), 0);
  if (stat("/dev/shm", &there) != 0 || here.st_dev == there.st_dev)
    GTEST_SKIP() << "needs a second file system at /dev/shm";
  std::string elsewhere = "/dev/shm/quillory-test-XXXXXX";
  ASSERT_NE(mkdtemp(elsewhere.data()), nullptr);
  writeFile(old_ + "/file", "content");
  new_ = elsewhere + "/new";
  rename();
  EXPECT_TRUE(log_.contains(failedWith(EXDEV)));
  EXPECT_EQ(readFile(new_ + "/file"), "content");
  fs::remove_all(elsewhere);
}

TEST(MoveItem, AlwaysFailsWithATextWithoutACocoa) {
  std::string error;
  EXPECT_FALSE(platformCalls.moveItem("/tmp/no such a", "/tmp/no such b", error));
  EXPECT_EQ(error, "there is no file manager on this system");
}

}  // namespace
}  // namespace quillory
