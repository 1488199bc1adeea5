#include "packager/bytes/abandoned.h"

#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "packager/bytes/byte_sinks.h"
#include "packager/bytes/work_folder.h"
#include "tests/harness/temp_dir.h"

namespace quillory::pack {
namespace {

namespace fs = std::filesystem;
using testing::TempDir;
using testing::writeFile;

TEST(RemoveAbandoned, RemovesFilesAndFoldersOfRunsThatWereKilled) {
  TempDir dir;
  writeFile(dir / ".unfinished-aB3xYz", "half a key");
  writeFile(dir / ".unfinished-123456/app/Contents/Info.plist", "half a bundle");
  writeFile(dir / "key.pem", "a key");
  removeAbandoned(dir.str());
  EXPECT_FALSE(fs::exists(dir / ".unfinished-aB3xYz"));
  EXPECT_FALSE(fs::exists(dir / ".unfinished-123456"));
  EXPECT_TRUE(fs::exists(dir / "key.pem"));
}

TEST(RemoveAbandoned, LeavesEveryOtherName) {
  TempDir dir;
  for (const char* name : {".unfinished", ".unfinished-", ".unfinished-12345",
                           ".unfinished-1234567", ".unfinished-12-456", "unfinished-123456"}) {
    writeFile(dir / name, "x");
    removeAbandoned(dir.str());
    EXPECT_TRUE(fs::exists(dir / name)) << name;
  }
}

TEST(RemoveAbandoned, LeavesWhatIsInUse) {
  TempDir dir;
  const WorkFolder work(dir.str());
  writeFile(work / "a", "x");
  FileSink sink(dir / "file");
  sink.write("content");
  removeAbandoned(dir.str());
  EXPECT_TRUE(fs::exists(work / "a"));
  sink.commit();
  EXPECT_EQ(testing::readFile(dir / "file"), "content");
}

TEST(RemoveAbandoned, NeitherFollowsLinksNorWaitsForPipes) {
  TempDir dir;
  writeFile(dir / "folder/precious", "x");
  fs::create_symlink(dir / "folder", dir / ".unfinished-aaaaaa");
  ASSERT_EQ(mkfifo((dir / ".unfinished-bbbbbb").c_str(), 0600), 0);
  removeAbandoned(dir.str());
  EXPECT_TRUE(fs::exists(dir / "folder/precious"));
  EXPECT_TRUE(fs::is_symlink(dir / ".unfinished-aaaaaa"));
}

TEST(RemoveAbandoned, LeavesWhatAnotherUserMade) {
  if (geteuid() != 0) GTEST_SKIP() << "only root can make it another user's";
  TempDir dir;
  writeFile(dir / ".unfinished-aaaaaa", "x");
  ASSERT_EQ(chown((dir / ".unfinished-aaaaaa").c_str(), 1234, 1234), 0);
  removeAbandoned(dir.str());
  EXPECT_TRUE(fs::exists(dir / ".unfinished-aaaaaa"));
}

TEST(RemoveAbandoned, SaysNothingOfAFolderThatIsNotThere) {
  removeAbandoned("/nonexistent/folder");
}

TEST(LockUnfinished, HoldsUntilItIsClosed) {
  TempDir dir;
  fs::create_directory(dir / ".unfinished-aaaaaa");
  const int lock = lockUnfinished(dir / ".unfinished-aaaaaa");
  ASSERT_GE(lock, 0);
  removeAbandoned(dir.str());
  EXPECT_TRUE(fs::exists(dir / ".unfinished-aaaaaa"));
  close(lock);
  removeAbandoned(dir.str());
  EXPECT_FALSE(fs::exists(dir / ".unfinished-aaaaaa"));
}

TEST(LockUnfinished, RefusesWhatIsGone) {
  EXPECT_EQ(lockUnfinished("/nonexistent/.unfinished-aaaaaa"), -1);
}

TEST(WorkFolder, RemovesWhatKilledRunsHaveLeftBesideIt) {
  TempDir dir;
  writeFile(dir / ".unfinished-aaaaaa/a", "x");
  const WorkFolder work(dir.str());
  EXPECT_FALSE(fs::exists(dir / ".unfinished-aaaaaa"));
  EXPECT_TRUE(fs::exists(work.path()));
}

}  // namespace
}  // namespace quillory::pack
