// What Cocoa does for the support library. Plain C++, as its callers are.
#include "platform/support_cocoa.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <stdlib.h>

#include <filesystem>
#include <string>
#include <thread>

#include "tests/harness/temp_dir.h"

namespace quillory {
namespace {

namespace fs = std::filesystem;
using testing::modeOf;
using testing::readFile;
using testing::TempDir;
using testing::writeFile;

// What NSLog writes: a time stamp, the process, and the message on one line.
std::string systemLogOf(const char* message) {
  ::testing::internal::CaptureStderr();
  logThroughCocoa(message);
  return ::testing::internal::GetCapturedStderr();
}

TEST(LogThroughCocoa, WritesOneLineAsNSLogDoes) {
  const std::string line = systemLogOf("[Tag] a message\n");
  EXPECT_TRUE(line.ends_with("] [Tag] a message\n")) << line;
  EXPECT_EQ(std::count(line.begin(), line.end(), '\n'), 1);
  EXPECT_NE(line.find("[" + std::to_string(getpid()) + ":"), std::string::npos) << line;
}

TEST(LogThroughCocoa, TakesPercentSignsLiterally) {
  EXPECT_TRUE(systemLogOf("100%@ %s %n %d%%").ends_with("] 100%@ %s %n %d%%\n"));
}

TEST(LogThroughCocoa, KeepsTextThatIsUtf8) {
  EXPECT_TRUE(systemLogOf("Gr\xc3\xb6\xc3\x9f"
                          "e \xe2\x82\xac")
                  .ends_with("] Gr\xc3\xb6\xc3\x9f"
                             "e \xe2\x82\xac\n"));
}

TEST(LogThroughCocoa, ShowsOtherBytesAsLatin1InsteadOfLosingTheMessage) {
  EXPECT_TRUE(systemLogOf("before \xf6 behind").ends_with("] before \xc3\xb6 behind\n"));
  EXPECT_TRUE(systemLogOf("cut \xc3").ends_with("] cut \xc3\x83\n"));
}

TEST(LogThroughCocoa, TakesTheEmptyMessageAndALongOne) {
  EXPECT_TRUE(systemLogOf("").ends_with("] \n"));
  const std::string longOne(100000, 'x');
  EXPECT_TRUE(systemLogOf(longOne.c_str()).ends_with("] " + longOne + "\n"));
}

// Without a pool of its own every message from a plain thread would be one "autorelease called
// without pool".
TEST(LogThroughCocoa, NeedsNoPoolOfItsCaller) {
  ::testing::internal::CaptureStderr();
  std::thread([] { logThroughCocoa("from a thread"); }).join();
  const std::string text = ::testing::internal::GetCapturedStderr();
  EXPECT_TRUE(text.ends_with("] from a thread\n")) << text;
  EXPECT_EQ(text.find("without pool"), std::string::npos) << text;
}

std::string moved(const std::string& from, const std::string& to) {
  std::string error;
  return moveThroughCocoa(from.c_str(), to.c_str(), error) ? "moved" : "failed: " + error;
}

TEST(MoveThroughCocoa, MovesAFileOrAFolder) {
  const TempDir folder;
  writeFile(folder / "from/sub/file", "content");
  fs::permissions(folder / "from/sub/file", fs::perms::owner_all);
  EXPECT_EQ(moved(folder / "from", folder / "to"), "moved");
  EXPECT_EQ(readFile(folder / "to/sub/file"), "content");
  EXPECT_EQ(modeOf(folder / "to/sub/file"), 0700U);
  EXPECT_FALSE(fs::exists(folder / "from"));
  EXPECT_EQ(moved(folder / "to/sub/file", folder / "file"), "moved");
  EXPECT_EQ(readFile(folder / "file"), "content");
}

TEST(MoveThroughCocoa, TakesNamesBeyondAscii) {
  const TempDir folder;
  writeFile(folder /
                "Gr\xc3\xb6\xc3\x9f"
                "e 100% @",
            "content");
  EXPECT_EQ(moved(folder / "Gr\xc3\xb6\xc3\x9f"
                           "e 100% @",
                  folder / "\xe2\x82\xac"),
            "moved");
  EXPECT_EQ(readFile(folder / "\xe2\x82\xac"), "content");
}

TEST(MoveThroughCocoa, FailsWithATextAndKeepsBothWhenTheTargetExists) {
  const TempDir folder;
  writeFile(folder / "from", "new");
  writeFile(folder / "to", "old");
  const std::string result = moved(folder / "from", folder / "to");
  EXPECT_TRUE(result.starts_with("failed: ")) << result;
  EXPECT_GT(result.size(), std::string("failed: ").size());
  EXPECT_EQ(readFile(folder / "from"), "new");
  EXPECT_EQ(readFile(folder / "to"), "old");
}

TEST(MoveThroughCocoa, FailsWithATextForAMissingSource) {
  const TempDir folder;
  const std::string result = moved(folder / "missing", folder / "to");
  EXPECT_TRUE(result.starts_with("failed: ")) << result;
  EXPECT_GT(result.size(), std::string("failed: ").size());
}

TEST(MoveThroughCocoa, FailsWithATextForANameThatIsNoText) {
  const TempDir folder;
  writeFile(folder / "bad \xff name", "content");
  const std::string result = moved(folder / "bad \xff name", folder / "to");
  EXPECT_TRUE(result.starts_with("failed: ")) << result;
  EXPECT_EQ(readFile(folder / "bad \xff name"), "content");
}

TEST(IsMainThreadOfCocoa, KnowsTheMainThread) {
  EXPECT_TRUE(isMainThreadOfCocoa());
  bool isMain = true;
  std::thread([&] { isMain = isMainThreadOfCocoa(); }).join();
  EXPECT_FALSE(isMain);
}

}  // namespace
}  // namespace quillory
