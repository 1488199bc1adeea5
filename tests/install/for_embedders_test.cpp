#include "install/for_embedders.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <string>

#include "support/clock.h"
#include "support/owned.h"
#include "support/paths.h"
#include "tests/harness/captured_log.h"
#include "tests/harness/scoped_replace.h"
#include "tests/harness/temp_dir.h"

namespace quillory::testing {
namespace {

namespace fs = std::filesystem;

TEST(MakeAppFolder, PutsNameAndVersionBetweenTheFixedParts) {
  char path[kPathCapacity];
  EXPECT_EQ(makeAppFolder(path, "/m", "Quillory", "7"), path);
  EXPECT_STREQ(path, "/m/Quillory-Quillory-7-complete");
  makeAppFolder(path, "/m/", "jre", "1.8.0_202");
  EXPECT_STREQ(path, "/m/Quillory-jre-1.8.0_202-complete");
}

TEST(MakeAppFolder, EndsTheProcessRatherThanOverrun) {
  char path[kPathCapacity];
  const std::string longName(kPathCapacity, 'n');
  EXPECT_EXIT(makeAppFolder(path, "/m", longName.c_str(), "1"), ::testing::ExitedWithCode(1), "");
}

TEST(MakeAppTempFolder, CountsSecondsAndEntries) {
  const TempDir master;
  writeFile(master / "one", "");
  writeFile(master / "two", "");
  const ScopedReplace clock(
      timeCalls.nowMillis, +[] { return std::uint64_t{1234567}; });
  char path[kPathCapacity];
  EXPECT_EQ(makeAppTempFolder(path, master.str().c_str()), path);
  EXPECT_EQ(std::string(path), master / "QuilloryTemp-1234-4-app");
  EXPECT_FALSE(fs::exists(path));
}

TEST(MakeAppTempFolder, CountsNoneInAFolderThatIsNotThere) {
  const ScopedReplace clock(
      timeCalls.nowMillis, +[] { return std::uint64_t{5000}; });
  char path[kPathCapacity];
  EXPECT_STREQ(makeAppTempFolder(path, "/nonexistent/master"),
               "/nonexistent/master/QuilloryTemp-5-0-app");
}

TEST(CheckAppFolderName, MatchesTheTextBetweenTheFirstTwoDashes) {
  EXPECT_EQ(checkAppFolderName("Quillory-App-12-complete", "App"), 0);
  EXPECT_EQ(checkAppFolderName("Quillory-App-", "App"), 0);
  EXPECT_EQ(checkAppFolderName("anything-App-x", "App"), 0);
  EXPECT_EQ(checkAppFolderName("Quillory--1-complete", ""), 0);
}

TEST(CheckAppFolderName, ComparesAsStrcmpDoes) {
  EXPECT_LT(checkAppFolderName("Quillory-App-12-complete", "Appl"), 0);
  EXPECT_GT(checkAppFolderName("Quillory-App-12-complete", "Ap"), 0);
  EXPECT_NE(checkAppFolderName("Quillory-App-12-complete", "app"), 0);
}

TEST(CheckAppFolderName, IsMinusOneWithFewerThanTwoDashes) {
  EXPECT_EQ(checkAppFolderName("Quillory-App", "App"), -1);
  EXPECT_EQ(checkAppFolderName("logs", "logs"), -1);
  EXPECT_EQ(checkAppFolderName("", ""), -1);
}

TEST(CheckAppFolderName, NeverMatchesANameWithADash) {
  EXPECT_NE(checkAppFolderName("Quillory-My-App-3-complete", "My-App"), 0);
}

TEST(PickVersionFromAppFolderName, IsTheNumberBetweenTheSecondAndThirdDash) {
  static constexpr struct {
    const char* folder;
    long version;
  } kCases[] = {{"Quillory-App-12-complete", 12},
                {"Quillory-App-12-complete.plugin", 12},
                {"Quillory-App-00000000000-complete", 0},
                {"Quillory-App-1.8.0_202-complete", 1},
                {"Quillory-App-abc-complete", 0},
                {"Quillory-App--complete", 0},
                {"Quillory-App-4294967297-complete", 4294967297},
                {"Quillory-App-12", -1},
                {"QuilloryApp", -1},
                {"", -1}};
  for (const auto& [folder, version] : kCases) {
    SCOPED_TRACE(folder);
    EXPECT_EQ(pickVersionFromAppFolderName(folder), version);
  }
}

TEST(PickAndAllocLatestFromMaster, IsNullWithoutAMasterFolder) {
  EXPECT_EQ(pickAndAllocLatestFromMaster("/nonexistent/master", "App"), nullptr);
}

TEST(PickAndAllocLatestFromMaster, IsTheNewestInABlockOfItsOwn) {
  const TempDir master;
  fs::create_directory(master / "Quillory-App-12-complete");
  fs::create_directory(master / "Quillory-App-9-complete");
  const OwnedText latest(pickAndAllocLatestFromMaster(master.str().c_str(), "App"));
  EXPECT_STREQ(latest.get(), "Quillory-App-12-complete");
}

TEST(LocateSharedDirectory, OfAllUsersIsTheSystemsInARoomyBlock) {
  const CapturedLog log;
  const OwnedText directory(locateSharedDirectory("perm_all"));
  EXPECT_STREQ(directory.get(), "/Library/Application Support");
  for (std::size_t i = 40; i < kPathCapacity; ++i) ASSERT_EQ(directory.get()[i], '\0');
  EXPECT_EQ(log.text(), "Permanent install for all users\n");
}

}  // namespace
}  // namespace quillory::testing
