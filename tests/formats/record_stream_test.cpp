#include "formats/record_stream.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>

#include "support/owned.h"
#include "tests/harness/page_example.h"
#include "tests/harness/records.h"
#include "tests/harness/stream_of.h"

namespace quillory {
namespace {

using testing::pageExample;
using testing::records;
using testing::StreamOf;
using namespace std::string_literals;

std::string readStringAsText(std::FILE* stream, int capacity) {
  const OwnedText block(readString(stream, "value", capacity));
  return block.get();
}

std::string readStringAsText(std::FILE* stream) {
  const OwnedText block(readString(stream, "value"));
  return block.get();
}

// What the statement prints on standard output.
template <typename Statement>
std::string printedBy(Statement statement) {
  ::testing::internal::CaptureStdout();
  statement();
  return ::testing::internal::GetCapturedStdout();
}

TEST(ReadString, ReadsOneValueAfterTheOther) {
  StreamOf stream("abc\0\0x\0"s);
  EXPECT_EQ(readStringAsText(stream.get()), "abc");
  EXPECT_EQ(readStringAsText(stream.get()), "");
  EXPECT_EQ(readStringAsText(stream.get()), "x");
}

TEST(ReadString, KeepsEveryByteThatIsNotZero) {
  std::string value;
  for (int byte = 1; byte < 256; ++byte) value.push_back(static_cast<char>(byte));
  StreamOf stream(records({value, "next"}));
  EXPECT_EQ(readStringAsText(stream.get()), value);
  EXPECT_EQ(readStringAsText(stream.get()), "next");
}

TEST(ReadString, FillsItsBlockWithZeros) {
  StreamOf stream(records({"ab"}));
  const OwnedText block(readString(stream.get(), "value", 40));
  EXPECT_EQ(std::string(block.get(), 40), "ab" + std::string(38, '\0'));
}

TEST(ReadString, TakesAValueOfCapacityMinusTwoWithoutAWarning) {
  const std::string value(1022, 'v');
  StreamOf stream(records({value, "next"}));
  const std::string printed = printedBy([&] { EXPECT_EQ(readStringAsText(stream.get()), value); });
  EXPECT_EQ(printed, "");
  EXPECT_EQ(readStringAsText(stream.get()), "next");
}

TEST(ReadString, WarnsOfAValueOfCapacityMinusOneAndLeavesItsTerminator) {
  const std::string value(1023, 'v');
  StreamOf stream(records({value, "next"}));
  const std::string printed = printedBy([&] { EXPECT_EQ(readStringAsText(stream.get()), value); });
  EXPECT_EQ(printed,
            "***WARNING - STRING TOO LONG FOR ALLOC 1023>1024! (READSTRING) [" + value + "]\n");
  EXPECT_EQ(readStringAsText(stream.get()), "");
  EXPECT_EQ(readStringAsText(stream.get()), "next");
}

TEST(ReadString, StaysInsideAValueThatIsTooLong) {
  StreamOf stream(records({"abcdefg", "next"}));
  const std::string printed =
      printedBy([&] { EXPECT_EQ(readStringAsText(stream.get(), 5), "abcd"); });
  EXPECT_EQ(printed, "***WARNING - STRING TOO LONG FOR ALLOC 4>5! (READSTRING) [abcd]\n");
  EXPECT_EQ(readStringAsText(stream.get(), 5), "efg");
  EXPECT_EQ(readStringAsText(stream.get(), 5), "next") << "4 bytes warn, but are all there";
}

TEST(ReadString, ReturnsWhatThereIsAtTheEndOfTheFile) {
  StreamOf stream("par");
  const std::string printed = printedBy([&] {
    EXPECT_EQ(readStringAsText(stream.get()), "par");
    EXPECT_EQ(readStringAsText(stream.get()), "");
  });
  EXPECT_EQ(printed, "");
}

TEST(ReadString, ReadsNothingIntoABlockWithoutRoom) {
  for (const int capacity : {1, 0, -1, std::numeric_limits<int>::min()}) {
    SCOPED_TRACE(capacity);
    StreamOf stream(records({"ab"}));
    EXPECT_EQ(readStringAsText(stream.get(), capacity), "");
    EXPECT_EQ(readText(stream.get(), "value"), "ab");
  }
}

TEST(ReadText, ReadsWhatReadStringReads) {
  StreamOf stream(records({"abc", "", "0123456789"}));
  EXPECT_EQ(readText(stream.get(), "value"), "abc");
  EXPECT_EQ(readText(stream.get(), "value"), "");
  const std::string printed =
      printedBy([&] { EXPECT_EQ(readText(stream.get(), "value", 11), "0123456789"); });
  EXPECT_EQ(printed, "***WARNING - STRING TOO LONG FOR ALLOC 10>11! (READSTRING) [0123456789]\n");
}

TEST(ReadInt, ConvertsByTheRulesOfAtol) {
  static constexpr struct {
    const char* stored;
    int expected;
  } kCases[] = {{"0", 0},      {"8192", 8192},
                {"-1", -1},    {"-5", -5},
                {"+7", 7},     {" \t\n9", 9},
                {"12abc", 12}, {"", 0},
                {"true", 0},   {"0x10", 0},
                {"- 1", 0},    {"1.9", 1},
                {"007", 7},    {"2147483647", 2147483647}};
  for (const auto& [stored, expected] : kCases) {
    SCOPED_TRACE(::testing::Message() << "stored as \"" << stored << '"');
    StreamOf stream(records({stored, "next"}));
    EXPECT_EQ(readInt(stream.get(), "number"), expected);
    EXPECT_EQ(readText(stream.get(), "value"), "next");
  }
}

TEST(ReadInt, TakesThirtyEightDigitsBeforeItIsCut) {
  StreamOf stream(records({std::string(37, '0') + "7", std::string(39, '0') + "7"}));
  EXPECT_EQ(readInt(stream.get(), "number"), 7);
  printedBy([&] { EXPECT_EQ(readInt(stream.get(), "number"), 0); });
  EXPECT_EQ(readInt(stream.get(), "the cut rest"), 7);
}

TEST(ReadInt, IsZeroAtTheEndOfTheFile) {
  StreamOf stream("");
  EXPECT_EQ(readInt(stream.get(), "number"), 0);
}

TEST(ReadLong, HoldsSixtyFourBits) {
  StreamOf stream(records({"5000000000", "-5000000000"}));
  EXPECT_EQ(readLong(stream.get(), "number"), 5000000000);
  EXPECT_EQ(readLong(stream.get(), "number"), -5000000000);
}

TEST(ReadLong, SaturatesBeyondThem) {
  StreamOf stream(records({"99999999999999999999", "-99999999999999999999"}));
  EXPECT_EQ(readLong(stream.get(), "number"), std::numeric_limits<long>::max());
  EXPECT_EQ(readLong(stream.get(), "number"), std::numeric_limits<long>::min());
}

TEST(ReadBoolean, IsTrueOnlyForTheNumberOne) {
  static constexpr struct {
    const char* stored;
    bool expected;
  } kCases[] = {{"1", true},  {"+1", true},  {"01", true},         {" 1", true}, {"1x", true},
                {"2", false}, {"-1", false}, {"true", false},      {"", false},  {"yes", false},
                {"0", false}, {"10", false}, {"4294967297", false}};
  for (const auto& [stored, expected] : kCases) {
    SCOPED_TRACE(::testing::Message() << "stored as \"" << stored << '"');
    StreamOf stream(records({stored}));
    EXPECT_EQ(readBoolean(stream.get(), "flag"), expected);
  }
}

TEST(ReadBoolean, IsFalseAtTheEndOfTheFile) {
  StreamOf stream("");
  EXPECT_FALSE(readBoolean(stream.get(), "flag"));
}

TEST(IsAtEnd, TakesNothingFromTheStream) {
  StreamOf stream("a");
  EXPECT_FALSE(isAtEnd(stream.get()));
  EXPECT_EQ(readText(stream.get(), "value"), "a");
  EXPECT_TRUE(isAtEnd(stream.get()));
}

TEST(IsAtEnd, EndsACountThatPromisesMoreThanTheFileHolds) {
  StreamOf stream(records({"2000000000", "a", "b"}));
  const int count = readInt(stream.get(), "count");
  int groups = 0;
  for (int i = 0; i < count && !isAtEnd(stream.get()); ++i, ++groups)
    readText(stream.get(), "value");
  EXPECT_EQ(groups, 2);
}

TEST(RecordStreamPage, ShowsAStreamThatReadsAsItSays) {
  StreamOf stream(pageExample("formats/record-stream.md", 3));
  EXPECT_EQ(readText(stream.get(), "value"), "abc");
  EXPECT_EQ(readText(stream.get(), "value"), "");
  EXPECT_EQ(readText(stream.get(), "value"), "x");
  EXPECT_EQ(readInt(stream.get(), "number"), -5);
  EXPECT_TRUE(readBoolean(stream.get(), "flag"));
  ASSERT_EQ(readInt(stream.get(), "count"), 2);
  EXPECT_EQ(readText(stream.get(), "name"), "a");
  EXPECT_EQ(readText(stream.get(), "value"), "1\n2");
  EXPECT_EQ(readText(stream.get(), "name"), "b");
  EXPECT_EQ(readText(stream.get(), "value"), "");
  EXPECT_TRUE(isAtEnd(stream.get()));
}

TEST(RecordStreamPage, ExampleCutAnywhereReadsToItsEndWithoutHarm) {
  const std::string whole = pageExample("formats/record-stream.md", 3);
  for (std::size_t length = 0; length < whole.size(); ++length) {
    SCOPED_TRACE(length);
    StreamOf stream(whole.substr(0, length));
    std::string values;
    while (!isAtEnd(stream.get())) values += readText(stream.get(), "value") + '\0';
    if (length > 0 && whole[length - 1] == '\0') values.resize(length);
    EXPECT_EQ(values.substr(0, length), whole.substr(0, length));
  }
}

}  // namespace
}  // namespace quillory
