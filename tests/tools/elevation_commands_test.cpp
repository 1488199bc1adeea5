#include "tools/elevation_commands.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace quillory {
namespace {

using ::testing::ElementsAre;

TEST(ShellQuoted, PutsEveryTextBetweenSingleQuotes) {
  EXPECT_EQ(shellQuoted("plain"), "'plain'");
  EXPECT_EQ(shellQuoted(""), "''");
  EXPECT_EQ(shellQuoted("two words"), "'two words'");
  EXPECT_EQ(shellQuoted("$HOME `id` \"q\" \\ ; * # !"), "'$HOME `id` \"q\" \\ ; * # !'");
  EXPECT_EQ(shellQuoted("line\nbreak\r\t"), "'line\nbreak\r\t'");
  EXPECT_EQ(shellQuoted("gr\xc3\xbc\xc3\x9f \xff"), "'gr\xc3\xbc\xc3\x9f \xff'");
}

TEST(ShellQuoted, LeavesTheQuotesForASingleQuote) {
  EXPECT_EQ(shellQuoted("it's"), R"('it'\''s')");
  EXPECT_EQ(shellQuoted("'"), R"(''\''')");
  EXPECT_EQ(shellQuoted("';id;'"), R"(''\'';id;'\''')");
}

TEST(AppleScriptQuoted, PutsABackslashBeforeWhatWouldEndTheText) {
  EXPECT_EQ(appleScriptQuoted("plain"), R"("plain")");
  EXPECT_EQ(appleScriptQuoted(""), R"("")");
  EXPECT_EQ(appleScriptQuoted("a \"b\""), R"("a \"b\"")");
  EXPECT_EQ(appleScriptQuoted("back\\slash\\"), R"("back\\slash\\")");
  EXPECT_EQ(appleScriptQuoted("\\\""), R"("\\\"")");
  EXPECT_EQ(appleScriptQuoted("it's $HOME & `id`"), R"("it's $HOME & `id`")");
}

TEST(AppleScriptQuoted, KeepsTheTextOnOneLine) {
  EXPECT_EQ(appleScriptQuoted("a\nb\rc\td"), R"("a\nb\rc\td")");
  EXPECT_EQ(appleScriptQuoted("\\n"), R"("\\n")");
}

TEST(AppleScriptQuoted, LeavesNonAsciiTextAlone) {
  EXPECT_EQ(appleScriptQuoted("gr\xc3\xbc\xc3\x9f"), "\"gr\xc3\xbc\xc3\x9f\"");
}

TEST(PromptSentence, IsWhatAPersonUnderstands) {
  EXPECT_EQ(promptSentence("My App"), "My App is to be installed for all users of this Mac.");
  EXPECT_EQ(promptSentence("App."), "App. is to be installed for all users of this Mac.");
  EXPECT_EQ(promptSentence("May My App be updated? It takes a minute."),
            "May My App be updated? It takes a minute.");
}

TEST(OsascriptCommand, QuotesForTheShellFirstAndThenForAppleScript) {
  EXPECT_THAT(
      osascriptCommand("/usr/bin/osascript", {"My \"App\"", {"/a b/c", "it's", "\"\\$x\"", ""}}),
      ElementsAre(
          "/usr/bin/osascript", "-e",
          R"(do shell script "'/a b/c' 'it'\\''s' '\"\\$x\"' '' 2>&1; )"
          R"(printf '\\n%s' \"$?\"" with prompt "My \"App\" is to be installed for all users of this Mac." )"
          R"(with administrator privileges without altering line endings)"));
}

TEST(ReadOsascriptOutput, TakesTheLastLineForTheStatus) {
  static constexpr struct {
    const char* output;
    const char* text;
    int status;
  } kCases[] = {{"\n0\n", "", 0},
                {"\n0", "", 0},
                {"one\n\n3\n", "one\n", 3},
                {"one\ntwo\n255\n\n", "one\ntwo", 255},
                {"77\n1\n", "77", 1}};
  for (const auto& [output, text, status] : kCases) {
    SCOPED_TRACE(output);
    const auto result = readOsascriptOutput(output);
    ASSERT_TRUE(result.has_value());
    EXPECT_EQ(result->text, text);
    EXPECT_EQ(result->status, status);
  }
}

TEST(ReadOsascriptOutput, IsNothingWithoutAStatus) {
  for (const char* output : {"", "\n", "0", "text\n", "text\nmore\n", "\n-1\n", "\n1 \n",
                             "\n1234\n", "\n99999999999999999999\n", "\n0x1\n"})
    EXPECT_FALSE(readOsascriptOutput(output).has_value()) << output;
}

TEST(PkexecCommand, IsTheToolAndTheProgram) {
  EXPECT_THAT(pkexecCommand("/usr/bin/pkexec", {"My App", {"/a b", "-x", ""}}),
              ElementsAre("/usr/bin/pkexec", "/a b", "-x", ""));
}

TEST(StatusFromPkexec, IsDeniedForItsOwnTwo) {
  for (const int status : {0, 1, 2, 77, 125, 128, 255}) EXPECT_EQ(statusFromPkexec(status), status);
  EXPECT_EQ(statusFromPkexec(126), kElevationDenied);
  EXPECT_EQ(statusFromPkexec(127), kElevationDenied);
}

TEST(SudoCommand, EndsTheOptionsBeforeTheProgram) {
  EXPECT_THAT(sudoCommand("/usr/bin/sudo", {"My App", {"/a b", "-n", "A=b", ""}}),
              ElementsAre("/usr/bin/sudo", "-p", "My App: ", "--", "/a b", "-n", "A=b", ""));
}

TEST(SudoCommand, HasNoPlaceholderInThePrompt) {
  EXPECT_EQ(sudoCommand("sudo", {"100%h %%", {"/a"}})[2], "100%%h %%%%: ");
  EXPECT_EQ(sudoCommand("sudo", {"", {"/a"}})[2], ": ");
}

TEST(SudoQuestion, NeverAsksTheUser) {
  EXPECT_THAT(sudoQuestion("/usr/bin/sudo", {"My App", {"/a b", "-x"}}),
              ElementsAre("/usr/bin/sudo", "-n", "-l", "--", "/a b", "-x"));
}

}  // namespace
}  // namespace quillory
