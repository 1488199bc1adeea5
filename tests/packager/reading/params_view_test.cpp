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

}  // namespace
}  // namespace quillory::pack
