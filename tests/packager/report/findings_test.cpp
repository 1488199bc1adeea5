#include "packager/report/findings.h"

#include <gtest/gtest.h>

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

}  // namespace
}  // namespace quillory::pack
