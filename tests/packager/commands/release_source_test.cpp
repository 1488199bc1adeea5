#include "packager/commands/release_source.h"

#include <gtest/gtest.h>

#include "packager/report/findings.h"
#include "tests/harness/temp_dir.h"
#include "update/fetch.h"

namespace quillory::pack {
namespace {

using testing::TempDir;
using testing::writeFile;

TEST(ReleaseSource, IsAFolderOrAServer) {
  EXPECT_TRUE(isWebAddress("https://example.com/"));
  EXPECT_TRUE(isWebAddress("http://example.com/"));
  EXPECT_FALSE(isWebAddress("dist/release"));
  EXPECT_FALSE(isWebAddress("ftp://example.com/"));
  EXPECT_EQ(ReleaseSource("https://example.com/u").base(), "https://example.com/u/");
  EXPECT_THROW(ReleaseSource("/no/such/folder"), PackError);
}

TEST(ReleaseSource, AnswersForAFolderAsAServerDoesAndWritesItDown) {
  const TempDir dir;
  writeFile(dir / "a name", "content");
  ReleaseSource source(dir.str());
  const update::TextFetch there = update::fetchText(source, source.base() + "a%20name", 100, "");
  EXPECT_EQ(there.result.status, 200);
  EXPECT_EQ(there.bytes, "content");
  EXPECT_EQ(update::fetchText(source, source.base() + "none", 100, "").result.status, 404);
  const update::TextFetch tooLong = update::fetchText(source, source.base() + "a%20name", 3, "");
  EXPECT_EQ(tooLong.result.end, update::TransferEnd::kTooLong);
  ASSERT_EQ(source.requests().size(), 3u);
  EXPECT_EQ(source.requests()[0].name, "a name");
  EXPECT_EQ(source.requests()[0].bytes, 7);
  EXPECT_EQ(source.requests()[1].status, 404);
}

TEST(ReleaseSource, GoesOnWhereATransferWasBrokenOff) {
  class Kept : public update::TransferSink {
   public:
    bool begin(const update::TransferHead& head) override {
      from = head.from;
      return true;
    }
    bool take(const char* bytes, std::size_t size) override {
      content.append(bytes, size);
      return true;
    }
    std::int64_t from = 0;
    std::string content;
  };
  const TempDir dir;
  writeFile(dir / "file", "0123456789");
  ReleaseSource source(dir.str());
  Kept kept;
  const update::TransferResult result =
      source.get({.url = source.base() + "file", .from = 4, .mostBytes = 100}, kept);
  EXPECT_EQ(result.status, 206);
  EXPECT_EQ(kept.from, 4);
  EXPECT_EQ(kept.content, "456789");
}

}  // namespace
}  // namespace quillory::pack
