#include "packager/bytes/folder_lock.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <unistd.h>

#include <filesystem>

#include "packager/report/findings.h"
#include "tests/harness/temp_dir.h"

namespace quillory::pack {
namespace {

using testing::TempDir;
using testing::writeFile;

// As another process would hold it.
class OthersLock {
 public:
  explicit OthersLock(const std::string& folder)
      : folder_(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {}
  ~OthersLock() { close(folder_); }
  OthersLock(const OthersLock&) = delete;
  OthersLock& operator=(const OthersLock&) = delete;
  bool isTaken() { return flock(folder_, LOCK_EX | LOCK_NB) == 0; }
  void giveBack() { flock(folder_, LOCK_UN); }

 private:
  int folder_;
};

TEST(FolderLock, IsHeldAsLongAsItLives) {
  const TempDir dir;
  OthersLock other(dir.str());
  {
    const FolderLock lock(dir.str(), [] { ADD_FAILURE() << "nobody has it"; });
    EXPECT_FALSE(other.isTaken());
  }
  EXPECT_TRUE(other.isTaken());
}

TEST(FolderLock, WaitsForAnotherOneAndSaysSoOnce) {
  const TempDir dir;
  OthersLock other(dir.str());
  ASSERT_TRUE(other.isTaken());
  int said = 0;
  const FolderLock lock(dir.str(), [&] {
    ++said;
    other.giveBack();
  });
  EXPECT_EQ(said, 1);
  EXPECT_FALSE(other.isTaken());
}

TEST(FolderLock, LeavesNothingInTheFolder) {
  const TempDir dir;
  const FolderLock lock(dir.str(), [] {});
  EXPECT_TRUE(std::filesystem::is_empty(dir.str()));
}

TEST(FolderLock, OfAFolderThatIsNotThereIsNone) {
  const TempDir dir;
  const FolderLock lock(dir / "none", [] { ADD_FAILURE() << "nobody has it"; });
  EXPECT_FALSE(std::filesystem::exists(dir / "none"));
}

TEST(FolderLock, OfAFileIsAnError) {
  const TempDir dir;
  writeFile(dir / "file", "");
  EXPECT_THROW(FolderLock(dir / "file", [] {}), PackError);
}

}  // namespace
}  // namespace quillory::pack
