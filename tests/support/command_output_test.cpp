#include "support/command_output.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <string>

#include "support/owned.h"
#include "tests/harness/temp_dir.h"

namespace quillory {
namespace {

using quillory::testing::TempDir;

std::string outputOf(const std::string& command) {
  const OwnedText output(runCommandGetOutput(command.c_str()));
  return output == nullptr ? "(null)" : output.get();
}

// No more files can be opened while it lives.
class NoMoreFiles {
 public:
  NoMoreFiles() {
    getrlimit(RLIMIT_NOFILE, &saved_);
    rlimit none = saved_;
    none.rlim_cur = 0;
    setrlimit(RLIMIT_NOFILE, &none);
  }
  ~NoMoreFiles() { setrlimit(RLIMIT_NOFILE, &saved_); }

 private:
  rlimit saved_ = {};
};

TEST(RunCommandGetOutput, StripsLineEndsAndSpacesAtTheEndOnly) {
  EXPECT_EQ(outputOf("printf '1.8\\n\\r '"), "1.8");
  EXPECT_EQ(outputOf("printf ' a \\n b\\n\\n'"), " a \n b");
  EXPECT_EQ(outputOf("printf 'kept\\t\\n'"), "kept\t");
  EXPECT_EQ(outputOf("printf ' \\n\\r '"), "");
}

TEST(RunCommandGetOutput, IsEmptyWithoutOutput) {
  EXPECT_EQ(outputOf("true"), "");
  EXPECT_EQ(outputOf("/nonexistent/tool 2>/dev/null"), "");
}

TEST(RunCommandGetOutput, TakesStandardOutputOnly) {
  EXPECT_EQ(outputOf("echo out; echo err 1>&2"), "out");
}

TEST(RunCommandGetOutput, ReturnsMoreThanTenThousandBytesWhole) {
  EXPECT_EQ(outputOf("head -c 100000 /dev/zero | tr '\\0' x"), std::string(100000, 'x'));
}

TEST(RunCommandGetOutput, IsNullWithoutAPipe) {
  NoMoreFiles limit;
  EXPECT_EQ(runCommandGetOutput("echo never"), nullptr);
}

TEST(RunProgramGetOutput, HandsOverTheArgumentsUnexpanded) {
  const OwnedText output(
      runProgramGetOutput({"/usr/bin/printf", "%s|", "$HOME", "`id`", "a\"b", "c d"}));
  EXPECT_STREQ(output.get(), "$HOME|`id`|a\"b|c d|");
}

TEST(RunProgramGetOutput, StripsLikeACommand) {
  const OwnedText output(runProgramGetOutput({"/usr/bin/printf", "1.8\\n\\r "}));
  EXPECT_STREQ(output.get(), "1.8");
}

TEST(RunProgramGetOutput, ReturnsLongOutputWhole) {
  const OwnedText output(runProgramGetOutput({"/bin/sh", "-c", "seq 1 30000; echo end"}));
  const std::string text = output.get();
  EXPECT_GT(text.size(), 65536U) << "more than a pipe holds";
  EXPECT_TRUE(text.ends_with("30000\nend"));
}

TEST(RunProgramGetOutput, IsNullForAProgramThatDoesNotExist) {
  EXPECT_EQ(runProgramGetOutput({"/nonexistent/$tool"}), nullptr);
  EXPECT_EQ(runProgramGetOutput({}), nullptr);
}

TEST(RunProgramGetOutput, IsNullWithoutAPipe) {
  NoMoreFiles limit;
  EXPECT_EQ(runProgramGetOutput({"/bin/true"}), nullptr);
}

TEST(EscapeSpaces, ReturnsTheTextItselfWithoutTheFlag) {
  char text[] = "a b";
  EXPECT_EQ(escapeSpaces(text, false), text);
}

TEST(EscapeSpaces, PutsABackslashBeforeEverySpace) {
  char text[] = " a  b\tc ";
  const OwnedText escaped(escapeSpaces(text, true));
  EXPECT_STREQ(escaped.get(), "\\ a\\ \\ b\tc\\ ");
}

TEST(EscapeSpaces, GivesANewEmptyTextForAnEmptyOne) {
  char text[] = "";
  const OwnedText escaped(escapeSpaces(text, true));
  EXPECT_NE(escaped.get(), text);
  EXPECT_STREQ(escaped.get(), "");
}

TEST(QuoteSpaciousString, QuotesWithAndWithoutSpaces) {
  for (const char* const text : {"", "plain", "with space", "\"quoted\""}) {
    const OwnedText quoted(quoteSpaciousString(text));
    EXPECT_EQ(quoted.get(), '"' + std::string(text) + '"');
  }
}

TEST(QuoteStringIfNecessary, LeavesATextThatBeginsWithAQuote) {
  char text[] = "\"half";
  EXPECT_EQ(quoteStringIfNecessary(text), text);
}

TEST(QuoteStringIfNecessary, QuotesAnyOther) {
  char text[] = "a \"b\"";
  const OwnedText quoted(quoteStringIfNecessary(text));
  EXPECT_STREQ(quoted.get(), "\"a \"b\"\"");
  char empty[] = "";
  const OwnedText quotedEmpty(quoteStringIfNecessary(empty));
  EXPECT_STREQ(quotedEmpty.get(), "\"\"");
}

}  // namespace
}  // namespace quillory
