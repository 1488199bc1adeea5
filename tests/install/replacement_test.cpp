#include "install/replacement.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>

#include "install/unfinished.h"
#include "install/version_folders.h"
#include "support/exchange.h"
#include "support/folder_listing.h"
#include "tests/harness/captured_log.h"
#include "tests/harness/scoped_replace.h"
#include "tests/harness/temp_dir.h"

namespace quillory::testing {
namespace {

namespace fs = std::filesystem;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

int refuseToExchange(const char*, const char*) { return EINVAL; }

/// With a file system that exchanges folders, and with one that cannot.
class Replacement : public ::testing::TestWithParam<bool> {
 protected:
  Replacement() {
    writeFile(fresh_ + "/new/file", "new");
    writeFile(fresh_ + "/.n", "new");
  }
  void writeOld() {
    writeFile(place_ + "/old/file", "old");
    writeFile(place_ + "/.o", "a name that a walk leaves out");
  }
  void expectOnlyTheNew() const {
    EXPECT_THAT(namesIn(master_.str()), ElementsAre("Quillory-App-3-complete"));
    EXPECT_THAT(namesIn(place_), ElementsAre(".n", "new"));
    EXPECT_EQ(readFile(place_ + "/new/file"), "new");
  }

  TempDir master_;
  std::string fresh_ = master_ / "QuilloryTemp-1-2-app";
  std::string place_ = master_ / "Quillory-App-3-complete";
  CapturedLog log_;
  ScopedReplace<int (*)(const char*, const char*)> exchange_{
      exchangeCalls.exchange, GetParam() ? exchangeCalls.exchange : refuseToExchange};
};

TEST_P(Replacement, MovesAFolderToAnEmptyPlace) {
  EXPECT_TRUE(replaceFolder(fresh_, place_));
  expectOnlyTheNew();
  EXPECT_EQ(log_.text(), "");
}

TEST_P(Replacement, ReplacesAFolder) {
  writeOld();
  EXPECT_TRUE(replaceFolder(fresh_, place_));
  expectOnlyTheNew();
  EXPECT_EQ(log_.text(), "");
}

TEST_P(Replacement, ReplacesAFolderWithTheLinesOfTheRename) {
  writeOld();
  putInPlace(fresh_, place_);
  expectOnlyTheNew();
  EXPECT_TRUE(log_.contains("[Rename] File '" + fresh_ + "' renamed to '" + place_ + "'\n"));
  EXPECT_EQ(log_.contains("[Rename] The target already exists. Deleting.\n"), GetParam());
}

TEST_P(Replacement, FollowsNoLink) {
  writeFile(master_ / "elsewhere/precious", "kept");
  fs::create_directory_symlink(master_ / "elsewhere", place_);
  EXPECT_FALSE(replaceFolder(fresh_, place_));
  putInPlace(fresh_, place_);
  EXPECT_FALSE(fs::is_symlink(place_));
  EXPECT_THAT(namesIn(place_), ElementsAre(".n", "new"));
  EXPECT_THAT(namesIn(master_ / "elsewhere"), ElementsAre("precious"));
}

TEST_P(Replacement, LeavesAllAsItWasWhereThereIsNothingToMove) {
  writeOld();
  EXPECT_FALSE(replaceFolder(master_ / "missing", place_));
  EXPECT_THAT(namesIn(place_), ElementsAre(".o", "old"));
  EXPECT_FALSE(isAnythingSetAside(master_.str()));
}

INSTANTIATE_TEST_SUITE_P(Exchange, Replacement, ::testing::Bool());

TEST(ReplaceFolder, KeepsTheOldOneAsideUntilTheNewOneIsThere) {
  const TempDir master;
  const std::string place = master / "Quillory-App-3-complete";
  writeFile(place + "/old", "old");
  // Planted in the way: what lies behind a link is not where something is set aside.
  const TempDir elsewhere;
  fs::create_directory_symlink(elsewhere.path(), master / ".replaced");
  const ScopedReplace exchange(exchangeCalls.exchange, refuseToExchange);
  writeFile(master / "fresh/new", "new");
  EXPECT_FALSE(replaceFolder(master / "fresh", place));
  EXPECT_THAT(namesIn(place), ElementsAre("old"));
  EXPECT_TRUE(fs::is_empty(elsewhere.path()));
}

class BringBack : public ::testing::Test {
 protected:
  void bringBack() { bringBackWhatWasSetAside(master_.str()); }

  TempDir master_;
  std::string aside_ = master_ / ".replaced";
  CapturedLog log_;
};

TEST_F(BringBack, FillsThePlacesThatAKillHasLeftEmpty) {
  writeFile(aside_ + "/Quillory-App-3-complete/file", "old");
  writeFile(aside_ + "/Quillory-JRE-8-complete/file", "old");
  writeFile(master_ / "Quillory-JRE-8-complete/file", "new");
  EXPECT_TRUE(isAnythingSetAside(master_.str()));
  EXPECT_EQ(newestVersionFolder(master_.str(), "App"), std::nullopt) << "aside is not installed";
  bringBack();
  EXPECT_FALSE(isAnythingSetAside(master_.str()));
  EXPECT_FALSE(fs::exists(aside_));
  EXPECT_EQ(readFile(master_ / "Quillory-App-3-complete/file"), "old");
  EXPECT_EQ(readFile(master_ / "Quillory-JRE-8-complete/file"), "new");
  EXPECT_TRUE(
      log_.contains("[Extractor] Brought back Quillory-App-3-complete, which an earlier start had "
                    "set aside\n"));
}

TEST_F(BringBack, DoesNothingWhereNothingIs) {
  bringBack();
  EXPECT_THAT(namesIn(master_.str()), IsEmpty());
  const TempDir elsewhere;
  writeFile(elsewhere / "precious", "kept");
  fs::create_directory_symlink(elsewhere.path(), aside_);
  EXPECT_FALSE(isAnythingSetAside(master_.str()));
  bringBack();
  EXPECT_THAT(namesIn(elsewhere.str()), ElementsAre("precious"));
}

TEST(UnfinishedMark, IsThereFromMarkToFinish) {
  const TempDir folder;
  EXPECT_FALSE(isUnfinished(folder.str()));
  markUnfinished(folder.str());
  EXPECT_TRUE(isUnfinished(folder.str()));
  markUnfinished(folder.str());
  EXPECT_TRUE(isUnfinished(folder.str()));
  markFinished(folder.str());
  EXPECT_FALSE(isUnfinished(folder.str()));
  EXPECT_TRUE(fs::is_empty(folder.path()));
}

TEST(UnfinishedMark, IsNoLink) {
  const TempDir folder;
  fs::create_symlink(folder / "elsewhere", folder / ".unfinished");
  markUnfinished(folder.str());
  EXPECT_FALSE(isUnfinished(folder.str()));
  EXPECT_FALSE(fs::exists(folder / "elsewhere"));
}

}  // namespace
}  // namespace quillory::testing
