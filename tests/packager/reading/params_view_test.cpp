#include "packager/reading/params_view.h"

#include <gtest/gtest.h>

#include "formats/markers.h"
#include "tests/harness/page_example.h"
#include "tests/harness/records.h"
#include "tests/harness/temp_dir.h"
#include "tests/packager/rules_of.h"

namespace quillory::pack {
namespace {

using testing::findingOf;
using testing::pageExample;
using testing::records;
using testing::rulesOf;
using testing::TempDir;
using testing::writeFile;

class ReadParams : public ::testing::Test {
 protected:
  TempDir dir_;
  Findings findings_;
};

TEST_F(ReadParams, ReadsTheExampleOfThePageAndWhatStandsBefore) {
  writeFile(dir_ / "params",
            "text before" + paramsMarker() + pageExample("formats/parameters-file.md", 1));
  const std::optional<ParamsView> params = readParams(dir_ / "params", findings_);
  ASSERT_TRUE(params);
  EXPECT_EQ(params->before, "text before");
  EXPECT_EQ(params->parameters, (Parameters{{"jre_name", "JRE"}, {"show_no_ui", "true"}}));
  EXPECT_EQ(*params->find("jre_name"), "JRE");
  EXPECT_EQ(params->find("missing"), nullptr);
  EXPECT_TRUE(findings_.empty());
}

TEST_F(ReadParams, NoticesACountThatPromisesTooMuch) {
  writeFile(dir_ / "params", paramsMarker() + records({"2000000000", "a", "b"}));
  EXPECT_EQ(readParams(dir_ / "params", findings_)->parameters.size(), 1u);
  EXPECT_EQ(findingOf(findings_, "cut-short").what,
            "the file promises 2000000000 parameters and holds 1");
}

TEST_F(ReadParams, NeedsTheMarker) {
  writeFile(dir_ / "params", "no marker");
  EXPECT_FALSE(readParams(dir_ / "params", findings_));
}

TEST_F(ReadParams, TakesTheLastValueOfAName) {
  writeFile(dir_ / "params",
            paramsMarker() + records({"3", "a", "first", "b", "other", "a", "last"}));
  const std::optional<ParamsView> params = readParams(dir_ / "params", findings_);
  ASSERT_TRUE(params);
  EXPECT_EQ(params->file, dir_ / "params");
  EXPECT_EQ(params->parameters.size(), 3u);
  EXPECT_EQ(*params->find("a"), "last");
  EXPECT_EQ(*params->find("b"), "other");
}

TEST_F(ReadParams, ReadsAsManyAsTheCountSays) {
  writeFile(dir_ / "params", paramsMarker() + records({"1", "a", "1", "b", "2"}));
  EXPECT_EQ(readParams(dir_ / "params", findings_)->parameters, (Parameters{{"a", "1"}}));
  for (const char* none : {"0", "-3"}) {
    writeFile(dir_ / "params", paramsMarker() + records({none, "a", "1"}));
    EXPECT_TRUE(readParams(dir_ / "params", findings_)->parameters.empty()) << none;
  }
  EXPECT_EQ(rulesOf(findings_), std::vector<std::string>{});
}

TEST_F(ReadParams, HasRoomForLongValues) {
  const std::string longest(199998, 'A');
  writeFile(dir_ / "params", paramsMarker() + records({"1", "splash_image", longest}));
  EXPECT_TRUE(*readParams(dir_ / "params", findings_)->find("splash_image") == longest);
  EXPECT_EQ(rulesOf(findings_), std::vector<std::string>{});
  writeFile(dir_ / "params", paramsMarker() + records({"1", "splash_image", longest + 'A'}));
  readParams(dir_ / "params", findings_);
  EXPECT_EQ(rulesOf(findings_), std::vector<std::string>{"record-limit"});
}

TEST_F(ReadParams, NoticesAFileThatIsCutAnywhere) {
  const std::string whole = paramsMarker() + records({"2", "name", "value", "b", "2"});
  for (std::size_t length = 0; length < whole.size(); ++length) {
    findings_.clear();
    writeFile(dir_ / "params", whole.substr(0, length));
    const std::optional<ParamsView> params = readParams(dir_ / "params", findings_);
    EXPECT_EQ(params.has_value(), length >= 64) << length;
    EXPECT_TRUE(!params || hasErrors(findings_)) << length;
  }
}

}  // namespace
}  // namespace quillory::pack
