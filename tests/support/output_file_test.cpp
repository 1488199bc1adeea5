#include "support/output_file.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <filesystem>
#include <vector>

#include "support/durable.h"
#include "tests/harness/scoped_replace.h"
#include "tests/harness/temp_dir.h"

namespace quillory {
namespace {

namespace fs = std::filesystem;
using testing::readFile;
using testing::TempDir;
using testing::writeFile;

std::size_t entriesIn(const TempDir& folder) {
  return static_cast<std::size_t>(
      std::distance(fs::directory_iterator(folder.path()), fs::directory_iterator()));
}

TEST(OutputFile, AppearsOnlyWithCommit) {
  TempDir dir;
  OutputFile file(dir / "out");
  ASSERT_TRUE(file.write("content", 7));
  EXPECT_FALSE(fs::exists(dir / "out"));
  ASSERT_TRUE(file.commit());
  EXPECT_EQ(readFile(dir / "out"), "content");
  EXPECT_EQ(entriesIn(dir), 1u);
}

TEST(OutputFile, LeavesWhatWasThereWithoutCommit) {
  TempDir dir;
  writeFile(dir / "out", "old");
  {
    OutputFile file(dir / "out");
    ASSERT_TRUE(file.write("new", 3));
  }
  EXPECT_EQ(readFile(dir / "out"), "old");
  EXPECT_EQ(entriesIn(dir), 1u);
}

TEST(OutputFile, ReplacesALinkInsteadOfFollowingIt) {
  TempDir dir;
  writeFile(dir / "victim", "precious");
  fs::create_symlink(dir / "victim", dir / "out");
  OutputFile file(dir / "out");
  ASSERT_TRUE(file.write("new", 3));
  ASSERT_TRUE(file.commit());
  EXPECT_EQ(readFile(dir / "victim"), "precious");
  EXPECT_FALSE(fs::is_symlink(dir / "out"));
  EXPECT_EQ(readFile(dir / "out"), "new");
}

TEST(OutputFile, HasTheModeThatTheUmaskLeaves) {
  TempDir dir;
  const mode_t saved = umask(027);
  OutputFile plain(dir / "plain");
  plain.commit();
  OutputFile secret(dir / "secret", 0600);
  secret.commit();
  umask(saved);
  EXPECT_EQ(testing::modeOf(dir / "plain"), 0640u);
  EXPECT_EQ(testing::modeOf(dir / "secret"), 0600u);
}

TEST(OutputFile, HasAnExactModeWhateverTheUmask) {
  TempDir dir;
  const mode_t saved = umask(077);
  OutputFile program(dir / "program", ExactMode{0777});
  program.commit();
  umask(saved);
  EXPECT_EQ(testing::modeOf(dir / "program"), 0777u);
}

TEST(OutputFile, RefusesToReplaceAFolderOrADevice) {
  TempDir dir;
  fs::create_directory(dir / "folder");
  OutputFile folder(dir / "folder");
  EXPECT_FALSE(folder.isOpen());
  EXPECT_EQ(folder.error(), dir / "folder" + ": is not a plain file");
  OutputFile device("/dev/null");
  EXPECT_FALSE(device.isOpen());
  EXPECT_FALSE(device.commit());
}

TEST(OutputFile, NamesTheFileThatCannotBeCreated) {
  TempDir dir;
  OutputFile file(dir / "missing/out");
  EXPECT_FALSE(file.isOpen());
  EXPECT_EQ(file.error(), dir / "missing/out" + ": cannot be created: No such file or directory");
}

TEST(OutputFile, ReportsAFullDisk) {
  TempDir dir;
  OutputFile file(dir / "out");
  // The descriptor is exchanged for one on the device that is always full.
  const OwnedDescriptor full = openSteadily("/dev/full", O_WRONLY);
  ASSERT_EQ(dup2(full.get(), file.descriptor()), file.descriptor());
  file.write("x", 1);
  EXPECT_FALSE(file.commit());
  EXPECT_EQ(file.error(), dir / "out" + ": cannot be written: No space left on device");
}

std::vector<std::string> flushedFiles;

// Where the file stands while it is flushedFiles.
std::string placeOf(int descriptor) {
  return fs::read_symlink("/proc/self/fd/" + std::to_string(descriptor)).filename();
}

TEST(OutputFile, IsFlushedBeforeItGetsItsNameAndItsFolderAfterwards) {
  TempDir dir;
  static std::string target;
  target = dir / "out";
  flushedFiles.clear();
  const testing::ScopedReplace calls(
      durableCalls, DurableCalls{[](int file, const std::string& path) {
                                   EXPECT_TRUE(placeOf(file).starts_with(".unfinished-"));
                                   EXPECT_FALSE(fs::exists(target));
                                   struct stat found {};
                                   fstat(file, &found);
                                   EXPECT_EQ(found.st_size, 7)
                                       << "bytes that the flush could not see";
                                   flushedFiles.push_back(path);
                                   return 0;
                                 },
                                 [](int, const std::string& path) {
                                   EXPECT_TRUE(fs::exists(target));
                                   flushedFiles.push_back(path);
                                   return 0;
                                 },
                                 durableCalls.flushTree});
  OutputFile file(target);
  file.write("content", 7);
  ASSERT_TRUE(file.commit());
  EXPECT_EQ(flushedFiles, (std::vector{target, dir.str() + '/'}));
}

TEST(OutputFile, IsNotFlushedWhereTheCallerDoesNotAskForIt) {
  TempDir dir;
  flushedFiles.clear();
  const auto note = [](int, const std::string& path) {
    flushedFiles.push_back(path);
    return 0;
  };
  const testing::ScopedReplace calls(durableCalls, DurableCalls{note, note, note});
  OutputFile file(dir / "out", 0666, Durability::kLeftToTheSystem);
  OutputFile exact(dir / "exact", ExactMode{0777}, Durability::kLeftToTheSystem);
  EXPECT_TRUE(file.commit());
  EXPECT_TRUE(exact.commit());
  EXPECT_TRUE(flushedFiles.empty());
}

TEST(OutputFile, LeavesWhatWasThereWhenTheDiskDoesNotKeepTheNewFile) {
  TempDir dir;
  writeFile(dir / "out", "old");
  const testing::ScopedReplace failing(
      durableCalls.flushFile, +[](int, const std::string&) { return EIO; });
  {
    OutputFile file(dir / "out");
    file.write("new", 3);
    EXPECT_FALSE(file.commit());
    EXPECT_EQ(file.error(), dir / "out" + ": cannot be written: Input/output error");
  }
  EXPECT_EQ(readFile(dir / "out"), "old");
  EXPECT_EQ(entriesIn(dir), 1u);
}

TEST(RemoveUnfinishedFilesOnSignals, LeavesNothingBehindAndDiesOfTheSignal) {
  ::testing::FLAGS_gtest_death_test_style = "threadsafe";
  TempDir dir;
  // The child of a threadsafe death test makes a folder of its own, so this one is handed over.
  setenv("OUTPUT_FILE_FOLDER", dir.str().c_str(), 0);
  const std::string folder = getenv("OUTPUT_FILE_FOLDER");
  EXPECT_EXIT(
      {
        removeUnfinishedFilesOnSignals();
        OutputFile file(folder + "/out");
        file.write("x", 1);
        std::raise(SIGTERM);
      },
      ::testing::KilledBySignal(SIGTERM), "");
  unsetenv("OUTPUT_FILE_FOLDER");
  EXPECT_EQ(entriesIn(dir), 0u);
}

}  // namespace
}  // namespace quillory
