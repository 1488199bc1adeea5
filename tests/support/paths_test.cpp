#include "support/paths.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstring>
#include <filesystem>
#include <string>

#include "support/owned.h"
#include "tests/harness/temp_dir.h"

namespace quillory {
namespace {

using testing::TempDir;

class PathTest : public ::testing::Test {
 protected:
  char path_[kPathCapacity] = {};
};
using SetPath = PathTest;
using BuildersDeathTest = PathTest;

TEST_F(SetPath, TakesOneToFiveComponents) {
  EXPECT_STREQ(setPath(path_, "/a"), "/a");
  EXPECT_STREQ(setPath(path_, "/a", "b"), "/a/b");
  EXPECT_STREQ(setPath(path_, "/a", "b", "c"), "/a/b/c");
  EXPECT_STREQ(setPath(path_, "/a", "b", "c", "d"), "/a/b/c/d");
  EXPECT_STREQ(setPath(path_, "/a", "b", "c", "d", "e"), "/a/b/c/d/e");
}

TEST_F(SetPath, ReturnsItsBuffer) { EXPECT_EQ(setPath(path_, "/a", "b"), path_); }

TEST_F(SetPath, PutsOneSeparatorBetweenButKeepsThoseOfAComponent) {
  EXPECT_STREQ(setPath(path_, "a/", "b/", "/c"), "a/b//c");
}

TEST_F(SetPath, ReplacesWhatWasInTheBuffer) {
  std::strcpy(path_, "something long that was here before");
  EXPECT_STREQ(setPath(path_, "a", "b"), "a/b");
}

TEST_F(SetPath, TakesItsOwnBufferAsAComponent) {
  std::strcpy(path_, "sub");
  EXPECT_STREQ(setPath(path_, "/a", path_, "c"), "/a/sub/c");
}

TEST_F(SetPath, FillsTheBufferToItsLastByte) {
  const std::string component(kPathCapacity - 4, 'x');
  setPath(path_, "/a", component.c_str());
  EXPECT_EQ(std::string(path_), "/a/" + component);
  EXPECT_EQ(std::strlen(path_), kPathCapacity - 1);
}

// The error goes to the system log too, which is standard error here.
TEST_F(BuildersDeathTest, EndTheProcessInsteadOfOverrunningTheBuffer) {
  ::testing::GTEST_FLAG(death_test_style) = "threadsafe";
  const std::string component(kPathCapacity - 3, 'x');
  EXPECT_EXIT(setPath(path_, "/a", component.c_str()), ::testing::ExitedWithCode(1),
              "\\[Paths\\] The path is too long \\(5000 bytes, at most 4999\\): /a/xxx");
  EXPECT_EXIT(setPath(path_, std::string(100000, 'y').c_str()), ::testing::ExitedWithCode(1),
              "too long \\(100000 bytes");
}

TEST(JoinPath, PutsOneSeparatorBetween) {
  EXPECT_EQ(joinPath("/a", "b"), "/a/b");
  EXPECT_EQ(joinPath("/a/", "b"), "/a/b");
  EXPECT_EQ(joinPath("/", "b"), "/b");
  EXPECT_EQ(joinPath("/a", "/b"), "/a//b");
  EXPECT_EQ(joinPath("", "b"), "b");
}

TEST(JoinPath, TakesAnyNumberOfComponents) {
  EXPECT_EQ(joinPath("/a", "b", std::string("c"), "d", "e", "f"), "/a/b/c/d/e/f");
}

TEST(JoinPath, HoldsAPathOfAnyLength) {
  const std::string longName(2 * kPathCapacity, 'b');
  EXPECT_EQ(joinPath("/a", longName), "/a/" + longName);
}

TEST(ToNativePath, LeavesThePathAsItIs) {
  char path[] = "/a\\b/c";
  toNativePath(path);
  EXPECT_STREQ(path, "/a\\b/c");
}

TEST(IsAbsolutePath, LooksAtTheFirstCharacter) {
  EXPECT_TRUE(isAbsolutePath("/"));
  EXPECT_TRUE(isAbsolutePath("/a"));
  EXPECT_FALSE(isAbsolutePath("a/b"));
  EXPECT_FALSE(isAbsolutePath("./a"));
  EXPECT_FALSE(isAbsolutePath(""));
}

TEST(GetAbsoluteExePath, ReturnsAnAbsolutePathItself) {
  char path[] = "/Applications/X.app/Contents/MacOS/x";
  EXPECT_EQ(getAbsoluteExePath(path), path);
}

class InFolder {
 public:
  explicit InFolder(const std::string& folder) { EXPECT_EQ(chdir(folder.c_str()), 0); }
  ~InFolder() { std::filesystem::current_path(before_); }

 private:
  std::filesystem::path before_ = std::filesystem::current_path();
};

TEST(GetAbsoluteExePath, PutsTheCurrentDirectoryBeforeARelativeOne) {
  const TempDir folder;
  const InFolder inside(folder.str());
  char path[] = "MacOS/x";
  const OwnedText absolute(getAbsoluteExePath(path));
  EXPECT_NE(absolute.get(), path);
  EXPECT_EQ(std::string(absolute.get()), folder / "MacOS/x");
}

TEST(GetAbsoluteExePath, HoldsAPathOfAnyLength) {
  const TempDir folder;
  const InFolder inside(folder.str());
  std::string path(10000, 'x');
  const OwnedText absolute(getAbsoluteExePath(path.data()));
  EXPECT_EQ(std::string(absolute.get()), folder / path);
}

TEST(GetAbsoluteExeDir, CutsAtTheLastSeparator) {
  static constexpr struct {
    const char *path, *expected;
  } kCases[] = {{"/Applications/X.app/Contents/MacOS/x", "/Applications/X.app/Contents/MacOS"},
                {"a/b", "a"},
                {"a/", "a"},
                {"/a/", "/a"},
                {"//a", "/"},
                {"/a", ""},
                {"a", ""},
                {"ab", ""},
                {"/", ""},
                {"", ""}};
  for (const auto& [path, expected] : kCases) {
    SCOPED_TRACE(path);
    EXPECT_STREQ(OwnedText(getAbsoluteExeDir(path)).get(), expected);
  }
}

TEST(GetAbsoluteExeDir, HoldsAPathOfAnyLength) {
  const std::string folder = "/" + std::string(10000, 'x');
  EXPECT_EQ(std::string(OwnedText(getAbsoluteExeDir((folder + "/y").c_str())).get()), folder);
}

TEST(ChopPath, KeepsWhatFollowsTheLastSeparatorOfEitherKind) {
  static constexpr struct {
    const char *path, *expected;
  } kCases[] = {{"dir/sub/file.txt", "file.txt"},
                {"dir\\file", "file"},
                {"dir/", ""},
                {"dir\\", ""},
                {"file", "file"},
                {"a/b\\c", "c"},
                {"a\\b/c", "c"},
                {"/a/very-long-name-behind-it", "very-long-name-behind-it"},
                {"/", ""},
                {"", ""}};
  for (const auto& [given, expected] : kCases) {
    SCOPED_TRACE(given);
    std::string path(given);
    EXPECT_EQ(chopPath(path.data()), 0);
    EXPECT_STREQ(path.c_str(), expected);
  }
}

TEST(ChopExe, CutsOnlyTheExactEnding) {
  static constexpr struct {
    const char *name, *expected;
  } kCases[] = {{"setup.exe", "setup"},
                {"setup.EXE", "setup.EXE"},
                {"setup.exe.txt", "setup.exe.txt"},
                {"a.exe.exe", "a.exe"},
                {"setupexe", "setupexe"},
                {".exe", ""},
                {"exe", "exe"},
                {"x", "x"},
                {"", ""}};
  for (const auto& [given, expected] : kCases) {
    SCOPED_TRACE(given);
    std::string name(given);
    EXPECT_EQ(chopExe(name.data()), 0);
    EXPECT_STREQ(name.c_str(), expected);
  }
}

TEST(CurrentDirectory, MayBeLongerThanAnyFixedBuffer) {
  const TempDir folder;
  const InFolder inside(folder.str());
  const std::string level(200, 'd');
  for (int i = 0; i < 15; ++i) {
    std::filesystem::create_directory(level);
    ASSERT_EQ(chdir(level.c_str()), 0);
  }
  EXPECT_EQ(currentDirectory().size(), folder.str().size() + 15 * 201);
}

TEST(CurrentDirectory, IsEmptyWhenTheFolderIsGone) {
  const TempDir folder;
  const std::string gone = folder / "gone";
  std::filesystem::create_directory(gone);
  const InFolder inside(gone);
  std::filesystem::remove(gone);
  EXPECT_EQ(currentDirectory(), "");
}

}  // namespace
}  // namespace quillory
