#include "support/file_copy.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>

#include <filesystem>
#include <string>

#include "tests/harness/file_size_limit.h"
#include "tests/harness/hex.h"
#include "tests/harness/temp_dir.h"
#include "tests/support/ordinary_user.h"
#include "tests/support/quiet_log.h"
#include "tests/support/recorded_shell.h"

namespace quillory {
namespace {

namespace fs = std::filesystem;
using testing::AsOrdinaryUser;
using ::testing::ElementsAre;
using testing::FileSizeLimit;
using ::testing::HasSubstr;
using testing::modeOf;
using testing::QuietLog;
using testing::readFile;
using testing::TempDir;
using testing::writeFile;

const std::string kCopyStars = "***************************";

std::string pattern(std::size_t length) {
  const std::vector<unsigned char> bytes = testing::patternBytes(length);
  return {bytes.begin(), bytes.end()};
}

TEST(CopyFile, CopiesEveryByteAtEverySizeAroundTheBuffer) {
  for (const std::size_t size : {0, 1, 49999, 50000, 50001, 99999, 100000, 100001, 1234567}) {
    SCOPED_TRACE(size);
    const QuietLog log;
    const TempDir folder;
    writeFile(folder / "from", pattern(size));
    EXPECT_EQ(copyFile((folder / "from").c_str(), (folder / "to").c_str()), 0);
    EXPECT_EQ(readFile(folder / "to"), pattern(size));
    EXPECT_THAT(log.messages(), ElementsAre("[Extractor] Copying FILE " + (folder / "to") + "\n"));
  }
}

TEST(CopyFile, ReplacesTheContentOfAnExistingFile) {
  const QuietLog log;
  const TempDir folder;
  writeFile(folder / "from", "new");
  writeFile(folder / "to", "much longer than the new one");
  EXPECT_EQ(copyFile((folder / "from").c_str(), (folder / "to").c_str()), 0);
  EXPECT_EQ(readFile(folder / "to"), "new");
}

TEST(CopyFile, CarriesNoModeOver) {
  const QuietLog log;
  const TempDir folder;
  writeFile(folder / "from", "program");
  fs::permissions(folder / "from", fs::perms::all);
  const mode_t before = umask(022);
  copyFile((folder / "from").c_str(), (folder / "to").c_str());
  umask(before);
  EXPECT_EQ(modeOf(folder / "to"), 0644U);
}

TEST(CopyFile, StopsWhenTheSourceCannotBeOpened) {
  const QuietLog log;
  const TempDir folder;
  EXPECT_EQ(copyFile((folder / "missing").c_str(), (folder / "to").c_str()), 1);
  EXPECT_THAT(log.messages(),
              ElementsAre("[Extractor] Copying FILE " + (folder / "to") + "\n",
                          "[Extractor] " + kCopyStars + " Unable to open source file for copy " +
                              (folder / "missing") + "\n"));
  EXPECT_FALSE(fs::exists(folder / "to"));
}

TEST(CopyFile, StopsWhenTheTargetCannotBeOpened) {
  const QuietLog log;
  const TempDir folder;
  writeFile(folder / "from", "x");
  const std::string target = folder / "no/such/folder";
  EXPECT_EQ(copyFile((folder / "from").c_str(), target.c_str()), 1);
  EXPECT_THAT(log.messages(),
              ElementsAre("[Extractor] Copying FILE " + target + "\n",
                          "[Extractor] " + kCopyStars +
                              " Unable to open destination file for copy " + target + "\n"));
}

TEST(CopyFile, FailsWhenTheSourceCannotBeRead) {
  const QuietLog log;
  const TempDir folder;
  fs::create_directory(folder / "from");
  EXPECT_EQ(copyFile((folder / "from").c_str(), (folder / "to").c_str()), 1);
  EXPECT_TRUE(log.contains("[Extractor] " + kCopyStars + " Unable to read source file for copy " +
                           (folder / "from") + " (Is a directory)\n"));
  EXPECT_FALSE(fs::exists(folder / "to"));
}

TEST(CopyFile, ReplacesALinkAtTheTargetInsteadOfWritingThroughIt) {
  const QuietLog log;
  const TempDir folder;
  writeFile(folder / "from", "new");
  writeFile(folder / "elsewhere", "precious");
  fs::create_symlink(folder / "elsewhere", folder / "to");
  EXPECT_EQ(copyFile((folder / "from").c_str(), (folder / "to").c_str()), 0);
  EXPECT_EQ(readFile(folder / "elsewhere"), "precious");
  EXPECT_FALSE(fs::is_symlink(folder / "to"));
  EXPECT_EQ(readFile(folder / "to"), "new");
}

TEST(CopyFile, FailsOnAFullDeviceEvenIfOnlyTheLastFlushTellsSo) {
  for (const std::size_t size : {1, 4096, 50000, 60000}) {
    SCOPED_TRACE(size);
    const QuietLog log;
    const TempDir folder;
    writeFile(folder / "from", pattern(size));
    EXPECT_EQ(copyFile((folder / "from").c_str(), "/dev/full"), 1);
    EXPECT_TRUE(log.contains("[Extractor] " + kCopyStars +
                             " Unable to write destination file for copy /dev/full"
                             " (No space left on device)\n"));
  }
}

TEST(CopyFile, FailsWhenTheTargetCannotGrowToItsEnd) {
  const TempDir folder;
  writeFile(folder / "from", pattern(150000));
  const QuietLog log;
  {
    const FileSizeLimit limit(120000);
    EXPECT_EQ(copyFile((folder / "from").c_str(), (folder / "to").c_str()), 1);
  }
  EXPECT_TRUE(log.contains("Unable to write destination file for copy " + (folder / "to") +
                           " (File too large)\n"));
  EXPECT_FALSE(fs::exists(folder / "to"));
}

TEST(CopyFile, KeepsTheModeAndTheOtherNamesOfAFileThatIsThere) {
  const QuietLog log;
  const TempDir folder;
  writeFile(folder / "from", "new");
  writeFile(folder / "to", "old");
  fs::permissions(folder / "to", fs::perms{0751});
  fs::create_hard_link(folder / "to", folder / "other");
  EXPECT_EQ(copyFile((folder / "from").c_str(), (folder / "to").c_str()), 0);
  EXPECT_EQ(modeOf(folder / "to"), 0751U);
  EXPECT_EQ(readFile(folder / "other"), "new");
}

// A disk of 64 KiB, in a mount namespace that ends with this process.
class TinyDisk {
 public:
  explicit TinyDisk(const std::string& at) : at_(at) {
    isMounted_ = unshare(CLONE_NEWNS) == 0 &&
                 mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
                 mount("tiny", at.c_str(), "tmpfs", 0, "size=64k") == 0;
  }
  ~TinyDisk() {
    if (isMounted_) umount(at_.c_str());
  }
  bool isMounted() const { return isMounted_; }

 private:
  std::string at_;
  bool isMounted_;
};

TEST(CopyFolder, StopsAtTheFileThatFillsTheDisk) {
  const TempDir folder;
  fs::create_directory(folder / "disk");
  writeFile(folder / "from/big", pattern(100000));
  const TinyDisk disk(folder / "disk");
  if (!disk.isMounted()) GTEST_SKIP() << "may not mount here";
  const QuietLog log;
  EXPECT_EQ(copyFolder((folder / "from").c_str(), (folder / "disk").c_str()), 1);
  EXPECT_EQ(log.messages().back(), "[CopyFolder] " + kCopyStars +
                                       " Unable to write destination file for copy " +
                                       (folder / "disk/big") + " (No space left on device)\n");
}

TEST(CopyFolder, CopiesTheWholeTree) {
  const QuietLog log;
  const TempDir folder;
  writeFile(folder / "from/file", "one");
  writeFile(folder / "from/sub/deep/file", pattern(70000));
  writeFile(folder / "from/.DS_Store", "three");
  fs::create_directory(folder / "from/empty");
  fs::create_directory(folder / "to");
  EXPECT_EQ(copyFolder((folder / "from").c_str(), (folder / "to").c_str()), 0);
  EXPECT_EQ(readFile(folder / "to/file"), "one");
  EXPECT_EQ(readFile(folder / "to/sub/deep/file"), pattern(70000));
  EXPECT_EQ(readFile(folder / "to/.DS_Store"), "three");
  EXPECT_TRUE(fs::is_directory(folder / "to/empty"));
}

TEST(CopyFolder, LogsEveryStepWithTheTargetPath) {
  const QuietLog log;
  const testing::RecordedShell shell;
  const TempDir folder;
  writeFile(folder / "from/sub/file", "");
  fs::create_directory(folder / "to");
  EXPECT_EQ(copyFolder((folder / "from").c_str(), (folder / "to").c_str()), 0);
  EXPECT_THAT(log.messages(),
              ElementsAre("[CopyFolder] Copying DIR " + (folder / "to/sub") + "\n",
                          "[ChMod] Executing chmod 777 \"" + (folder / "to/sub") + "\"\n",
                          "[CopyFolder] Copying FILE " + (folder / "to/sub/file") + "\n"));
}

TEST(CopyFolder, LeavesOutATwoByteDotName) {
  const QuietLog log;
  const TempDir folder;
  writeFile(folder / "from/.x", "");
  writeFile(folder / "from/.y/inner", "");
  fs::create_directory(folder / "to");
  EXPECT_EQ(copyFolder((folder / "from").c_str(), (folder / "to").c_str()), 0);
  EXPECT_TRUE(fs::is_empty(folder / "to"));
}

TEST(CopyFolder, OpensItsFoldersToEverybodyAndCarriesNoModeOver) {
  const QuietLog log;
  const TempDir folder;
  writeFile(folder / "from/sub/program", "");
  fs::permissions(folder / "from/sub/program", fs::perms::all);
  fs::permissions(folder / "from/sub", fs::perms::owner_all);
  fs::create_directory(folder / "to");
  const mode_t before = umask(022);
  copyFolder((folder / "from").c_str(), (folder / "to").c_str());
  umask(before);
  EXPECT_EQ(modeOf(folder / "to/sub"), 0777U);
  EXPECT_EQ(modeOf(folder / "to/sub/program"), 0644U);
}

TEST(CopyFolder, CopiesWhatLinksPointTo) {
  const QuietLog log;
  const TempDir folder;
  writeFile(folder / "elsewhere/file", "content");
  fs::create_directories(folder / "from");
  fs::create_symlink(folder / "elsewhere", folder / "from/folder");
  fs::create_symlink(folder / "elsewhere/file", folder / "from/file");
  fs::create_directory(folder / "to");
  EXPECT_EQ(copyFolder((folder / "from").c_str(), (folder / "to").c_str()), 0);
  EXPECT_FALSE(fs::is_symlink(folder / "to/folder"));
  EXPECT_EQ(readFile(folder / "to/folder/file"), "content");
  EXPECT_FALSE(fs::is_symlink(folder / "to/file"));
}

TEST(CopyFolder, FailsForASourceThatCannotBeOpened) {
  const QuietLog log;
  const TempDir folder;
  EXPECT_EQ(copyFolder((folder / "missing").c_str(), folder.str().c_str()), 1);
  EXPECT_THAT(log.messages(),
              ElementsAre("[CopyFolder] SourceDir from '" + (folder / "missing") + "' is NULL\n"));
}

TEST(CopyFolder, StopsAtASourceFileThatCannotBeOpened) {
  const QuietLog log;
  const TempDir folder;
  fs::create_directories(folder / "from");
  fs::create_symlink("nowhere", folder / "from/dangling");
  fs::create_directory(folder / "to");
  EXPECT_EQ(copyFolder((folder / "from").c_str(), (folder / "to").c_str()), 1);
  EXPECT_THAT(log.messages(),
              ElementsAre("[CopyFolder] Copying FILE " + (folder / "to/dangling") + "\n",
                          "[CopyFolder] " + kCopyStars + " Unable to open source file for copy " +
                              (folder / "from/dangling") + "\n"));
}

TEST(CopyFolder, StopsAtATargetFileThatCannotBeOpened) {
  const QuietLog log;
  const TempDir folder;
  writeFile(folder / "from/file", "");
  fs::create_directories(folder / "to/file");  // a folder is in the way
  EXPECT_EQ(copyFolder((folder / "from").c_str(), (folder / "to").c_str()), 1);
  EXPECT_EQ(log.messages().back(), "[CopyFolder] " + kCopyStars +
                                       " Unable to open destination file for copy " +
                                       (folder / "to/file") + "\n");
}

TEST(CopyFolder, ReturnsTheFailureOfAFolderThatCannotBeMade) {
  const QuietLog log;
  const testing::RecordedShell shell;
  const TempDir folder;
  fs::create_directories(folder / "from/sub");
  writeFile(folder / "to/sub", "a file is in the way");
  EXPECT_EQ(copyFolder((folder / "from").c_str(), (folder / "to").c_str()), -1);
  EXPECT_EQ(log.messages().back(), "[CopyFolder] " + kCopyStars + " Failed to copy " +
                                       (folder / "from/sub") + " to " + (folder / "to/sub") +
                                       " (could not create target folder)\n");
}

TEST(CopyFolder, TellsANestedFailureAtEveryLevelAndReturnsIt) {
  const QuietLog log;
  const testing::RecordedShell shell;
  const TempDir folder;
  fs::create_directories(folder / "from/a/b/c");
  writeFile(folder / "to/a/b/c", "a file is in the way");
  EXPECT_EQ(copyFolder((folder / "from").c_str(), (folder / "to").c_str()), -1);
  const std::string failed = "[CopyFolder] " + kCopyStars + " Failed to copy ";
  const std::vector<std::string>& messages = log.messages();
  ASSERT_GE(messages.size(), 3U);
  const std::size_t last = messages.size() - 1;
  EXPECT_THAT(messages[last - 2], HasSubstr("(could not create target folder)\n"));
  EXPECT_EQ(messages[last - 1],
            failed + (folder / "from/a/b") + " to " + (folder / "to/a/b") + "\n");
  EXPECT_EQ(messages[last], failed + (folder / "from/a") + " to " + (folder / "to/a") + "\n");
}

TEST(CopyFolder, TakesAFolderThatCannotBeOpenedForAFile) {
  const QuietLog log;
  const AsOrdinaryUser user;
  const TempDir folder;
  fs::create_directories(folder / "from/closed");
  fs::create_directory(folder / "to");
  fs::permissions(folder / "from/closed", fs::perms::none);
  EXPECT_EQ(copyFolder((folder / "from").c_str(), (folder / "to").c_str()), 1);
  EXPECT_EQ(log.messages().back(), "[CopyFolder] " + kCopyStars +
                                       " Unable to open source file for copy " +
                                       (folder / "from/closed") + "\n");
}

TEST(CopyFolder, ComesToAnEndInATreeThatLinksToItself) {
  const QuietLog log;
  const testing::RecordedShell shell;
  const TempDir folder;
  fs::create_directories(folder / "from");
  fs::create_symlink(".", folder / "from/again");
  fs::create_directory(folder / "to");
  EXPECT_EQ(copyFolder((folder / "from").c_str(), (folder / "to").c_str()), 1);
}

}  // namespace
}  // namespace quillory
