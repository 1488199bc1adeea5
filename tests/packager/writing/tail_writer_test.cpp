#include "packager/writing/tail_writer.h"

#include <gtest/gtest.h>

#include "formats/markers.h"
#include "packager/report/findings.h"
#include "tests/harness/page_example.h"
#include "tests/harness/records.h"
#include "tests/harness/temp_dir.h"

namespace quillory::pack {
namespace {

using testing::pageExample;
using testing::records;
using testing::TempDir;
using testing::writeFile;

TEST(WriteTail, GivesTheExampleOfThePage) {
  TempDir dir;
  writeFile(dir / "tool", "#!");
  StringSink bytes;
  writeTailRecords(bytes, {"Demo", "3", "", "7", "1500", "", "1", "perm_user", "-quiet", "8", "D"});
  writeTailEntry(bytes, {"lzma64", dir / "tool"});
  EXPECT_EQ(bytes.bytes(), pageExample("formats/wrapper-tail.md"));
}

TEST(WriteTail, WritesAnEntryWithoutASourceAsAnEmptyFile) {
  StringSink bytes;
  writeTailEntry(bytes, {"verpatch.exe", ""});
  EXPECT_EQ(bytes.bytes(), records({"0", "verpatch.exe", "0"}));
}

TEST(WriteTail, HasRoomForLongKeysAndUrls) {
  StringSink bytes;
  TailRecords tail;
  tail.signaturePublicKey = std::string(8190, 'a');
  tail.updateUrl = std::string(4998, 'u');
  writeTailRecords(bytes, tail);
  tail.signaturePublicKey += 'a';
  EXPECT_THROW(writeTailRecords(bytes, tail), PackError);
}

TEST(TailMarker, HasTheBytesOfThePage) {
  EXPECT_EQ(tailMarker(), pageExample("formats/record-stream.md", 1));
}

}  // namespace
}  // namespace quillory::pack
