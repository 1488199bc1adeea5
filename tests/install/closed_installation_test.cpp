#include "install/closed_installation.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "support/files.h"
#include "tests/harness/captured_log.h"
#include "tests/harness/captured_output.h"
#include "tests/harness/temp_dir.h"

namespace quillory::testing {
namespace {

namespace fs = std::filesystem;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

constexpr uid_t kAnother = 65533;

class ClosedInstallation : public ::testing::Test {
 protected:
  void TearDown() override { keepFoldersClosed("", ""); }

  std::string in(const std::string& name) const { return master_ + '/' + name; }
  void make(const std::string& name, unsigned mode) {
    fs::create_directories(in(name));
    fs::permissions(in(name), static_cast<fs::perms>(mode));
  }

  const TempDir folder_;
  const std::string master_ = folder_ / "Quillory-Demo";
  const CapturedLog log_;
  const CapturedOutput out_;
};

TEST_F(ClosedInstallation, IsMadeWhereItIsMissing) {
  EXPECT_TRUE(closeInstallation(master_));
  EXPECT_EQ(modeOf(master_), 0755U);
}

TEST_F(ClosedInstallation, IsNotWrittenByOthersAnyMore) {
  make("", 0777);
  EXPECT_TRUE(closeInstallation(master_));
  EXPECT_EQ(modeOf(master_), 0755U);
}

TEST_F(ClosedInstallation, HasItsNewFoldersForItsOwnerAlone) {
  closeInstallation(master_);
  EXPECT_EQ(makeNewDir(in("QuilloryTemp-1-2-app").c_str()), 0);
  EXPECT_EQ(makeDir(in("Quillory-JRE-17-complete").c_str()), 0);
  EXPECT_EQ(chmod777(in("QuilloryTemp-1-2-app").c_str()), 0);
  EXPECT_EQ(modeOf(in("QuilloryTemp-1-2-app")), 0700U);
  EXPECT_EQ(modeOf(in("Quillory-JRE-17-complete")), 0700U);
  EXPECT_THAT(log_.messages(), IsEmpty()) << "nothing has been opened to anybody";
  EXPECT_EQ(makeDir(in("logs").c_str()), 0);
  EXPECT_EQ(makeDir(in("Quillory-JRE-17-complete/bin").c_str()), 0);
  EXPECT_EQ(modeOf(in("logs")), 0777U);
  EXPECT_EQ(modeOf(in("Quillory-JRE-17-complete/bin")), 0777U) << "nobody else comes there";
}

TEST_F(ClosedInstallation, ClosesAFolderThatWasOpen) {
  make("Quillory-JRE-17-complete", 0777);
  closeInstallation(master_);
  EXPECT_EQ(chmod777(in("Quillory-JRE-17-complete").c_str()), 0);
  EXPECT_EQ(modeOf(in("Quillory-JRE-17-complete")), 0700U);
}

TEST_F(ClosedInstallation, IsOpenedWithTheUpdaterLast) {
  closeInstallation(master_);
  for (const char* name : {"Quillory-Quillory-1-complete", "Quillory-Demo-3-complete",
                           "Quillory-Zed-3-complete", "QuilloryTemp-1-2-app"})
    makeDir(in(name).c_str());
  openInstallation(master_);
  for (const char* name :
       {"Quillory-Quillory-1-complete", "Quillory-Demo-3-complete", "Quillory-Zed-3-complete", ""})
    EXPECT_EQ(modeOf(in(name)), 0777U) << name;
  EXPECT_EQ(modeOf(in("QuilloryTemp-1-2-app")), 0700U);
  const std::string command = "[ChMod] Executing chmod 777 \"" + master_;
  EXPECT_THAT(log_.messages(),
              ElementsAre(command + "/Quillory-Demo-3-complete\"\n",
                          command + "/Quillory-Zed-3-complete\"\n",
                          command + "/Quillory-Quillory-1-complete\"\n", command + "\"\n"));
  EXPECT_EQ(makeDir(in("Quillory-New-1-complete").c_str()), 0);
  EXPECT_EQ(modeOf(in("Quillory-New-1-complete")), 0777U);
}

TEST_F(ClosedInstallation, IsOpenedForReadingOnlyWhereTheOwnerWrites) {
  chooseInstallationModes(InstallationModes::kOwnerWrites);
  closeInstallation(master_);
  makeDir(in("Quillory-Quillory-1-complete").c_str());
  openInstallation(master_);
  chooseInstallationModes(InstallationModes::kOpenToAll);
  EXPECT_EQ(modeOf(in("Quillory-Quillory-1-complete")), 0755U);
  EXPECT_EQ(modeOf(master_), 0755U);
  EXPECT_THAT(log_.messages(), ElementsAre("[ChMod] Executing chmod 755 \"" + master_ +
                                           "/Quillory-Quillory-1-complete\"\n"));
}

TEST_F(ClosedInstallation, OpensWhatAnEarlierRunLeftClosed) {
  make("Quillory-Demo-3-complete", 0700);
  closeInstallation(master_);
  openInstallation(master_);
  EXPECT_EQ(modeOf(in("Quillory-Demo-3-complete")), 0777U);
}

TEST_F(ClosedInstallation, IsRefusedBehindALink) {
  fs::create_directory(folder_ / "elsewhere");
  fs::permissions(folder_ / "elsewhere", fs::perms::all);
  fs::create_directory_symlink("elsewhere", master_);
  EXPECT_FALSE(closeInstallation(master_));
  EXPECT_EQ(modeOf(folder_ / "elsewhere"), 0777U);
  EXPECT_THAT(log_.text(), HasSubstr("[SUDO] The master folder " + master_ +
                                     " is a link, or belongs to another user. Giving up.\n"));
}

TEST_F(ClosedInstallation, IsRefusedInAFolderOfAnotherUser) {
  if (geteuid() != 0) GTEST_SKIP() << "needs files of two users";
  make("", 0777);
  ASSERT_EQ(chown(master_.c_str(), kAnother, kAnother), 0);
  EXPECT_FALSE(closeInstallation(master_));
  EXPECT_EQ(modeOf(master_), 0777U);
  EXPECT_THAT(log_.text(), HasSubstr("belongs to another user. Giving up.\n"));
}

TEST_F(ClosedInstallation, ThatCannotBeMadeIsLeftToWhatFollows) {
  EXPECT_TRUE(closeInstallation(folder_ / "no/Quillory-Demo"));
  EXPECT_FALSE(isKeptClosed(folder_ / "no/Quillory-Demo/Quillory-x"));
}

TEST_F(ClosedInstallation, IsOutOfReachBehindAClosedFolder) {
  make("", 0755);
  make("new", 0700);
  make("new/bin", 0777);
  make("old", 0777);
  make("old/bin", 0755);
  make("safe", 0755);
  make("safe/open", 0777);
  for (const char* name : {"new/bin/java", "old/bin/java", "safe/java", "safe/open/java"})
    writeFile(in(name), "");
  EXPECT_TRUE(isOutOfReach(master_, in("new/bin/java")));
  EXPECT_FALSE(isOutOfReach(master_, in("old/bin/java")));
  EXPECT_TRUE(isOutOfReach(master_, in("safe/java")));
  EXPECT_FALSE(isOutOfReach(master_, in("safe/open/java")));
  EXPECT_FALSE(isOutOfReach(master_, in("missing")));
  fs::permissions(in("safe/java"), fs::perms::all);
  EXPECT_FALSE(isOutOfReach(master_, in("safe/java")));
}

TEST_F(ClosedInstallation, IsLookedAtWhereLinksLead) {
  make("", 0755);
  make("old", 0777);
  make("new", 0700);
  writeFile(in("old/java"), "");
  writeFile(folder_ / "outside/java", "");
  fs::create_directory_symlink("../old", in("new/home"));
  fs::create_directory_symlink("../../outside", in("new/outside"));
  EXPECT_FALSE(isOutOfReach(master_, in("new/home/java")));
  EXPECT_FALSE(isOutOfReach(master_, in("new/outside/java")));
}

TEST_F(ClosedInstallation, IsInReachWhereTheMasterFolderIsOpen) {
  make("", 0777);
  make("new", 0700);
  writeFile(in("new/java"), "");
  EXPECT_FALSE(isOutOfReach(master_, in("new/java"))) << "the folder itself can be exchanged";
}

TEST_F(ClosedInstallation, IsInReachOfWhoOwnsAFolder) {
  if (geteuid() != 0) GTEST_SKIP() << "needs files of two users";
  make("", 0755);
  make("his", 0755);
  writeFile(in("his/java"), "");
  ASSERT_EQ(chown(in("his").c_str(), kAnother, kAnother), 0);
  EXPECT_FALSE(isOutOfReach(master_, in("his/java")));
}

}  // namespace
}  // namespace quillory::testing
