#include "support/folder_listing.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>

#include "tests/harness/temp_dir.h"
#include "tests/support/ordinary_user.h"

namespace quillory {
namespace {

using testing::AsOrdinaryUser;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using testing::TempDir;
using ::testing::UnorderedElementsAre;
using testing::writeFile;

TEST(ListForWalk, NamesFilesFoldersAndLinks) {
  const TempDir folder;
  writeFile(folder / "file", "");
  writeFile(folder / "sub/inner", "");
  std::filesystem::create_symlink("nowhere", folder / "link");
  EXPECT_THAT(*listForWalk(folder.str().c_str()), UnorderedElementsAre("file", "sub", "link"));
}

TEST(ListForWalk, LeavesOutTwoByteNamesThatBeginWithADot) {
  const TempDir folder;
  for (const char* name : {".a", ".~", ".ab", ".DS_Store", "a", "ab", "a."})
    writeFile(folder / name, "");
  EXPECT_THAT(*listForWalk(folder.str().c_str()),
              UnorderedElementsAre(".ab", ".DS_Store", "a", "ab", "a."));
}

TEST(ListForWalk, IsEmptyForAnEmptyFolder) {
  const TempDir folder;
  EXPECT_THAT(*listForWalk(folder.str().c_str()), IsEmpty());
}

TEST(ListForWalk, IsNothingForWhatCannotBeOpenedAsAFolder) {
  const AsOrdinaryUser user;
  const TempDir folder;
  writeFile(folder / "file", "");
  writeFile(folder / "closed/file", "");
  std::filesystem::permissions(folder / "closed", std::filesystem::perms::none);
  EXPECT_FALSE(listForWalk((folder / "missing").c_str()));
  EXPECT_FALSE(listForWalk((folder / "file").c_str()));
  EXPECT_FALSE(listForWalk((folder / "closed").c_str()));
}

TEST(ListFolder, NamesEverythingButTheDotsInByteOrder) {
  const TempDir folder;
  for (const char* name : {"b", "a", ".a", "B", "\xC3\xA4", "...", "10", "9"})
    writeFile(folder / name, "");
  EXPECT_THAT(*listFolder(folder.str()),
              ElementsAre("...", ".a", "10", "9", "B", "a", "b", "\xC3\xA4"));
}

TEST(ListFolder, IsNothingWithAReasonForWhatCannotBeOpened) {
  const TempDir folder;
  EXPECT_FALSE(listFolder(folder / "missing"));
  EXPECT_EQ(errno, ENOENT);
  writeFile(folder / "file", "");
  EXPECT_FALSE(listFolder(folder / "file"));
  EXPECT_EQ(errno, ENOTDIR);
}

TEST(NamesIn, AreThoseOfListFolderOrNone) {
  const TempDir folder;
  writeFile(folder / "b", "");
  writeFile(folder / "a", "");
  EXPECT_THAT(namesIn(folder.str()), ElementsAre("a", "b"));
  EXPECT_THAT(namesIn(folder / "missing"), IsEmpty());
}

TEST(CountEntries, CountsTheDots) {
  const TempDir folder;
  EXPECT_EQ(countEntries(folder.str()), 2);
  writeFile(folder / ".a", "");
  EXPECT_EQ(countEntries(folder.str()), 3);
  EXPECT_EQ(countEntries(folder / "missing"), 0);
}

}  // namespace
}  // namespace quillory
