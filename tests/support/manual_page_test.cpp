#include "support/manual_page.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace quillory::testing {
namespace {

using ::testing::EndsWith;
using ::testing::HasSubstr;

// What a page has behind its name.
template <class Writer>
std::string bodyOf(Writer write) {
  ManualPage page("tool", "tool 1.0", "does things");
  const std::size_t begin = page.text().size();
  write(page);
  return page.text().substr(begin);
}

TEST(ManualPage, BeginsWithWhatManListsAndSearches) {
  const ManualPage page("a-tool", "a-tool 1.0", "does \"things\"");
  EXPECT_EQ(page.text(),
            ".TH \"A\\-TOOL\" 1 \"\" \"a\\-tool 1.0\"\n.ad l\n.nh\n"
            ".SH NAME\na\\-tool \\- does \\(dqthings\\(dq\n");
}

TEST(ManualPage, LetsNoTextBecomeACommandOrAnotherCharacter) {
  EXPECT_EQ(bodyOf([](ManualPage& page) { page.paragraph(".sh 'a' `b` -c ^d ~e \\fB\"f\""); }),
            ".PP\n\\&.sh \\(aqa\\(aq \\(gab\\(ga \\-c \\(had \\(tie \\efB\\(dqf\\(dq\n");
  EXPECT_EQ(bodyOf([](ManualPage& page) { page.literal("'br\n.br"); }),
            ".PP\n.RS 4\n.nf\n\\(aqbr\n\\&.br\n.fi\n.RE\n");
  EXPECT_EQ(bodyOf([](ManualPage& page) { page.item("--a \"B\"", ".br"); }),
            ".TP\n.B \"\\-\\-a \\(dqB\\(dq\"\n\\&.br\n");
}

TEST(ManualPage, FillsTextsAndKeepsTheLinesOfLiterals) {
  EXPECT_THAT(bodyOf([](ManualPage& page) { page.paragraph("  one\n   two  three"); }),
              EndsWith("\none two three\n"));
  EXPECT_THAT(bodyOf([](ManualPage& page) { page.literal("one\n   two\n"); }),
              HasSubstr("\none\n   two\n.fi\n"));
}

TEST(ManualPage, HasNoEmptyParagraphBelowAHeading) {
  const std::string body = bodyOf([](ManualPage& page) {
    page.heading("FIRST");
    page.paragraph("a");
    page.paragraph("b");
    page.subheading("second");
    page.literal("c");
  });
  EXPECT_THAT(body, HasSubstr(".SH \"FIRST\"\na\n.PP\nb\n.SS \"second\"\n.RS 4\n"));
}

}  // namespace
}  // namespace quillory::testing
