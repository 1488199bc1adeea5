#include "java/trial_end.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "tests/harness/temp_dir.h"

namespace quillory {
namespace {

namespace fs = std::filesystem;
using ::quillory::testing::readFile;
using ::quillory::testing::TempDir;
using ::quillory::testing::writeFile;

TEST(TryFileOf, IsNamedAfterTheLaunchProperties) {
  const TempDir dir;
  fs::create_directory(dir / "QYUpdates");
  EXPECT_EQ(tryFileOf(dir.str(), "/elsewhere/QYLaunchProperties-1700000000123-3"),
            dir / "QYUpdates/try-1700000000123-3");
}

TEST(TryFileOf, IsNoneWithoutAFolderForUpdates) {
  const TempDir dir;
  EXPECT_EQ(tryFileOf(dir.str(), dir / "QYLaunchProperties-1-1"), "");
  writeFile(dir / "QYUpdates", "a file");
  EXPECT_EQ(tryFileOf(dir.str(), dir / "QYLaunchProperties-1-1"), "");
}

TEST(NoteEnd, AddsALineToWhatIsThere) {
  const TempDir dir;
  writeFile(dir / "try-1-1", "Quillory-Demo-2-complete\n");
  noteEnd(dir / "try-1-1", 143);
  noteEnd(dir / "try-1-1", -1);
  EXPECT_EQ(readFile(dir / "try-1-1"), "Quillory-Demo-2-complete\nended 143\nended -1\n");
}

TEST(NoteEnd, MakesNothing) {
  const TempDir dir;
  noteEnd(dir / "try-1-1", 0);
  noteEnd("", 0);
  EXPECT_TRUE(fs::is_empty(dir.str()));
}

TEST(NoteEnd, FollowsNoLinkAndWaitsForNobody) {
  const TempDir dir;
  writeFile(dir / "other", "mine");
  fs::create_symlink(dir / "other", dir / "try-1-1");
  noteEnd(dir / "try-1-1", 0);
  EXPECT_EQ(readFile(dir / "other"), "mine");
  ASSERT_EQ(mkfifo((dir / "try-1-2").c_str(), 0600), 0);
  noteEnd(dir / "try-1-2", 0);
}

}  // namespace
}  // namespace quillory
