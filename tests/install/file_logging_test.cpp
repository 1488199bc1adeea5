#include "install/file_logging.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <time.h>
#include <unistd.h>

#include <filesystem>
#include <string>

#include "support/log.h"
#include "tests/harness/captured_log.h"
#include "tests/harness/captured_output.h"
#include "tests/harness/scripted_clock.h"
#include "tests/harness/temp_dir.h"

namespace quillory {
namespace {

namespace fs = std::filesystem;
using testing::CapturedLog;
using testing::CapturedOutput;
using testing::readFile;
using testing::StoppedClock;
using testing::TempDir;

constexpr const char* kPrefix = "+0        ";

// 2026-11-16 06:48:00.042 UTC, shown in the time zone of the test: one hour ahead.
class SetupFileLogging : public ::testing::Test {
 protected:
  SetupFileLogging() {
    setenv("TZ", "XST-1", 1);
    tzset();
  }
  ~SetupFileLogging() override {
    closeLoggedFile();
    unsetenv("TZ");
    tzset();
  }

  static constexpr const char* kName = "logs/Wrapper-2026-11-16-07-48-00-042.log";
  const TempDir folder_;
  const StoppedClock clock_{1794811680042};
  const CapturedLog system_;
  CapturedOutput out_;
};

TEST_F(SetupFileLogging, NamesTheFileByLocalTimeAndMilliseconds) {
  setupFileLogging((folder_ / "Master").c_str());
  EXPECT_TRUE(fs::is_regular_file((folder_ / "Master/") + kName));
}

TEST_F(SetupFileLogging, CreatesTheMasterAndTheLogsFolderForEverybody) {
  setupFileLogging((folder_ / "Master").c_str());
  EXPECT_EQ(testing::modeOf(folder_ / "Master"), 0777U);
  EXPECT_EQ(testing::modeOf(folder_ / "Master/logs"), 0777U);
}

TEST_F(SetupFileLogging, TellsThePathEverywhereButInTheFile) {
  setupFileLogging(folder_.str().c_str());
  logMessage("in the file\n");
  const std::string told = "[Extractor] Logging to " + (folder_ / kName) + "\n";
  EXPECT_TRUE(system_.contains(told));
  EXPECT_NE(out_.take().find(kPrefix + told), std::string::npos);
  EXPECT_EQ(readFile(folder_ / kName), "+0        in the file\n");
}

TEST_F(SetupFileLogging, TakesAMasterFolderThatEndsInASlash) {
  setupFileLogging((folder_.str() + "/").c_str());
  EXPECT_TRUE(system_.contains("[Extractor] Logging to " + (folder_ / kName) + "\n"));
}

TEST_F(SetupFileLogging, GoesOnWithoutAFileWhenTheLogsFolderCannotBeCreated) {
  testing::writeFile(folder_ / "Master", "a file is in the way");
  setupFileLogging((folder_ / "Master").c_str());
  logMessage("still logged\n");
  EXPECT_TRUE(system_.contains("still logged\n"));
  EXPECT_NE(out_.take().find(kPrefix + std::string("still logged\n")), std::string::npos);
  EXPECT_EQ(readFile(folder_ / "Master"), "a file is in the way");
}

TEST_F(SetupFileLogging, GoesOnWithoutAFileWhenThePathIsTooLongForTheSystem) {
  setupFileLogging((folder_ / std::string(6000, 'x')).c_str());
  logMessage("still logged\n");
  EXPECT_TRUE(system_.contains("still logged\n"));
}

TEST_F(SetupFileLogging, TruncatesTheFileOfARunInTheSameMillisecond) {
  setupFileLogging(folder_.str().c_str());
  logMessage("of the first run\n");
  closeLoggedFile();
  setupFileLogging(folder_.str().c_str());
  logMessage("of the second run\n");
  EXPECT_EQ(readFile(folder_ / kName), "+0        of the second run\n");
}

// What stands at the path of the next log, put there by somebody who knows the time.
TEST_F(SetupFileLogging, OverwritesNothingBehindALink) {
  testing::writeFile(folder_ / "private", "precious");
  fs::create_directory(folder_ / "logs");
  fs::create_symlink("../private", folder_ / kName);
  setupFileLogging(folder_.str().c_str());
  logMessage("in the file\n");
  EXPECT_EQ(readFile(folder_ / "private"), "precious");
  const std::string next = folder_ / "logs/Wrapper-2026-11-16-07-48-00-043.log";
  EXPECT_TRUE(system_.contains("[Extractor] Logging to " + next + "\n"));
  EXPECT_EQ(readFile(next), "+0        in the file\n");
}

TEST_F(SetupFileLogging, OverwritesNoFileThatHasASecondName) {
  testing::writeFile(folder_ / "private", "precious");
  fs::create_directory(folder_ / "logs");
  fs::create_hard_link(folder_ / "private", folder_ / kName);
  setupFileLogging(folder_.str().c_str());
  EXPECT_EQ(readFile(folder_ / "private"), "precious");
  EXPECT_TRUE(fs::exists(folder_ / "logs/Wrapper-2026-11-16-07-48-00-043.log"));
}

TEST_F(SetupFileLogging, WritesIntoNoFolderBehindALinkOfAnotherUser) {
  if (geteuid() != 0) GTEST_SKIP() << "needs files of two users";
  fs::create_directory(folder_ / "elsewhere");
  fs::create_directory_symlink("elsewhere", folder_ / "logs");
  ASSERT_EQ(lchown((folder_ / "logs").c_str(), 65533, 65533), 0);
  setupFileLogging(folder_.str().c_str());
  logMessage("still logged\n");
  EXPECT_TRUE(system_.contains("still logged\n"));
  EXPECT_TRUE(fs::is_empty(folder_ / "elsewhere"));
}

TEST_F(SetupFileLogging, WritesIntoAFolderBehindALinkOfOurs) {
  fs::create_directory(folder_ / "elsewhere");
  fs::create_directory_symlink("elsewhere", folder_ / "logs");
  setupFileLogging(folder_.str().c_str());
  EXPECT_TRUE(fs::exists(folder_ / kName));
}

}  // namespace
}  // namespace quillory
