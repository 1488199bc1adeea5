#include "formats/release_fields.h"

#include <gtest/gtest.h>

#include <string>

namespace quillory {
namespace {

using namespace std::string_literals;

// What is read of a value, or why it is refused.
template <typename Read>
std::string readOf(Read read, const std::string& value) {
  const std::string bytes = value + '\0';
  StrictRecords records(bytes);
  const std::string text = read(records, "Record");
  return records.isRefused() ? records.refusal() : text;
}

TEST(ReadFileName, TakesOneComponentOfAPath) {
  EXPECT_EQ(readOf(readFileName, "Quillory-Demo-1-archive.p2.l2"), "Quillory-Demo-1-archive.p2.l2");
  for (const char* value : {"", ".hidden", "..", "a/b", "/a"})
    EXPECT_EQ(readOf(readFileName, value), "Record: it is no plain file name") << value;
}

TEST(ReadVersion, TakesWhatAFolderCanBeNamedAfter) {
  EXPECT_EQ(readOf(readVersion, "17"), "17");
  EXPECT_EQ(readOf(readVersion, ""), "Record: it is no version");
  EXPECT_EQ(readOf(readVersion, "1/2"), "Record: it is no version");
}

TEST(ReadSha256, TakesSixtyFourDigits) {
  const std::string digits(64, 'a');
  EXPECT_EQ(readOf(readSha256, digits), digits);
  EXPECT_EQ(readOf(readSha256, digits.substr(1)), "Record: it is no SHA-256");
  EXPECT_EQ(readOf(readSha256, std::string(64, 'g')), "Record: it is no SHA-256");
}

}  // namespace
}  // namespace quillory
