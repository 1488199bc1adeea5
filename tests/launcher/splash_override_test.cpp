#include "launcher/splash_override.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "tests/harness/captured_log.h"
#include "tests/harness/file_size_limit.h"
#include "tests/harness/temp_dir.h"

namespace quillory::testing {
namespace {

namespace fs = std::filesystem;
using ::testing::ElementsAre;

class SaveOverrideImageIfAllowed : public ::testing::Test {
 protected:
  SaveOverrideImageIfAllowed() { writeFile(picture_, "shipped"); }

  TempDir folder_;
  const std::string picture_ = folder_ / "nativesplash.png";
  CapturedLog log_;
};

TEST_F(SaveOverrideImageIfAllowed, DoesNothingUnlessTheTailSaysOne) {
  for (const char* canOverride : {"", "0", "true", "11", " 1"}) {
    SCOPED_TRACE(canOverride);
    saveOverrideImageIfAllowed(canOverride, "own", picture_);
    EXPECT_EQ(readFile(picture_), "shipped");
  }
  EXPECT_TRUE(log_.messages().empty());
}

TEST_F(SaveOverrideImageIfAllowed, ReplacesThePictureForEveryone) {
  chmod(picture_.c_str(), 0600);
  saveOverrideImageIfAllowed("1", std::string("a\0b", 3), picture_);
  EXPECT_EQ(readFile(picture_), std::string("a\0b", 3));
  EXPECT_EQ(modeOf(picture_), 0777U);
  EXPECT_THAT(log_.messages(),
              ElementsAre("[Extractor] Authorised to override the splash image.\n",
                          "[Extractor] DynamicSplash is 1, size is 3\n",
                          "[Extractor] Overwriting splash image at " + picture_ + "\n",
                          "[ChMod] Executing chmod 777 \"" + picture_ + "\"\n"));
}

TEST_F(SaveOverrideImageIfAllowed, KeepsTheShippedPictureWithoutAnImage) {
  saveOverrideImageIfAllowed("1", std::nullopt, picture_);
  EXPECT_EQ(log_.messages().back(), "[Extractor] DynamicSplash is 0, size is 0\n");
  saveOverrideImageIfAllowed("1", "", picture_);
  EXPECT_EQ(log_.messages().back(), "[Extractor] DynamicSplash is 1, size is 0\n");
  EXPECT_EQ(readFile(picture_), "shipped");
}

TEST_F(SaveOverrideImageIfAllowed, WritesWhereNoPictureIs) {
  fs::remove(picture_);
  saveOverrideImageIfAllowed("1", "own", picture_);
  EXPECT_EQ(readFile(picture_), "own");
}

TEST_F(SaveOverrideImageIfAllowed, ReplacesAPlantedLinkAndLeavesItsTargetAlone) {
  const std::string victim = folder_ / "victim";
  writeFile(victim, "precious");
  chmod(victim.c_str(), 0600);
  fs::remove(picture_);
  fs::create_symlink(victim, picture_);
  saveOverrideImageIfAllowed("1", "own", picture_);
  EXPECT_EQ(readFile(victim), "precious");
  EXPECT_EQ(modeOf(victim), 0600U);
  EXPECT_FALSE(fs::is_symlink(picture_));
  EXPECT_EQ(readFile(picture_), "own");
}

TEST_F(SaveOverrideImageIfAllowed, LeavesWhatAHardLinkSharesAlone) {
  const std::string victim = folder_ / "victim";
  fs::create_hard_link(picture_, victim);
  saveOverrideImageIfAllowed("1", "own", picture_);
  EXPECT_EQ(readFile(victim), "shipped");
}

TEST_F(SaveOverrideImageIfAllowed, SaysWhenThePictureCannotBeReplaced) {
  fs::remove(picture_);
  writeFile(picture_ + "/inside", "a folder cannot be unlinked");
  saveOverrideImageIfAllowed("1", "own", picture_);
  EXPECT_TRUE(log_.contains("[Extractor] The splash image " + picture_ + " cannot be replaced: "));
  EXPECT_TRUE(fs::exists(picture_ + "/inside"));
}

TEST_F(SaveOverrideImageIfAllowed, LeavesNoPartOfAnImageOnAFullDisk) {
  {
    const FileSizeLimit limit(10'000);
    saveOverrideImageIfAllowed("1", std::string(50'000, 'x'), picture_);
  }
  EXPECT_FALSE(fs::exists(picture_));
  EXPECT_TRUE(log_.contains("[Extractor] The splash image " + picture_ +
                            " cannot be replaced: File too large\n"));
}

}  // namespace
}  // namespace quillory::testing
