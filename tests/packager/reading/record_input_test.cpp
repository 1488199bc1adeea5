#include "packager/reading/record_input.h"

#include <gtest/gtest.h>

#include "tests/harness/records.h"
#include "tests/harness/temp_dir.h"
#include "tests/packager/rules_of.h"

namespace quillory::pack {
namespace {

using testing::records;
using testing::rulesOf;
using testing::TempDir;
using testing::writeFile;

class RecordInputTest : public ::testing::Test {
 protected:
  RecordInput open(const std::string& bytes) {
    writeFile(dir_ / "file", bytes);
    return RecordInput(dir_ / "file", findings_);
  }

  TempDir dir_;
  Findings findings_;
};

TEST_F(RecordInputTest, ReadsTextsAndNumbersAsTheLauncherDoes) {
  RecordInput input = open(records({"abc", "", "-5", "12abc", "1", "x"}));
  EXPECT_EQ(input.text("a"), "abc");
  EXPECT_EQ(input.text("b"), "");
  EXPECT_EQ(input.number("c"), -5);
  EXPECT_EQ(input.number("d"), 12);
  EXPECT_TRUE(input.boolean("e"));
  EXPECT_FALSE(input.boolean("f"));
  EXPECT_TRUE(input.atEnd());
  EXPECT_EQ(rulesOf(findings_), (std::vector<std::string>{"number", "number"}));
  EXPECT_EQ(findings_[0].what, "the record \"d\" at 8 is no number: \"12abc\"");
}

TEST_F(RecordInputTest, CutsALongValueWhereTheLauncherDoesAndSaysSo) {
  RecordInput input = open(std::string(1023, 'x') + '\0' + records({"next"}));
  EXPECT_EQ(input.text("Path"), std::string(1023, 'x'));
  EXPECT_EQ(input.text("Then"), "") << "the terminator that was left";
  EXPECT_EQ(input.text("Next"), "next");
  EXPECT_EQ(rulesOf(findings_), std::vector<std::string>{"record-limit"});
}

TEST_F(RecordInputTest, ReportsTheEndOfTheFileOnce) {
  RecordInput input = open("abc");
  EXPECT_EQ(input.text("a"), "abc");
  EXPECT_EQ(input.text("b"), "");
  EXPECT_EQ(input.number("c"), 0);
  EXPECT_EQ(rulesOf(findings_), std::vector<std::string>{"cut-short"});
  EXPECT_EQ(findings_[0].what, "the file ends in the record \"a\"");
}

TEST_F(RecordInputTest, FindsAMarkerWhereverItStands) {
  for (const std::size_t before : {0u, 1u, 63u, 65535u, 65536u, 65500u, 200000u}) {
    RecordInput input = open(std::string(before, 'x') + "MARKER" + "rest");
    ASSERT_TRUE(input.findMarker("MARKER")) << before;
    EXPECT_EQ(input.bytes(10), "rest") << before;
  }
  RecordInput none = open(std::string(70000, 'M'));
  EXPECT_FALSE(none.findMarker("MARKER"));
}

}  // namespace
}  // namespace quillory::pack
