#include "packager/writing/record_writer.h"

#include <gtest/gtest.h>

#include <cstdint>

#include "formats/tail_format.h"
#include "packager/report/findings.h"
#include "tests/harness/records.h"

namespace quillory::pack {
namespace {

using testing::records;

TEST(RecordWriter, EndsEachValueWithAZeroByte) {
  StringSink bytes;
  RecordWriter writer(bytes);
  writer.text("a", "abc");
  writer.text("b", "");
  writer.number("c", -5);
  writer.boolean("d", true);
  writer.boolean("e", false);
  EXPECT_EQ(bytes.bytes(), records({"abc", "", "-5", "1", "0"}));
}

TEST(RecordWriter, TakesTheLongestValueThatReadersDoNotCut) {
  StringSink bytes;
  RecordWriter writer(bytes);
  writer.text("x", std::string(1022, 'x'));
  EXPECT_EQ(bytes.bytes().size(), 1023u);
  EXPECT_THROW(writer.text("x", std::string(1023, 'x')), PackError);
  writer.text("x", std::string(4998, 'x'), kUpdateUrlCapacity);
  EXPECT_THROW(writer.text("x", std::string(4999, 'x'), kUpdateUrlCapacity), PackError);
}

TEST(RecordWriter, RefusesAZeroByteInsideAValueAndNamesTheRecord) {
  StringSink bytes;
  try {
    RecordWriter(bytes).text("App Name", std::string("a\0b", 3));
    FAIL();
  } catch (const PackError& e) {
    EXPECT_STREQ(e.what(), "\"App Name\" holds a zero byte, which would end it");
  }
  EXPECT_EQ(bytes.bytes(), "");
}

TEST(RecordWriter, NamesTheRecordThatIsTooLong) {
  StringSink bytes;
  try {
    RecordWriter(bytes).text("Path", "123456789", 10);
    FAIL();
  } catch (const PackError& e) {
    EXPECT_STREQ(e.what(), "\"Path\" has 9 bytes; the launcher takes up to 8");
  }
  EXPECT_EQ(bytes.bytes(), "");
  RecordWriter(bytes).text("Path", "12345678", 10);
  EXPECT_EQ(bytes.bytes(), records({"12345678"}));
}

TEST(RecordWriter, WritesNumbersOf64Bits) {
  StringSink bytes;
  RecordWriter writer(bytes);
  writer.number("a", INT64_MIN);
  writer.number("b", INT64_MAX);
  EXPECT_EQ(bytes.bytes(), records({"-9223372036854775808", "9223372036854775807"}));
}

}  // namespace
}  // namespace quillory::pack
