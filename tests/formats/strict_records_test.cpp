#include "formats/strict_records.h"

#include <gtest/gtest.h>

#include "tests/harness/records.h"

namespace quillory {
namespace {

using testing::records;

TEST(StrictRecords, GivesTheValuesInTheirOrder) {
  const std::string bytes = records({"text", "12", "", "a\nb\tc\r\n", "\xC3\xA9"});
  StrictRecords stream(bytes);
  EXPECT_EQ(stream.text("a", 4), "text");
  EXPECT_EQ(stream.position(), 5u);
  EXPECT_EQ(stream.number("b"), 12);
  EXPECT_EQ(stream.text("c", 0), "");
  EXPECT_EQ(stream.lines("d", 100), "a\nb\tc\r\n");
  EXPECT_FALSE(stream.isAtEnd());
  EXPECT_EQ(stream.text("e", 2), "\xC3\xA9");
  EXPECT_TRUE(stream.isAtEnd());
  EXPECT_FALSE(stream.isRefused());
  EXPECT_EQ(stream.refusal(), "");
}

TEST(StrictRecords, TakesNumbersInOneSpellingOnly) {
  static constexpr struct {
    const char* stored;
    std::int64_t value;
  } kGood[] = {{"0", 0}, {"1", 1}, {"999999999999999", 999'999'999'999'999}};
  for (const auto& [stored, value] : kGood) {
    const std::string bytes = records({stored});
    StrictRecords stream(bytes);
    EXPECT_EQ(stream.number("n"), value);
    EXPECT_EQ(stream.refusal(), "");
  }
  for (const char* bad : {"", "-1", "+1", " 1", "1 ", "01", "00", "1a", "0x1", "1.0", "\xD9\xA1"}) {
    const std::string bytes = records({bad});
    StrictRecords stream(bytes);
    EXPECT_EQ(stream.number("n"), 0) << bad;
    EXPECT_EQ(stream.refusal(), "n: it is no plain number") << bad;
  }
  const std::string bytes = records({"1000000000000000"});
  StrictRecords stream(bytes);
  EXPECT_EQ(stream.number("n"), 0);
  EXPECT_EQ(stream.refusal(), "n: it has more than 15 bytes");
}

TEST(StrictRecords, KeepsToTheLimitOfANumber) {
  const std::string bytes = records({"100", "101"});
  StrictRecords stream(bytes);
  EXPECT_EQ(stream.number("n", 100), 100);
  EXPECT_EQ(stream.number("n", 100), 0);
  EXPECT_EQ(stream.refusal(), "n: it is more than 100");
}

TEST(StrictRecords, TakesTextAlone) {
  for (const char* bad : {"a\nb", "\t", "\x7F", "\x1F", "\xFF", "\xC3", "\xED\xA0\x80"}) {
    const std::string bytes = records({bad});
    StrictRecords stream(bytes);
    EXPECT_EQ(stream.text("t", 100), "");
    EXPECT_EQ(stream.refusal(), "t: it is no text");
  }
  const std::string bytes = records({"\x1B[31m"});
  StrictRecords stream(bytes);
  EXPECT_EQ(stream.lines("l", 100), "");
  EXPECT_TRUE(stream.isRefused());
}

TEST(StrictRecords, RefusesWhatIsTooLong) {
  const std::string bytes = records({"12345"});
  StrictRecords stream(bytes);
  EXPECT_EQ(stream.text("t", 4), "");
  EXPECT_EQ(stream.refusal(), "t: it has more than 4 bytes");
}

TEST(StrictRecords, RefusesTheEndOfTheFileAnywhere) {
  for (const std::string& bytes : {std::string(), std::string("cut")}) {
    StrictRecords stream(bytes);
    EXPECT_EQ(stream.text("t", 100), "");
    EXPECT_EQ(stream.refusal(), "t: the file ends here");
  }
}

TEST(StrictRecords, GivesNothingBehindWhatItRefused) {
  const std::string bytes = records({"x", "1", "a"});
  StrictRecords stream(bytes);
  EXPECT_EQ(stream.number("first"), 0);
  EXPECT_EQ(stream.number("second"), 0);
  EXPECT_EQ(stream.text("third", 100), "");
  stream.refuse("fourth", "for nothing");
  EXPECT_EQ(stream.refusal(), "first: it is no plain number");
}

}  // namespace
}  // namespace quillory
