#include "install/install_locations.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string>

#include "tests/harness/captured_log.h"
#include "tests/harness/temp_dir.h"

namespace quillory::testing {
namespace {

namespace fs = std::filesystem;
using ::testing::ElementsAre;

class SharedDirectoryFor : public ::testing::Test {
 protected:
  std::string locate(const char* installType) {
    return sharedDirectoryFor(installType, [this] { return home_.str(); }).value_or("(none)");
  }

  TempDir home_;
  CapturedLog log_;
};

TEST_F(SharedDirectoryFor, OfAllUsersIsTheSystemsAndIsNotCreated) {
  const bool existedBefore = fs::exists("/Library");
  EXPECT_EQ(locate("perm_all"), "/Library/Application Support");
  EXPECT_THAT(log_.messages(), ElementsAre("Permanent install for all users\n"));
  EXPECT_EQ(fs::exists("/Library"), existedBefore);
}

TEST_F(SharedDirectoryFor, OfThisUserIsCreatedWithItsParents) {
  EXPECT_EQ(locate("perm_user"), home_ / "Library/Application Support");
  EXPECT_TRUE(fs::is_directory(home_ / "Library/Application Support"));
  EXPECT_EQ(log_.messages()[0], "Permanent install for current user\n");
  EXPECT_EQ(log_.messages()[1], "HomeDir is " + home_.str() + "\n");
}

// As macOS has them: with 0777, every user could rewrite what is installed there.
TEST_F(SharedDirectoryFor, OfThisUserIsOpenToNobodyElse) {
  const mode_t before = umask(0);
  locate("perm_user");
  umask(before);
  EXPECT_EQ(modeOf(home_ / "Library"), 0700U);
  EXPECT_EQ(modeOf(home_ / "Library/Application Support"), 0755U);
}

TEST_F(SharedDirectoryFor, LeavesFoldersThatAreThereAsTheyAre) {
  fs::create_directories(home_ / "Library/Application Support");
  fs::permissions(home_ / "Library", fs::perms::owner_all | fs::perms::group_all);
  fs::permissions(home_ / "Library/Application Support", fs::perms::owner_all);
  locate("perm_user");
  EXPECT_EQ(modeOf(home_ / "Library"), 0770U);
  EXPECT_EQ(modeOf(home_ / "Library/Application Support"), 0700U);
}

TEST_F(SharedDirectoryFor, OfATemporaryInstallIsTheUsersToo) {
  for (const char* type : {"temp", "", "PERM_ALL", "perm_all "}) {
    SCOPED_TRACE(type);
    EXPECT_EQ(locate(type), home_ / "Library/Application Support");
  }
  EXPECT_EQ(log_.messages()[0], "Temporary install\n");
  EXPECT_EQ(log_.messages()[1], "HomeDir is " + home_.str() + "\n");
}

TEST_F(SharedDirectoryFor, IsNothingForAUserWithoutHome) {
  EXPECT_EQ(sharedDirectoryFor("perm_user", [] { return std::string(); }), std::nullopt);
  EXPECT_THAT(log_.messages(),
              ElementsAre("Permanent install for current user\n", "HomeDir is \n"));
}

TEST(OwnFolderFor, IsAMasterFolderInTheHomeOfTheUser) {
  const CapturedLog log;
  const TempDir home;
  const TempDir shared;
  EXPECT_EQ(ownFolderFor(home.str(), "Demo", shared.str()),
            home / "Library/Application Support/Quillory-Demo");
  EXPECT_TRUE(fs::is_directory(home / "Library/Application Support/Quillory-Demo"));
  EXPECT_TRUE(fs::is_empty(shared.path()));
}

TEST(OwnFolderFor, IsANewOneForThisUserAloneWithoutAHome) {
  const CapturedLog log;
  const TempDir shared;
  writeFile(shared / "a file", "in which there is no home");
  for (const std::string& home : {std::string(), shared / "a file/home"}) {
    const std::string folder = ownFolderFor(home, "Demo", shared.str());
    EXPECT_TRUE(folder.starts_with(shared / "Quillory-")) << folder;
    EXPECT_EQ(modeOf(folder), 0700U);
  }
  EXPECT_EQ(ownFolderFor("", "Demo", shared / "missing"), "");
}

TEST(HomeFolderOfUser, IsThatOfThePasswordDatabaseWhateverHomeSays) {
  const std::string before = homeFolderOfUser();
  const passwd* user = getpwuid(getuid());
  ASSERT_NE(user, nullptr);
  EXPECT_EQ(before, user->pw_dir);
  const char* const home = std::getenv("HOME");
  const std::string saved = home != nullptr ? home : "";
  setenv("HOME", "/somewhere/else", 1);
  EXPECT_EQ(homeFolderOfUser(), before);
  if (home != nullptr) {
    setenv("HOME", saved.c_str(), 1);
  } else {
    unsetenv("HOME");
  }
}

TEST(MasterFolderFor, IsNamedAfterTheApplication) {
  EXPECT_EQ(masterFolderFor("/s", "My App"), "/s/Quillory-My App");
  EXPECT_EQ(masterFolderFor("/s", ""), "/s/Quillory-");
}

}  // namespace
}  // namespace quillory::testing
