#include "packager/report/findings.h"

#include <gtest/gtest.h>

#include <cerrno>

namespace quillory::pack {
namespace {

TEST(FindingAsText, SaysWhereWhatAndWhatToDo) {
  EXPECT_EQ(asText(Finding{Severity::kError, "name-dash", "it holds a dash", {"a.toml", 3}, "no"}),
            "a.toml:3: error: it holds a dash [name-dash]\n  -> no");
  EXPECT_EQ(asText(Finding{Severity::kWarning, "", "odd", {"a.toml", 0}, ""}),
            "a.toml: warning: odd");
  EXPECT_EQ(asText(Finding{Severity::kNote, "", "odd", {}, ""}), "note: odd");
}

TEST(HasErrors, IsTrueForErrorsOnly) {
  EXPECT_FALSE(hasErrors({}));
  EXPECT_FALSE(
      hasErrors({{Severity::kWarning, "", "", {}, ""}, {Severity::kNote, "", "", {}, ""}}));
  EXPECT_TRUE(hasErrors({{Severity::kNote, "", "", {}, ""}, {Severity::kError, "", "", {}, ""}}));
}

TEST(ThrowFileError, NamesTheFileAndTheReason) {
  try {
    throwFileError("some/file", "cannot be opened", ENOENT, "look again");
    FAIL();
  } catch (const PackError& e) {
    EXPECT_EQ(asText(e.finding()),
              "some/file: error: cannot be opened: No such file or directory\n  -> look again");
  }
}

TEST(ThrowFileError, NeedsNoAdvice) {
  try {
    throwFileError("some/file", "cannot be read", EACCES);
    FAIL();
  } catch (const PackError& e) {
    EXPECT_STREQ(e.what(), "cannot be read: Permission denied");
    EXPECT_EQ(asText(e.finding()), "some/file: error: cannot be read: Permission denied");
  }
}

TEST(PlaceAsText, HasALineOnlyWhereThereIsOne) {
  EXPECT_EQ(asText(Place{"a.toml", 1}), "a.toml:1");
  EXPECT_EQ(asText(Place{"a.toml", 4000000000}), "a.toml:4000000000");
  EXPECT_EQ(asText(Place{"a.toml", 0}), "a.toml");
  EXPECT_EQ(asText(Place{}), "");
}

TEST(SeverityAsText, IsAWord) {
  EXPECT_STREQ(asText(Severity::kNote), "note");
  EXPECT_STREQ(asText(Severity::kWarning), "warning");
  EXPECT_STREQ(asText(Severity::kError), "error");
}

TEST(PackError, BecomesAnErrorWithoutARule) {
  const Finding finding = PackError("it failed", "try again", {"file", 2}).finding();
  EXPECT_EQ(finding.severity, Severity::kError);
  EXPECT_EQ(finding.rule, "");
  EXPECT_EQ(finding.what, "it failed");
  EXPECT_EQ(asText(finding.place), "file:2");
  EXPECT_EQ(finding.advice, "try again");
  EXPECT_EQ(asText(PackError("it failed").finding()), "error: it failed");
}

TEST(RejectedInput, KeepsAllFindingsInTheirOrder) {
  const RejectedInput rejected({{Severity::kWarning, "first", "1", {"a", 1}, ""},
                                {Severity::kError, "second", "2", {"b", 0}, "do"}});
  ASSERT_EQ(rejected.findings().size(), 2u);
  EXPECT_EQ(asText(rejected.findings()[0]), "a:1: warning: 1 [first]");
  EXPECT_EQ(asText(rejected.findings()[1]), "b: error: 2 [second]\n  -> do");
  EXPECT_STREQ(rejected.what(), "the configuration or the content cannot be packed");
}

}  // namespace
}  // namespace quillory::pack
