#include "install/version_folders.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "support/clock.h"
#include "support/file_modes.h"
#include "support/paths.h"
#include "tests/harness/captured_log.h"
#include "tests/harness/scoped_replace.h"
#include "tests/harness/temp_dir.h"

namespace quillory::testing {
namespace {

namespace fs = std::filesystem;
using ::testing::ElementsAre;

std::string latest(const std::string& master, const char* name) {
  return newestVersionFolder(master, name).value_or("(none)");
}

TEST(IsUsableInFolderName, RefusesWhatWouldLeaveTheFolder) {
  static const struct {
    std::string text;
    bool expected;
  } kCases[] = {{"1.8.0_202", true}, {"", true},      {"8..9", true},
                {".", true},         {"..", false},   {"/", false},
                {"a/b", false},      {"../x", false}, {"1/../../2", false},
                {"..x", true},       {"a b", true},   {std::string("8\0x", 3), false}};
  for (const auto& [text, expected] : kCases) {
    SCOPED_TRACE(text);
    EXPECT_EQ(isUsableInFolderName("App", text), expected);
    EXPECT_EQ(isUsableInFolderName(text, "12"), expected);
  }
}

TEST(IsUsableInFolderName, RefusesWhatNoFileSystemTakes) {
  // "Quillory-", "-" and "-complete" are 19 bytes of 255.
  EXPECT_TRUE(isUsableInFolderName(std::string(234, 'a'), "12"));
  EXPECT_FALSE(isUsableInFolderName(std::string(235, 'a'), "12"));
}

TEST(IsUsableInFolderName, TakesEveryNameThatAFolderCanHave) {
  const TempDir master;
  const CapturedLog log;
  for (std::size_t length = 229; length <= 235; ++length) {
    const std::string name(length, 'a');
    EXPECT_TRUE(isUsableInFolderName(name, "1")) << length;
    EXPECT_TRUE(fs::create_directory(versionFolder(master.str(), name, "1"))) << length;
  }
  EXPECT_FALSE(isUsableInFolderName(std::string(236, 'a'), "1"));
}

TEST(IsUsableAsJre, LeavesPlaceForTheNameOfItsBundle) {
  EXPECT_TRUE(isUsableAsJre(std::string(227, 'a'), "12"));
  EXPECT_FALSE(isUsableAsJre(std::string(228, 'a'), "12"));
  EXPECT_FALSE(isUsableAsJre("..", "12"));
  EXPECT_FALSE(isUsableAsJre("JRE", "1/2"));
}

TEST(NewestVersionFolder, TakesTheHighestNumberNotTheHighestText) {
  const TempDir master;
  fs::create_directory(master / "Quillory-App-12-complete");
  fs::create_directory(master / "Quillory-App-9-complete");
  const CapturedLog log;
  EXPECT_EQ(latest(master.str(), "App"), "Quillory-App-12-complete");
  EXPECT_THAT(log.messages(),
              ElementsAre("[PickFolder] Folder Quillory-App-12-complete matches App with version "
                          "12\n",
                          "[PickFolder] Set latest to 12 Quillory-App-12-complete\n",
                          "[PickFolder] Folder Quillory-App-9-complete matches App with version "
                          "9\n"));
}

TEST(NewestVersionFolder, TakesVersionZeroButNoFolderWithoutAVersion) {
  const TempDir master;
  const CapturedLog log;
  fs::create_directory(master / "Quillory-App");
  EXPECT_EQ(latest(master.str(), "App"), "(none)");
  fs::create_directory(master / "Quillory-App-0-complete");
  EXPECT_EQ(latest(master.str(), "App"), "Quillory-App-0-complete");
  EXPECT_EQ(log.messages().back(), "[PickFolder] Set latest to 0 Quillory-App-0-complete\n");
}

TEST(NewestVersionFolder, KeepsTheFirstInByteOrderOfEqualVersions) {
  const TempDir master;
  // Made in the other order, so that the listing alone would not do.
  fs::create_directory(master / "Quillory-jre-8-complete.plugin");
  fs::create_directory(master / "Quillory-jre-8-complete");
  fs::create_directory(master / "Quillory-jre-08-complete.zzz");
  fs::remove(master / "Quillory-jre-08-complete.zzz");
  EXPECT_EQ(latest(master.str(), "jre"), "Quillory-jre-8-complete");
}

TEST(NewestVersionFolder, FindsNothingForANameWithADash) {
  const TempDir master;
  fs::create_directory(master / "Quillory-My-App-3-complete");
  EXPECT_EQ(latest(master.str(), "My-App"), "(none)");
}

TEST(NewestVersionFolder, NeverTakesAFolderWithoutVersionField) {
  const TempDir master;
  fs::create_directory(master / "Quillory-App-12");
  const CapturedLog log;
  EXPECT_EQ(latest(master.str(), "App"), "(none)");
  EXPECT_THAT(log.messages(),
              ElementsAre("[PickFolder] Folder Quillory-App-12 matches App with version -1\n"));
}

TEST(NewestVersionFolder, NeverTakesATemporaryFolderOrAnotherComponent) {
  const TempDir master;
  fs::create_directory(master / "QuilloryTemp-1700000000-5-app");
  fs::create_directory(master / "Quillory-Quillory-3-complete");
  fs::create_directory(master / "logs");
  EXPECT_EQ(latest(master.str(), "App"), "(none)");
  EXPECT_EQ(latest(master.str(), "Quillory"), "Quillory-Quillory-3-complete");
}

TEST(NewestVersionFolder, SkipsNamesOfOneOrTwoBytes) {
  const TempDir master;
  const CapturedLog log;
  fs::create_directory(master / "--");
  EXPECT_EQ(componentOfFolder("--"), "");
  EXPECT_EQ(latest(master.str(), ""), "(none)");
  EXPECT_THAT(log.messages(), ElementsAre());
  fs::create_directory(master / "-- ");
  latest(master.str(), "");
  EXPECT_THAT(log.messages(), ElementsAre("[PickFolder] Folder --  matches  with version -1\n"));
}

TEST(NewestVersionFolder, PassesOverWhatAnotherUserCouldHaveWritten) {
  const TempDir master;
  const CapturedLog log;
  for (const char* name : {"Quillory-App-7-complete", "Quillory-App-8-complete"})
    fs::create_directory(master / name);
  fs::permissions(master / "Quillory-App-7-complete", static_cast<fs::perms>(0755));
  fs::permissions(master / "Quillory-App-8-complete", static_cast<fs::perms>(0777));
  EXPECT_EQ(latest(master.str(), "App"), "Quillory-App-8-complete");
  chooseInstallationModes(InstallationModes::kOnlyTrustedAreUsed);
  EXPECT_EQ(latest(master.str(), "App"), "Quillory-App-7-complete");
  chooseInstallationModes(InstallationModes::kOpenToAll);
  EXPECT_TRUE(
      log.contains("[PickFolder] Folder Quillory-App-8-complete could have been changed by "
                   "another user. Skipping.\n"));
}

TEST(VersionFolder, IsNamedAfterComponentAndVersion) {
  EXPECT_EQ(versionFolder("/m", "Quillory", "7"), "/m/Quillory-Quillory-7-complete");
  EXPECT_EQ(versionFolder("/m/", "jre", "1.8.0_202"), "/m/Quillory-jre-1.8.0_202-complete");
}

TEST(VersionFolder, TakesAMasterFolderOfAnyLength) {
  const std::string master(kPathCapacity, 'm');
  EXPECT_EQ(versionFolder(master, "App", "1"), master + "/Quillory-App-1-complete");
}

TEST(TemporaryFolder, CountsSecondsAndEntries) {
  const TempDir master;
  writeFile(master / "one", "");
  const ScopedReplace clock(
      timeCalls.nowMillis, +[] { return std::uint64_t{1234567}; });
  EXPECT_EQ(temporaryFolder(master.str()), master / "QuilloryTemp-1234-3-app");
  EXPECT_FALSE(fs::exists(master / "QuilloryTemp-1234-3-app"));
}

// Left by a start that was killed, or put there by another user who knows the time.
TEST(TemporaryFolder, CountsOnWhereSomethingStands) {
  const TempDir master;
  const ScopedReplace clock(
      timeCalls.nowMillis, +[] { return std::uint64_t{1234567}; });
  fs::create_directory(master / "QuilloryTemp-1234-4-app");
  fs::create_symlink("nowhere", master / "QuilloryTemp-1234-5-app");
  EXPECT_EQ(temporaryFolder(master.str()), master / "QuilloryTemp-1234-6-app");
}

TEST(ComponentOfFolder, IsTheTextBetweenTheFirstTwoDashes) {
  EXPECT_EQ(componentOfFolder("Quillory-App-12-complete"), "App");
  EXPECT_EQ(componentOfFolder("anything-App-"), "App");
  EXPECT_EQ(componentOfFolder("Quillory--1-complete"), "");
  EXPECT_EQ(componentOfFolder("Quillory-App"), std::nullopt);
  EXPECT_EQ(componentOfFolder("logs"), std::nullopt);
  EXPECT_EQ(componentOfFolder(""), std::nullopt);
}

TEST(VersionOfFolder, IsNothingWithoutAThirdDash) {
  EXPECT_EQ(versionOfFolder("Quillory-App-12-complete"), 12);
  EXPECT_EQ(versionOfFolder("Quillory-App-abc-complete"), 0);
  EXPECT_EQ(versionOfFolder("Quillory-App--1-complete"), 0) << "no number is below 0";
  EXPECT_EQ(versionOfFolder("Quillory-App-12"), std::nullopt);
  EXPECT_EQ(versionOfFolder(""), std::nullopt);
}

TEST(NewestVersionFolder, IsTheOneWithTheHighestNumberOrNothing) {
  const TempDir master;
  EXPECT_EQ(newestVersionFolder(master.str(), "App"), std::nullopt);
  fs::create_directory(master / "Quillory-App-12-complete");
  fs::create_directory(master / "Quillory-App-9-complete");
  fs::create_directory(master / "Quillory-Application-13-complete");
  EXPECT_EQ(newestVersionFolder(master.str(), "App"), "Quillory-App-12-complete");
  EXPECT_EQ(newestVersionFolder(master / "missing", "App"), std::nullopt);
}

TEST(CountFolderEntries, CountsTheDotsToo) {
  const TempDir folder;
  EXPECT_EQ(countFolderEntries(folder.str()), 2);
  writeFile(folder / "a", "");
  EXPECT_EQ(countFolderEntries(folder.str()), 3);
  EXPECT_EQ(countFolderEntries(folder / "missing"), 0);
}

}  // namespace
}  // namespace quillory::testing
