#include "packager/reading/record_input.h"

#include <gtest/gtest.h>

#include <cstdint>

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

TEST_F(RecordInputTest, NamesAFileThatCannotBeOpened) {
  try {
    RecordInput(dir_ / "missing", findings_);
    FAIL();
  } catch (const PackError& e) {
    EXPECT_EQ(asText(e.finding()),
              dir_ / "missing" + ": error: cannot be opened: No such file or directory");
  }
}

TEST_F(RecordInputTest, TakesValuesUpToTheLimitOfTheirReader) {
  RecordInput input = open(records({std::string(1022, 'x'), std::string(8, 'y'), "z"}));
  EXPECT_EQ(input.text("Path").size(), 1022u);
  EXPECT_EQ(input.text("Short", 10).size(), 8u);
  EXPECT_EQ(rulesOf(findings_), std::vector<std::string>{});
  RecordInput over = open(std::string("\0", 1) + std::string(10, 'y'));
  over.text("Empty");
  EXPECT_EQ(over.text("Short", 10), std::string(9, 'y'));
  EXPECT_EQ(over.position(), 10);
  ASSERT_EQ(rulesOf(findings_), std::vector<std::string>{"record-limit"});
  EXPECT_EQ(asText(findings_[0]),
            dir_ / "file" +
                ": error: the record \"Short\" at 1 has more than the 8 bytes that the launcher "
                "reads; it takes the rest for the next record [record-limit]");
}

TEST_F(RecordInputTest, ReadsNumbersAsTheLauncherAndNoticesWhatIsNone) {
  static constexpr struct {
    const char* text;
    std::int64_t value;
    bool isNumber;
  } kCases[] = {{"0", 0, true},    {"-5", -5, true},
                {"007", 7, true},  {"9223372036854775807", INT64_MAX, true},
                {"+1", 1, false},  {" 1", 1, false},
                {"1 ", 1, false},  {"", 0, false},
                {"-", 0, false},   {"true", 0, false},
                {"--1", 0, false}, {"1-", 1, false}};
  for (const auto& [text, value, isNumber] : kCases) {
    findings_.clear();
    RecordInput input = open(records({text}));
    EXPECT_EQ(input.number("n"), value) << text;
    EXPECT_EQ(findings_.empty(), isNumber) << text;
  }
}

TEST_F(RecordInputTest, IsTrueForTheNumberOneOnly) {
  RecordInput input = open(records({"1", "01", "2", "-1", "0", ""}));
  for (const bool expected : {true, true, false, false, false, false}) {
    EXPECT_EQ(input.boolean("flag"), expected);
  }
}

TEST_F(RecordInputTest, KnowsItsPlace) {
  RecordInput input = open(records({"abc", "de"}));
  EXPECT_EQ(input.size(), 7);
  EXPECT_EQ(input.position(), 0);
  input.text("a");
  EXPECT_EQ(input.position(), 4);
  EXPECT_EQ(input.bytes(2), "de");
  EXPECT_FALSE(input.atEnd());
  EXPECT_EQ(input.bytes(10), std::string(1, '\0'));
  EXPECT_TRUE(input.atEnd());
  EXPECT_EQ(input.bytes(10), "");
  input.seek(1);
  EXPECT_EQ(input.text("a"), "bc");
  EXPECT_TRUE(open("").atEnd());
}

TEST_F(RecordInputTest, ReportsTheEndOnceWhereverTheFileIsCut) {
  const std::string whole = records({"abc", "5", "", "-7"});
  for (std::size_t length = 0; length < whole.size(); ++length) {
    findings_.clear();
    RecordInput input = open(whole.substr(0, length));
    input.text("a");
    input.number("b");
    input.text("c");
    input.number("d");
    EXPECT_EQ(rulesOf(findings_), std::vector<std::string>{"cut-short"}) << length;
  }
}

TEST_F(RecordInputTest, HoldsAMarkerWhetherTheLauncherSeesItOrNot) {
  for (const std::size_t before : {0u, 65530u, 65531u, 65535u, 65536u}) {
    RecordInput input = open(std::string(before, 'M') + "MARKER" + "rest");
    ASSERT_TRUE(input.holdsMarker("MARKER")) << before;
    EXPECT_EQ(input.bytes(10), "rest") << before;
  }
  RecordInput none = open(std::string(70000, 'M') + "MARKE");
  EXPECT_FALSE(none.holdsMarker("MARKER"));
  EXPECT_TRUE(none.atEnd());
  RecordInput behind = open("MARKER");
  behind.seek(1);
  EXPECT_FALSE(behind.holdsMarker("MARKER"));
}

TEST(NoMarker, TellsWhatIsKnownOfThatFile) {
  const Findings findings = {{Severity::kWarning, "marker-unseen", "of another", {"b", 0}, ""},
                             {Severity::kWarning, "number", "something else", {"a", 0}, ""},
                             {Severity::kWarning, "marker-unseen", "unseen", {"a", 0}, "do"}};
  EXPECT_EQ(asText(noMarker(findings, "a", "none", "advice").finding()),
            "a: error: unseen\n  -> do");
  EXPECT_EQ(asText(noMarker(findings, "c", "none", "advice").finding()),
            "c: error: none\n  -> advice");
}

}  // namespace
}  // namespace quillory::pack
