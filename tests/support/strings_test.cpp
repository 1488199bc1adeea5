#include "support/strings.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>

#include <climits>
#include <cstring>
#include <string>

#include "support/owned.h"

namespace quillory {
namespace {

TEST(AllocCopy, ReturnsACopyOfItsOwn) {
  char original[] = "text";
  const OwnedText copy(allocCopy(original));
  original[0] = 'n';
  EXPECT_STREQ(copy.get(), "text");
}

TEST(AllocCopy, CopiesTheEmptyString) { EXPECT_STREQ(OwnedText(allocCopy("")).get(), ""); }

TEST(CloneString, IsAllocCopyByAnotherName) {
  EXPECT_STREQ(OwnedText(cloneString("a text")).get(), "a text");
  EXPECT_STREQ(OwnedText(cloneString("")).get(), "");
}

TEST(AllocSubstring, CutsOutThatManyBytes) {
  static constexpr struct {
    int start, length;
    const char* expected;
  } kCases[] = {{0, 5, "hello"}, {1, 3, "ell"}, {4, 1, "o"}, {2, 0, ""}, {5, 0, ""}};
  for (const auto& [start, length, expected] : kCases) {
    SCOPED_TRACE(::testing::Message() << start << ", " << length);
    EXPECT_STREQ(OwnedText(allocSubstring("hello", start, length)).get(), expected);
  }
}

TEST(AllocSubstring, StaysInsideTheStringWhateverTheRange) {
  static constexpr struct {
    int start, length;
    const char* expected;
  } kCases[] = {{3, 100, "lo"}, {5, 1, ""},        {6, 1, ""},  {INT_MAX, INT_MAX, ""},
                {-1, 2, "he"},  {INT_MIN, 1, "h"}, {0, -1, ""}, {1, INT_MIN, ""}};
  for (const auto& [start, length, expected] : kCases) {
    SCOPED_TRACE(::testing::Message() << start << ", " << length);
    EXPECT_STREQ(OwnedText(allocSubstring("hello", start, length)).get(), expected);
  }
}

TEST(AllocTempString, PutsOneBehindTheOther) {
  EXPECT_STREQ(OwnedText(allocTempString("a", "bc")).get(), "abc");
  EXPECT_STREQ(OwnedText(allocTempString("", "b")).get(), "b");
  EXPECT_STREQ(OwnedText(allocTempString("a", "")).get(), "a");
  EXPECT_STREQ(OwnedText(allocTempString("", "")).get(), "");
}

TEST(AllocTempPath, PutsOneSeparatorBetween) {
  static constexpr struct {
    const char *a, *b, *expected;
  } kCases[] = {{"/a", "b", "/a/b"}, {"/a/", "b", "/a/b"}, {"", "b", "b"},
                {"a", "", "a/"},     {"/", "b", "/b"},     {"a", "/b", "a//b"}};
  for (const auto& [a, b, expected] : kCases) {
    SCOPED_TRACE(expected);
    std::string first(a), second(b);
    EXPECT_STREQ(OwnedText(allocTempPath(first.data(), second.data())).get(), expected);
  }
}

TEST(LastIndexOf, FindsTheLastOne) {
  EXPECT_EQ(lastIndexOf("/a/b/c", '/'), 4);
  EXPECT_EQ(lastIndexOf("/", '/'), 0);
  EXPECT_EQ(lastIndexOf("abc", '/'), -1);
  EXPECT_EQ(lastIndexOf("", '/'), -1);
}

TEST(IndexOf, CountsOccurrencesFrom1) {
  EXPECT_EQ(indexOf("/a/b/c", '/', 1), 0);
  EXPECT_EQ(indexOf("/a/b/c", '/', 2), 2);
  EXPECT_EQ(indexOf("/a/b/c", '/', 3), 4);
  EXPECT_EQ(indexOf("/a/b/c", '/', 4), -1);
}

TEST(IndexOf, IsMinusOneForCountsBelow1AndForTheEmptyString) {
  EXPECT_EQ(indexOf("/a/b/c", '/', 0), -1);
  EXPECT_EQ(indexOf("/a/b/c", '/', -1), -1);
  EXPECT_EQ(indexOf("", '/', 1), -1);
}

TEST(IntegerToA, WritesAtMost7CharactersAndReturnsTheWholeLength) {
  static constexpr struct {
    int value;
    const char* written;
    int returned;
  } kCases[] = {{0, "0", 1},
                {-42, "-42", 3},
                {1234567, "1234567", 7},
                {12345678, "1234567", 8},
                {123456789, "1234567", 9},
                {INT_MIN, "-214748", 11}};
  for (const auto& [value, written, returned] : kCases) {
    SCOPED_TRACE(value);
    char text[10];
    std::memset(text, '#', sizeof text);
    EXPECT_EQ(integerToA(value, text), returned);
    EXPECT_STREQ(text, written);
    EXPECT_EQ(text[8], '#');
    EXPECT_EQ(text[9], '#');
  }
}

TEST(AddArgs, CopiesExactlyOneSlotOf1024Bytes) {
  ASSERT_EQ(argsiz, 1024U);
  char source[1025];
  std::memset(source, 'x', sizeof source);
  std::strcpy(source, "first");
  source[1023] = 'y';
  char* list[2] = {};
  int count = 0;

  EXPECT_EQ(addArgs(list, &count, source), 1);
  const OwnedText slot(list[0]);
  EXPECT_EQ(count, 1);
  EXPECT_STREQ(slot.get(), "first");
  EXPECT_EQ(std::memcmp(slot.get(), source, 1024), 0);
  EXPECT_EQ(list[1], nullptr);
}

TEST(AddArgs, AppendsBehindWhatIsThere) {
  char source[1024] = "one";
  char* list[3] = {};
  int count = 0;
  addArgs(list, &count, source);
  std::strcpy(source, "two");
  EXPECT_EQ(addArgs(list, &count, source), 2);
  const OwnedText first(list[0]), second(list[1]);
  EXPECT_STREQ(first.get(), "one");
  EXPECT_STREQ(second.get(), "two");
}

TEST(GetEnvP, IsTheEnvironmentOfTheProcess) {
  ASSERT_EQ(setenv("QUILLORY_TEST_VARIABLE", "its value", 1), 0);
  bool found = false;
  for (char** entry = getEnvP(); *entry != nullptr; ++entry)
    found = found || std::strcmp(*entry, "QUILLORY_TEST_VARIABLE=its value") == 0;
  EXPECT_TRUE(found);
  unsetenv("QUILLORY_TEST_VARIABLE");
}

TEST(Is32Bit, IsAlwaysFalse) { EXPECT_FALSE(is32Bit()); }

TEST(EditToWindowsSubsystem, TouchesNothing) {
  editToWindowsSubsystem("/no/such/file", 1);
  EXPECT_NE(access("/no/such/file", F_OK), 0);
}

}  // namespace
}  // namespace quillory
