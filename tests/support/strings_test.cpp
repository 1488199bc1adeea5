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

}  // namespace
}  // namespace quillory
