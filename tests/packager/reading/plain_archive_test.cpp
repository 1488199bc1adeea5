#include "packager/reading/plain_archive.h"

#include <gtest/gtest.h>

#include "packager/bytes/byte_sinks.h"
#include "tests/harness/page_example.h"
#include "tests/harness/temp_dir.h"

namespace quillory::pack {
namespace {

using testing::pageExample;
using testing::TempDir;
using testing::writeFile;

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

}  // namespace
}  // namespace quillory::pack
