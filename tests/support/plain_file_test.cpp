#include "support/plain_file.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cerrno>
#include <filesystem>

#include "tests/harness/temp_dir.h"

namespace quillory {
namespace {

using testing::TempDir;
using testing::writeFile;

TEST(ReadPlainFile, GivesTheBeginningOfAFile) {
  TempDir dir;
  const std::string content(200'000, 'x');
  writeFile(dir / "file", content);
  EXPECT_EQ(readPlainFile(dir / "file", content.size() + 1), content);
  EXPECT_EQ(readPlainFile(dir / "file", 70'000), content.substr(0, 70'000));
  EXPECT_EQ(readPlainFile(dir / "file", 0), "");
}

TEST(OpenPlainFile, OpensNothingButPlainFilesAndWaitsForNone) {
  TempDir dir;
  writeFile(dir / "file", "x");
  std::filesystem::create_symlink("file", dir / "link");
  std::filesystem::create_directory(dir / "folder");
  ASSERT_EQ(mkfifo((dir / "pipe").c_str(), 0600), 0);
  EXPECT_TRUE(openPlainFile(dir / "file"));
  for (const char* name : {"link", "folder", "pipe", "file/below"})
    EXPECT_FALSE(openPlainFile(dir / name)) << name;
  EXPECT_FALSE(openPlainFile("/dev/zero"));
}

TEST(OpenPlainFile, LeavesTheReason) {
  TempDir dir;
  EXPECT_FALSE(openPlainFile(dir / "missing"));
  EXPECT_EQ(errno, ENOENT);
  std::filesystem::create_directory(dir / "folder");
  EXPECT_FALSE(openPlainFile(dir / "folder"));
  EXPECT_EQ(errno, EINVAL);
}

}  // namespace
}  // namespace quillory
