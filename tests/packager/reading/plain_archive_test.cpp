#include "packager/reading/plain_archive.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>

#include "packager/bytes/byte_sinks.h"
#include "tests/harness/child_process.h"
#include "tests/harness/file_size_limit.h"
#include "tests/harness/page_example.h"
#include "tests/harness/records.h"
#include "tests/harness/temp_dir.h"

namespace quillory::pack {
namespace {

namespace fs = std::filesystem;
using testing::FileSizeLimit;
using testing::modeOf;
using testing::pageExample;
using testing::readFile;
using testing::records;
using testing::runChild;
using testing::TempDir;
using testing::writeFile;

// The environment's TMPDIR until the end of the scope.
class TemporaryFolderOf {
 public:
  explicit TemporaryFolderOf(const char* folder) {
    const char* before = std::getenv("TMPDIR");
    isSet_ = before != nullptr;
    before_ = isSet_ ? before : "";
    set(folder);
  }
  ~TemporaryFolderOf() { set(isSet_ ? before_.c_str() : nullptr); }
  TemporaryFolderOf(const TemporaryFolderOf&) = delete;
  TemporaryFolderOf& operator=(const TemporaryFolderOf&) = delete;

 private:
  static void set(const char* folder) {
    if (folder == nullptr) {
      unsetenv("TMPDIR");
    } else {
      setenv("TMPDIR", folder, 1);
    }
  }

  bool isSet_ = false;
  std::string before_;
};

class PlainArchiveTest : public ::testing::Test {
 protected:
  TempDir dir_;
  Findings findings_;
};

TEST_F(PlainArchiveTest, DecompressesPartOfAFile) {
  const std::string bytes = pageExample("formats/archive.md", 1);
  StringSink packed;
  LzmaSinkAdapter lzma(1, packed);
  lzma.write(bytes);
  lzma.finish();
  writeFile(dir_ / "tail", "before" + packed.bytes() + "behind");
  const PlainArchive archive({dir_ / "tail", 6, static_cast<std::int64_t>(packed.bytes().size())},
                             true);
  const ArchiveListing listing = archive.list(findings_, "name");
  ASSERT_EQ(listing.entries.size(), 2u);
  EXPECT_EQ(archive.contentOf(listing.entries[1], 100), "hello");
  EXPECT_THROW(PlainArchive({dir_ / "tail", 6, 20}, true), PackError);
  EXPECT_THROW(PlainArchive({dir_ / "tail", 0, 6}, true), PackError);
}

// What xz makes of these bytes.
std::string packedByXz(const std::string& bytes) {
  TempDir dir;
  writeFile(dir / "plain", bytes);
  return runChild({"xz", "--format=lzma", "-c", dir / "plain"}).out;
}

TEST_F(PlainArchiveTest, DecompressesWhatXzCompressed) {
  const std::string bytes = records({"0", "a", "900000"}) + std::string(900000, 'x');
  writeFile(dir_ / "a.p2.l2", packedByXz(bytes));
  const PlainArchive archive(wholeFile(dir_ / "a.p2.l2"), true);
  EXPECT_TRUE(readFile(archive.path()) == bytes);
  EXPECT_EQ(modeOf(archive.path()), 0600u);
}

TEST_F(PlainArchiveTest, CopiesPartOfAFileThatIsNotCompressed) {
  writeFile(dir_ / "tail", "before" + records({"1", "lib", ""}) + "behind");
  const PlainArchive archive({dir_ / "tail", 6, 7}, false);
  EXPECT_EQ(readFile(archive.path()), records({"1", "lib", ""}));
}

TEST_F(PlainArchiveTest, RefusesAStreamThatIsCutOrFollowedByMore) {
  const std::string packed = packedByXz(records({"1", "lib", ""}));
  for (std::size_t length = 0; length < packed.size(); ++length) {
    writeFile(dir_ / "a", packed.substr(0, length));
    EXPECT_THROW(PlainArchive(wholeFile(dir_ / "a"), true), PackError) << length;
  }
  writeFile(dir_ / "a", packed + "x");
  EXPECT_THROW(PlainArchive(wholeFile(dir_ / "a"), true), PackError);
  writeFile(dir_ / "a", "text");
  try {
    PlainArchive(wholeFile(dir_ / "a"), true);
    FAIL();
  } catch (const PackError& e) {
    EXPECT_EQ(e.finding().place.file, dir_ / "a");
  }
}

TEST_F(PlainArchiveTest, LeavesNothingBehind) {
  fs::create_directory(dir_ / "tmp");
  const TemporaryFolderOf temporary((dir_ / "tmp").c_str());
  writeFile(dir_ / "a", records({""}));
  {
    const PlainArchive archive(wholeFile(dir_ / "a"), false);
    EXPECT_EQ(archive.path().find(dir_ / "tmp"), 0u);
    EXPECT_FALSE(fs::is_empty(dir_ / "tmp"));
  }
  EXPECT_TRUE(fs::is_empty(dir_ / "tmp"));
  EXPECT_THROW(PlainArchive({dir_ / "a", 0, 100}, false), PackError);
  {
    const FileSizeLimit full(0);
    EXPECT_THROW(PlainArchive(wholeFile(dir_ / "a"), false), PackError);
  }
  EXPECT_TRUE(fs::is_empty(dir_ / "tmp"));
}

TEST_F(PlainArchiveTest, GivesAnEntrysContentAndNotThatOfTheNext) {
  writeFile(dir_ / "a", records({"0", "a", "3"}) + "abc" + records({"0", "b", "2"}) + "de");
  const PlainArchive archive(wholeFile(dir_ / "a"), false);
  Findings found;
  const ArchiveListing listing = archive.list(found, "name");
  EXPECT_EQ(archive.contentOf(listing.entries.at(0), 100), "abc");
  EXPECT_EQ(archive.contentOf(listing.entries.at(0), 2), "ab");
  EXPECT_EQ(archive.contentOf(listing.entries.at(1), 100), "de");
  ListedEntry negative = listing.entries.at(0);
  negative.length = -1;
  EXPECT_EQ(archive.contentOf(negative, 100), "");
}

TEST_F(PlainArchiveTest, NamesWhatPeopleKnowInItsFindings) {
  writeFile(dir_ / "a", records({"0", "a", "10"}) + "short");
  Findings found = {{Severity::kNote, "before", "", {"other", 0}, ""}};
  PlainArchive(wholeFile(dir_ / "a"), false).list(found, "app.p2");
  ASSERT_EQ(found.size(), 2u);
  EXPECT_EQ(found[0].place.file, "other");
  EXPECT_EQ(found[1].place.file, "app.p2");
  EXPECT_EQ(found[1].rule, "cut-short");
}

TEST_F(PlainArchiveTest, ReadsARegionToItsEndAndNoFurther) {
  const std::string content(600000, 'x');
  writeFile(dir_ / "a", "before" + content + "behind");
  std::string read;
  readRegion({dir_ / "a", 6, 600000}, [&](std::string_view block) { read += block; });
  EXPECT_TRUE(read == content);
  EXPECT_THROW(readRegion({dir_ / "a", 6, 600007}, [](std::string_view) {}), PackError);
  int blocks = 0;
  readRegion({dir_ / "a", 6, 0}, [&](std::string_view) { ++blocks; });
  EXPECT_EQ(blocks, 0);
}

// Ends the process, in which a signal has been noticed, with 0 where the test is right; at once, so
// that the folders of the test stay with their owner.
void readWhenInterrupted(const std::string& path) {
  noticeInterruptions();
  std::raise(SIGTERM);
  int blocks = 0;
  try {
    readRegion(wholeFile(path), [&](std::string_view) { ++blocks; });
  } catch (const PackError& e) {
    std::_Exit(blocks == 0 && e.what() == std::string("interrupted") ? 0 : 1);
  }
  std::_Exit(2);
}

TEST_F(PlainArchiveTest, ReadsNoBlockAfterAnInterruption) {
  writeFile(dir_ / "a", "x");
  EXPECT_EXIT(readWhenInterrupted(dir_ / "a"), ::testing::ExitedWithCode(0), "");
}

TEST_F(PlainArchiveTest, KnowsHowLongAFileIs) {
  writeFile(dir_ / "a", "12345");
  const FileRegion region = wholeFile(dir_ / "a");
  EXPECT_EQ(region.path, dir_ / "a");
  EXPECT_EQ(region.offset, 0);
  EXPECT_EQ(region.length, 5);
  EXPECT_THROW(wholeFile(dir_ / "missing"), PackError);
}

TEST(TemporaryFolder, IsTheOneOfTheEnvironmentOrTmp) {
  static constexpr struct {
    const char* given;
    const char* expected;
  } kCases[] = {{"/some/folder", "/some/folder"}, {"", "/tmp"}, {nullptr, "/tmp"}};
  for (const auto& [given, expected] : kCases) {
    const TemporaryFolderOf temporary(given);
    EXPECT_EQ(temporaryFolder(), expected);
  }
}

}  // namespace
}  // namespace quillory::pack
