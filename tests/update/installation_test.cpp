#include "update/installation.h"

#include <gtest/gtest.h>

#include "tests/update/machine.h"

namespace quillory::testing {
namespace {

using update::Installation;
using update::readInstallation;

class InstallationTest : public ::testing::Test {
 protected:
  std::optional<Installation> read(const std::string& bytes, const std::string& own = "") {
    writeFile(folder_ / "m/gu/QYLaunchProperties-1-2", bytes);
    return readInstallation(folder_ / "m/gu/QYLaunchProperties-1-2", own, why_);
  }
  std::string usual() const {
    return property("qystat_app_name", "Demo") + property("qystat_app_dir", folder_ / "m/gu/") +
           property("qystat_jre_name", "JRE") + property("qystat_update_url", "http://one.test/a");
  }

  TempDir folder_;
  std::string why_;
};

TEST_F(InstallationTest, IsWhatAStartSays) {
  const std::optional<Installation> its =
      read(usual() + property("qystat_install_type", "perm_all") +
           property("qydyna_hardened", "true") + property("qystat_wrapper_app_version", "\x04"));
  ASSERT_TRUE(its) << why_;
  EXPECT_EQ(its->appName, "Demo");
  EXPECT_EQ(its->updaterFolder, folder_ / "m/gu");
  EXPECT_EQ(its->masterFolder, folder_ / "m");
  EXPECT_EQ(its->updatesFolder(), folder_ / "m/QYUpdates");
  EXPECT_EQ(its->updateUrl, "http://one.test/a/");
  EXPECT_TRUE(its->isForAllUsers);
  EXPECT_TRUE(its->isHardened);
  EXPECT_EQ(its->bundleAppVersion, "");
}

TEST_F(InstallationTest, KeepsWhatIsItsUsersInHisOwnFolder) {
  EXPECT_EQ(read(usual(), "/home/me/own")->updatesFolder(), "/home/me/own/QYUpdates");
}

TEST_F(InstallationTest, TakesTheLastOfSeveralValues) {
  EXPECT_EQ(read(usual() + property("qystat_app_name", "Later"))->appName, "Later");
}

TEST_F(InstallationTest, AsksTheParametersOnlyWhereTheTailLeavesItToThem) {
  const std::string other = property("qydyna_update_url", "http://two.test/");
  EXPECT_EQ(read(other + usual())->updateUrl, "http://one.test/a/");
  EXPECT_EQ(read(usual() + property("qystat_update_url", "D") + other)->updateUrl,
            "http://two.test/");
  EXPECT_EQ(read(usual() + property("qystat_update_url", "http://no.invalid/x"))->updateUrl, "");
}

TEST_F(InstallationTest, IsNoneWithoutWhatEveryStartSays) {
  EXPECT_FALSE(read(""));
  EXPECT_FALSE(read(usual() + property("qystat_app_name", "")));
  EXPECT_FALSE(read(usual() + property("qystat_app_name", "../Demo")));
  EXPECT_FALSE(read(usual() + property("qystat_jre_name", "/opt/java/bin/java")));
  EXPECT_FALSE(read(usual() + property("qystat_app_dir", "m/gu")));
  EXPECT_FALSE(read(usual() + property("qystat_app_dir", "/")));
  EXPECT_NE(why_, "");
}

TEST_F(InstallationTest, TakesALaterStartsWhereTheFileHasBeenClearedAway) {
  writeFile(folder_ / "m/gu/QYLaunchProperties-9-1", usual());
  const std::string gone = folder_ / "m/gu/QYLaunchProperties-5-1";
  ASSERT_TRUE(readInstallation(gone, "", why_));
  EXPECT_FALSE(readInstallation(folder_ / "m/other/QYLaunchProperties-5-1", "", why_));
}

}  // namespace
}  // namespace quillory::testing
