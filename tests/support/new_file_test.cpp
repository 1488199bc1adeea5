#include "support/new_file.h"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <utility>

#include "support/file_modes.h"
#include "tests/harness/file_size_limit.h"
#include "tests/harness/temp_dir.h"

namespace quillory {
namespace {

namespace fs = std::filesystem;
using testing::FileSizeLimit;
using testing::modeOf;
using testing::readFile;
using testing::writeFile;
using Existing = NewFile::Existing;

constexpr Existing kAll[] = {Existing::kUnlinked, Existing::kRewritten, Existing::kFollowed};

class NewFileTest : public ::testing::Test {
 protected:
  static bool writeTo(const std::string& path, Existing existing, const std::string& content) {
    NewFile file(path, existing);
    file.write(content.data(), content.size());
    return file.close();
  }

  const testing::TempDir folder_;
  const std::string path_ = folder_ / "file";
  const std::string victim_ = folder_ / "victim";
};

TEST_F(NewFileTest, HoldsWhatWasWrittenAndPrinted) {
  for (const Existing existing : kAll) {
    NewFile file(path_, existing);
    ASSERT_TRUE(file.isOpen());
    EXPECT_TRUE(file.write("a\0b", 3));
    std::fprintf(file.stream(), "%d", 12);
    EXPECT_TRUE(file.close());
    EXPECT_FALSE(file.isOpen());
    EXPECT_EQ(file.error(), 0);
    EXPECT_EQ(readFile(path_), std::string("a\0b12", 5));
  }
}

TEST_F(NewFileTest, IsThereFromTheBeginning) {
  const NewFile file(path_);
  EXPECT_TRUE(fs::exists(path_));
}

TEST_F(NewFileTest, HasTheModeThatTheUmaskLeaves) {
  const mode_t before = umask(027);
  writeTo(path_, Existing::kUnlinked, "");
  umask(before);
  EXPECT_EQ(modeOf(path_), 0640U);
}

TEST_F(NewFileTest, IsRemovedUnlessItWasClosed) {
  for (const Existing existing : {Existing::kUnlinked, Existing::kRewritten}) {
    writeFile(path_, "old");
    { NewFile(path_, existing).write("new", 3); }
    EXPECT_FALSE(fs::exists(path_));
  }
}

TEST_F(NewFileTest, IsRemovedWhereTheDiskIsFull) {
  for (const std::size_t size : {9'001, 100'000}) {  // found by close(), and by write()
    for (const Existing existing : {Existing::kUnlinked, Existing::kRewritten}) {
      const FileSizeLimit limit(9'000);
      NewFile file(path_, existing);
      file.write(std::string(size, 'x').data(), size);
      EXPECT_FALSE(file.close());
      EXPECT_EQ(file.error(), EFBIG);
      EXPECT_FALSE(file.write("x", 1));
    }
    EXPECT_FALSE(fs::exists(path_));
  }
}

TEST_F(NewFileTest, KnowsThatPrintingFailed) {
  NewFile file("/dev/full", Existing::kFollowed);
  std::fprintf(file.stream(), "x");
  std::fflush(file.stream());
  EXPECT_FALSE(file.close());
  EXPECT_EQ(file.error(), EIO);
}

TEST_F(NewFileTest, NeverRemovesADevice) {
  for (const Existing existing : {Existing::kRewritten, Existing::kFollowed}) {
    EXPECT_FALSE(writeTo("/dev/full", existing, "x"));
    EXPECT_TRUE(fs::exists("/dev/full"));
  }
}

TEST_F(NewFileTest, TellsWhyItCannotBeOpened) {
  fs::create_directory(folder_ / "folder");
  for (const Existing existing : kAll) {
    const NewFile orphan(folder_ / "missing/file", existing);
    EXPECT_FALSE(orphan.isOpen());
    EXPECT_EQ(orphan.error(), ENOENT);
    NewFile folder(folder_ / "folder", existing);
    EXPECT_NE(folder.error(), 0);
    EXPECT_FALSE(folder.write("x", 1));
    EXPECT_FALSE(folder.close());
  }
  EXPECT_TRUE(fs::is_directory(folder_ / "folder"));
}

TEST_F(NewFileTest, ReplacesALinkInsteadOfFollowingIt) {
  for (const Existing existing : {Existing::kUnlinked, Existing::kRewritten}) {
    writeFile(victim_, "precious");
    fs::remove(path_);
    fs::create_symlink(victim_, path_);
    ASSERT_TRUE(writeTo(path_, existing, "new"));
    EXPECT_EQ(readFile(victim_), "precious");
    EXPECT_FALSE(fs::is_symlink(path_));
    EXPECT_EQ(readFile(path_), "new");
  }
}

TEST_F(NewFileTest, ReplacesALinkThatLeadsNowhere) {
  for (const Existing existing : {Existing::kUnlinked, Existing::kRewritten}) {
    fs::remove(path_);
    fs::create_symlink(victim_, path_);
    ASSERT_TRUE(writeTo(path_, existing, "new"));
    EXPECT_FALSE(fs::exists(victim_));
  }
}

TEST_F(NewFileTest, FollowsALinkWhereItIsToldTo) {
  writeFile(victim_, "longer than the new content");
  fs::create_symlink(victim_, path_);
  ASSERT_TRUE(writeTo(path_, Existing::kFollowed, "new"));
  EXPECT_TRUE(fs::is_symlink(path_));
  EXPECT_EQ(readFile(victim_), "new");
}

TEST_F(NewFileTest, LeavesWhatAHardLinkSharesAloneUnlessItIsRewritten) {
  writeFile(victim_, "shared");
  fs::permissions(victim_, fs::perms{0600});
  fs::create_hard_link(victim_, path_);
  ASSERT_TRUE(writeTo(path_, Existing::kRewritten, "both"));
  EXPECT_EQ(readFile(victim_), "both");
  EXPECT_EQ(modeOf(path_), 0600U);
  ASSERT_TRUE(writeTo(path_, Existing::kUnlinked, "own"));
  EXPECT_EQ(readFile(victim_), "both");
}

TEST_F(NewFileTest, IsNotInheritedByAnotherProgram) {
  const NewFile file(path_);
  const std::string command = "test ! -e /proc/self/fd/" + std::to_string(file.descriptor());
  EXPECT_EQ(std::system(command.c_str()), 0);
}

TEST_F(NewFileTest, CanBeHandedOver) {
  NewFile first(path_);
  ASSERT_TRUE(first.write("one ", 4));
  {
    NewFile second(std::move(first));
    ASSERT_TRUE(second.write("two", 3));
    ASSERT_TRUE(second.close());
  }
  EXPECT_EQ(readFile(path_), "one two");
}

TEST_F(NewFileTest, IsForItsOwnerToWriteWhereThatIsChosen) {
  const mode_t before = umask(0);
  NewFile open(folder_ / "open");
  chooseInstallationModes(InstallationModes::kOwnerWrites);
  NewFile anew(folder_ / "anew"), rewritten(folder_ / "rewritten", NewFile::Existing::kRewritten);
  NewFile chosenByUser(folder_ / "chosen", NewFile::Existing::kFollowed);
  chooseInstallationModes(InstallationModes::kOpenToAll);
  umask(before);
  for (NewFile* file : {&open, &anew, &rewritten, &chosenByUser}) EXPECT_TRUE(file->close());
  EXPECT_EQ(testing::modeOf(folder_ / "open"), 0666U);
  EXPECT_EQ(testing::modeOf(folder_ / "anew"), 0644U);
  EXPECT_EQ(testing::modeOf(folder_ / "rewritten"), 0644U);
  EXPECT_EQ(testing::modeOf(folder_ / "chosen"), 0666U);
}

}  // namespace
}  // namespace quillory
