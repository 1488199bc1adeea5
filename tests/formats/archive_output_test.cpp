#include "formats/archive_output.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>

#include "formats/archive.h"
#include "tests/formats/archive_parts.h"
#include "tests/harness/captured_log.h"

namespace quillory {
namespace {

using testing::ArchiveSite;
using testing::CapturedLog;
using ::testing::ElementsAre;
using testing::endOfArchive;
using ::testing::ExitedWithCode;
using testing::fileEntry;
using testing::folderEntry;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using testing::modeOf;
using testing::readFile;
using testing::writeFile;
namespace fs = std::filesystem;

TEST(WhyRefused, RefusesParentComponentsWhereverTheyStand) {
  for (const char* path : {"..", "../x", "a/..", "a/../b", "a/b/../../..", "/..", "//../x", "../"})
    EXPECT_STREQ(whyRefused("/d", path, 0), "it leaves the destination folder") << path;
}

TEST(WhyRefused, AcceptsNamesThatOnlyLookLikeThem) {
  for (const char* path : {"", ".", "./a", "...", "a..b", "..a", "a..", "a/..b/c", "/a", "a//b"})
    EXPECT_EQ(whyRefused("/d", path, 0), nullptr) << path;
}

TEST(WhyRefused, RefusesAPathThatMayHaveBeenCut) {
  EXPECT_EQ(whyRefused("/d", std::string(1022, 'a'), 0), nullptr);
  EXPECT_STREQ(whyRefused("/d", std::string(1023, 'a'), 0), "it is too long");
}

TEST(WhyRefused, RefusesAPathThatDoesNotFitWithItsSuffix) {
  const std::string dest = '/' + std::string(3998, 'd');  // 3,999, the separator, and 999 more
  EXPECT_EQ(whyRefused(dest, std::string(999, 'a'), 0), nullptr);
  EXPECT_STREQ(whyRefused(dest, std::string(1000, 'a'), 0), "it is too long");
  EXPECT_EQ(whyRefused(dest, std::string(996, 'a'), 3), nullptr);
  EXPECT_STREQ(whyRefused(dest, std::string(997, 'a'), 3), "it is too long");
}

// What a hostile archive, or someone who can write to the destination folder, may try. The
// processes that end here are forks, so that they have this test's own folders.
class HostileArchive : public ::testing::Test, public ArchiveSite {
 protected:
  HostileArchive() {
    fs::create_directory(beside("victim"));
    writeFile(beside("victim/file"), "untouched");
    fs::permissions(beside("victim/file"), fs::perms{0600});
    fs::permissions(beside("victim"), fs::perms{0700});
  }

  ~HostileArchive() override {
    EXPECT_EQ(readFile(beside("victim/file")), "untouched");
    EXPECT_EQ(modeOf(beside("victim/file")), 0600U);
    EXPECT_EQ(modeOf(beside("victim")), 0700U);
    EXPECT_THAT(testing::namesBelow(beside("victim")), ElementsAre("file"));
  }

  void extract(const std::string& bytes) const {
    writeFile(archive(), bytes);
    extractArchive(nullptr, archive().c_str(), destDir().c_str(), nullptr);
  }
};

TEST_F(HostileArchive, PathOutOfTheDestinationIsRefusedBeforeAnythingIsWritten) {
  for (const char* path : {"../victim/file", "new/../../victim/file", "..", "new/.."}) {
    SCOPED_TRACE(path);
    for (const char* type : {"0", "1", "2"}) {
      EXPECT_EXIT(extract(fileEntry(path, "bad", type)), ExitedWithCode(1),
                  HasSubstr("[ExtractArchiveFile] Refusing archive file " + std::string(path) +
                            " (0): it leaves the destination folder\n"));
    }
    EXPECT_THAT(extracted(), IsEmpty());
  }
}

TEST_F(HostileArchive, PathThatFilledItsRecordIsRefused) {
  EXPECT_EXIT(extract(fileEntry("new/" + std::string(1500, 'a'), "bad")), ExitedWithCode(1),
              HasSubstr(": it is too long\n"));
  EXPECT_THAT(extracted(), IsEmpty());
}

TEST_F(HostileArchive, AbsolutePathStaysInTheDestination) {
  extract(fileEntry(beside("victim/file"), "bad"));
  EXPECT_EQ(readFile(destDir() + beside("victim/file")), "bad");
}

TEST_F(HostileArchive, LinkAtAnOutputPathIsReplaced) {
  fs::create_symlink(beside("victim/file"), inDest("a"));
  fs::create_symlink(beside("victim/none"), inDest("b"));
  extract(fileEntry("a", "new") + fileEntry("b", "new") + endOfArchive());
  EXPECT_EQ(readFile(inDest("a")), "new");
  EXPECT_FALSE(fs::is_symlink(inDest("a")));
  EXPECT_FALSE(fs::is_symlink(inDest("b")));
}

TEST_F(HostileArchive, HardLinkAtAnOutputPathIsNotWrittenThrough) {
  fs::create_hard_link(beside("victim/file"), inDest("a"));
  extract(fileEntry("a", "new"));
  EXPECT_EQ(readFile(inDest("a")), "new");
}

TEST_F(HostileArchive, LinkInPlaceOfAFolderIsReplaced) {
  for (const char* path : {"a", "a/", "a/b"}) {
    SCOPED_TRACE(path);
    fs::create_directory_symlink(beside("victim"), inDest("a"));
    extract(folderEntry(path) + fileEntry("a/c", "new"));
    EXPECT_FALSE(fs::is_symlink(inDest("a")));
    EXPECT_EQ(readFile(inDest("a/c")), "new");
    fs::remove_all(inDest("a"));
  }
}

TEST_F(HostileArchive, LinkOnTheWayIsReplaced) {
  fs::create_directory(inDest("a"));
  fs::create_directory_symlink(beside("victim"), inDest("a/b"));
  extract(fileEntry("a/b/file", "new"));
  EXPECT_EQ(readFile(inDest("a/b/file")), "new");
  EXPECT_FALSE(fs::is_symlink(inDest("a/b")));
}

TEST_F(HostileArchive, FileInPlaceOfAFolderIsReplaced) {
  fs::create_hard_link(beside("victim/file"), inDest("a"));
  extract(fileEntry("a/b", "new"));
  EXPECT_EQ(readFile(inDest("a/b")), "new");
}

// An archive lies in the folder that it is extracted into. What took its place would be verified
// instead of it.
TEST_F(HostileArchive, EntryInThePlaceOfItsArchiveIsRefused) {
  const std::string inside = inDest("App.p2");
  for (const std::string& entry :
       {fileEntry("App.p2", "bad"), fileEntry("App", "bad", "2"), folderEntry("App.p2"),
        fileEntry("App.p2/bad", "bad"), folderEntry("App.p2/bad/worse")}) {
    SCOPED_TRACE(entry);
    writeFile(inside, fileEntry("before", "good") + entry);
    EXPECT_EXIT(extractArchive(nullptr, inside.c_str(), destDir().c_str(), nullptr),
                ExitedWithCode(1), HasSubstr(": it would take the place of its archive\n"));
    EXPECT_EQ(readFile(inside), fileEntry("before", "good") + entry);
  }
}

TEST_F(HostileArchive, FileNameIsNeverACommand) {
  const std::string name = "a\"; touch " + beside("made") + "; $(touch made)`touch made`\\";
  extract(fileEntry(name, "new") + fileEntry("-R", "new") + fileEntry("two\nlines", "new"));
  EXPECT_EQ(readFile(inDest(name)), "new");
  EXPECT_EQ(modeOf(inDest(name)), 0755U);
  EXPECT_EQ(modeOf(inDest("two\nlines")), 0755U);
  EXPECT_FALSE(fs::exists(beside("made")));
}

TEST_F(HostileArchive, FileOfAnotherUserInASharedFolderEndsTheProcess) {
  if (getuid() != 0) GTEST_SKIP() << "only root can make files of two users";
  fs::permissions(beside(""), fs::perms{0755});
  fs::permissions(destDir(), fs::perms{01777});
  writeFile(inDest("a"), "of root");
  writeFile(archive(), fileEntry("a", "bad"));
  constexpr uid_t kNobody = 65534;
  EXPECT_EXIT(
      {
        if (setuid(kNobody) != 0) _exit(77);
        extractArchive(nullptr, archive().c_str(), destDir().c_str(), nullptr);
      },
      ExitedWithCode(1),
      HasSubstr("Unable to extract archive file a (3), unable to open file for writing\n"));
  EXPECT_EQ(readFile(inDest("a")), "of root");
}

TEST_F(HostileArchive, PathsWithoutANameDoNoHarm) {
  CapturedLog log;
  extract(folderEntry("") + folderEntry(".") + folderEntry("/") + fileEntry("/a", "hi"));
  EXPECT_THAT(extracted(), ElementsAre("a"));
}

TEST_F(HostileArchive, FileWithoutANameEndsTheProcess) {
  for (const char* path : {"", ".", "/", "a/"}) {
    SCOPED_TRACE(path);
    EXPECT_EXIT(extract(fileEntry(path, "bad")), ExitedWithCode(1),
                HasSubstr("unable to open file for writing\n"));
  }
}

}  // namespace
}  // namespace quillory
