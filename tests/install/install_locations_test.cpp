#include "install/install_locations.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "support/clock.h"
#include "support/owned.h"
#include "support/paths.h"
#include "tests/harness/captured_log.h"
#include "tests/harness/scoped_replace.h"
#include "tests/harness/temp_dir.h"

namespace quillory::testing {
namespace {

namespace fs = std::filesystem;
using ::testing::ElementsAre;

std::string homeOfTest;
std::string homeFolderOfTest() { return homeOfTest; }

class LocateSharedDirectory : public ::testing::Test {
 protected:
  LocateSharedDirectory() { homeOfTest = home_.str(); }

  std::string locate(const char* installType) {
    const OwnedText directory(locateSharedDirectory(installType));
    return directory != nullptr ? directory.get() : "(null)";
  }

  TempDir home_;
  ScopedReplace<decltype(userCalls.homeFolder)> replaced_{userCalls.homeFolder, homeFolderOfTest};
  CapturedLog log_;
};

TEST_F(LocateSharedDirectory, OfAllUsersIsTheSystemsAndIsNotCreated) {
  const bool existedBefore = fs::exists("/Library");
  EXPECT_EQ(locate("perm_all"), "/Library/Application Support");
  EXPECT_THAT(log_.messages(), ElementsAre("Permanent install for all users\n"));
  EXPECT_EQ(fs::exists("/Library"), existedBefore);
}

TEST_F(LocateSharedDirectory, OfThisUserIsCreatedWithItsParents) {
  EXPECT_EQ(locate("perm_user"), home_ / "Library/Application Support");
  EXPECT_TRUE(fs::is_directory(home_ / "Library/Application Support"));
  EXPECT_EQ(log_.messages()[0], "Permanent install for current user\n");
  EXPECT_EQ(log_.messages()[1], "HomeDir is " + home_.str() + "\n");
}

TEST_F(LocateSharedDirectory, OfATemporaryInstallIsTheUsersToo) {
  for (const char* type : {"temp", "", "PERM_ALL", "perm_all "}) {
    SCOPED_TRACE(type);
    EXPECT_EQ(locate(type), home_ / "Library/Application Support");
  }
  EXPECT_EQ(log_.messages()[0], "Temporary install\n");
  EXPECT_EQ(log_.messages()[1], "HomeDir is " + home_.str() + "\n");
}

TEST_F(LocateSharedDirectory, IsNullForAUserWithoutHome) {
  homeOfTest.clear();
  EXPECT_EQ(locate("perm_user"), "(null)");
}

TEST(MasterFolderFor, IsNamedAfterTheApplication) {
  EXPECT_EQ(masterFolderFor("/s", "My App"), "/s/Quillory-My App");
  EXPECT_EQ(masterFolderFor("/s", ""), "/s/Quillory-");
}

}  // namespace
}  // namespace quillory::testing
