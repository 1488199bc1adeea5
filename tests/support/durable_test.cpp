#include "support/durable.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <vector>

#include "support/flush_each.h"
#include "tests/harness/captured_log.h"
#include "tests/harness/scoped_replace.h"
#include "tests/harness/temp_dir.h"

namespace quillory {
namespace {

namespace fs = std::filesystem;
using testing::CapturedLog;
using ::testing::ElementsAre;
using testing::ScopedReplace;
using testing::TempDir;
using ::testing::UnorderedElementsAre;
using testing::writeFile;

std::vector<std::string> flushed;
int answer = 0;

std::string pathOf(int descriptor) {
  return fs::read_symlink("/proc/self/fd/" + std::to_string(descriptor));
}

int noteFlush(const char* what, int descriptor, const std::string& path) {
  EXPECT_EQ(pathOf(descriptor), fs::canonical(path));
  flushed.push_back(what + path);
  return answer;
}

// What is flushed is noted, and not waited for.
class NotedFlushes {
 public:
  explicit NotedFlushes(int result = 0)
      : calls_(
            durableCalls,
            DurableCalls{
                [](int file, const std::string& path) { return noteFlush("file ", file, path); },
                [](int file, const std::string& path) { return noteFlush("folder ", file, path); },
                [](int file, const std::string& path) { return noteFlush("tree ", file, path); }}) {
    flushed.clear();
    answer = result;
  }

 private:
  ScopedReplace<DurableCalls> calls_;
};

int noteDescriptor(int descriptor) {
  flushed.push_back(pathOf(descriptor));
  return flushed.back().ends_with("bad") ? EIO : 0;
}

TEST(SyncFile, FlushesTheFileThatIsOpen) {
  TempDir dir;
  const int descriptor = open((dir / "file").c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
  {
    const NotedFlushes noted;
    EXPECT_TRUE(syncFile(descriptor, dir / "file"));
    EXPECT_THAT(flushed, ElementsAre("file " + dir / "file"));
  }
  EXPECT_TRUE(syncFile(descriptor, dir / "file"));
  close(descriptor);
}

TEST(SyncFile, OpensAFileAndFollowsNoLink) {
  TempDir dir;
  writeFile(dir / "file", "x");
  fs::create_symlink(dir / "file", dir / "link");
  EXPECT_TRUE(syncFile(dir / "file"));
  const CapturedLog log;
  EXPECT_FALSE(syncFile(dir / "link"));
  EXPECT_THAT(log.messages(), ElementsAre("[Flush] '" + dir / "link" +
                                          "' could not be flushed to the disk: Too many levels of "
                                          "symbolic links\n"));
}

TEST(SyncFolder, FlushesTheFolder) {
  TempDir dir;
  {
    const NotedFlushes noted;
    EXPECT_TRUE(syncFolder(dir.str()));
    EXPECT_THAT(flushed, ElementsAre("folder " + dir.str()));
  }
  EXPECT_TRUE(syncFolder(dir.str()));
}

TEST(SyncFolder, IsNotForFiles) {
  TempDir dir;
  writeFile(dir / "file", "x");
  const CapturedLog log;
  EXPECT_FALSE(syncFolder(dir / "file"));
  EXPECT_TRUE(log.contains("/file' could not be flushed to the disk: Not a directory\n"));
}

TEST(SyncTree, FlushesAllBelow) {
  TempDir dir;
  {
    const NotedFlushes noted;
    EXPECT_TRUE(syncTree(dir.str()));
    EXPECT_THAT(flushed, ElementsAre("tree " + dir.str()));
  }
  EXPECT_TRUE(syncTree(dir.str()));
}

TEST(SyncTree, SaysThatTheFolderIsMissing) {
  TempDir dir;
  const CapturedLog log;
  EXPECT_FALSE(syncTree(dir / "none"));
  EXPECT_THAT(log.messages(),
              ElementsAre("[Flush] '" + dir / "none" +
                          "' could not be flushed to the disk: No such file or directory\n"));
}

TEST(Sync, TellsOfAnErrorOfTheDisk) {
  TempDir dir;
  writeFile(dir / "file", "x");
  const NotedFlushes noted(EIO);
  const CapturedLog log;
  EXPECT_FALSE(syncFile(dir / "file"));
  EXPECT_FALSE(syncFolder(dir.str()));
  EXPECT_FALSE(syncTree(dir.str()));
  EXPECT_THAT(
      log.messages(),
      ElementsAre(
          "[Flush] '" + dir / "file" + "' could not be flushed to the disk: Input/output error\n",
          "[Flush] '" + dir.str() + "' could not be flushed to the disk: Input/output error\n",
          "[Flush] '" + dir.str() + "' could not be flushed to the disk: Input/output error\n"));
}

TEST(Sync, IsDoneWhereTheFileSystemHasNoSuchCall) {
  TempDir dir;
  for (const int unknown : {EINVAL, ENOTSUP, ENOSYS}) {
    const NotedFlushes noted(unknown);
    const CapturedLog log;
    EXPECT_TRUE(syncFolder(dir.str())) << unknown;
    EXPECT_TRUE(log.messages().empty());
  }
}

TEST(FlushEachBelow, FlushesFilesAndFoldersAndTheFolderLast) {
  TempDir dir;
  writeFile(dir / "a/b/file", "x");
  writeFile(dir / "top", "x");
  writeFile(dir / "hidden/.name", "x");
  const int descriptor = open(dir.str().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  flushed.clear();
  EXPECT_EQ(flushEachBelow(descriptor, dir.str(), noteDescriptor), 0);
  close(descriptor);
  ASSERT_FALSE(flushed.empty());
  EXPECT_EQ(flushed.back(), fs::canonical(dir.path()));
  const std::string root = fs::canonical(dir.path());
  EXPECT_THAT(flushed,
              UnorderedElementsAre(root + "/a", root + "/a/b", root + "/a/b/file", root + "/top",
                                   root + "/hidden", root + "/hidden/.name", root));
}

TEST(FlushEachBelow, LeavesLinksAndPipesAlone) {
  TempDir dir;
  TempDir elsewhere;
  writeFile(elsewhere / "file", "x");
  fs::create_symlink(elsewhere.path(), dir / "folder");
  fs::create_symlink(elsewhere / "file", dir / "file");
  ASSERT_EQ(mkfifo((dir / "pipe").c_str(), 0600), 0);
  const int descriptor = open(dir.str().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  flushed.clear();
  EXPECT_EQ(flushEachBelow(descriptor, dir.str(), noteDescriptor), 0);
  close(descriptor);
  EXPECT_THAT(flushed, ElementsAre(fs::canonical(dir.path())));
}

TEST(FlushEachBelow, GoesOnBehindAFailureAndTellsOfIt) {
  TempDir dir;
  writeFile(dir / "bad", "x");
  writeFile(dir / "good", "x");
  const int descriptor = open(dir.str().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  flushed.clear();
  EXPECT_EQ(flushEachBelow(descriptor, dir.str(), noteDescriptor), EIO);
  close(descriptor);
  EXPECT_EQ(flushed.size(), 3u);
}

}  // namespace
}  // namespace quillory
