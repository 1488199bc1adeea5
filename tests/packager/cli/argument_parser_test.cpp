#include "packager/cli/argument_parser.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace quillory::pack {
namespace {

using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

class ArgumentParser : public ::testing::Test {
 protected:
  ParsedLine parse(const std::vector<std::string>& arguments) {
    return parseArguments(commands_, {{.name = "-q,--quiet", .into = &quiet_}}, arguments);
  }

  bool quiet_ = false;
  bool raw_ = false;
  int bits_ = 3072;
  std::optional<int> level_;
  std::string file_ = "made.txt";
  std::string kind_;
  std::vector<std::string> words_;
  std::vector<std::string> removed_;
  std::string shell_;
  std::vector<Command> commands_ = {
      {"make",
       "makes it",
       "make it",
       {{.name = "FILE", .description = "what is made", .into = &file_},
        {.name = "WORD", .into = &words_},
        {.name = "--raw", .into = &raw_},
        {.name = "--bits", .description = "its size", .into = &bits_, .numbers = {2048, 3072}},
        {.name = "-l,--level", .into = &level_, .numberRange = {{0, 9}}},
        {.name = "--as", .description = "its kind", .into = &kind_, .choices = {"tail", "head"}},
        {.name = "--unset", .into = &removed_}},
       nullptr},
      {"show",
       "shows it",
       "show zsh",
       {{.name = "SHELL", .into = &shell_, .isRequired = true, .choices = {"bash", "zsh"}}},
       nullptr}};
};

TEST_F(ArgumentParser, TellsTheChoicesBehindWhatAnOptionIsFor) {
  const std::string make = parse({"make", "--help"}).text;
  EXPECT_THAT(make, HasSubstr("its kind: tail, head\n"));
  EXPECT_THAT(make, HasSubstr("what is made\n"));
  EXPECT_THAT(make, Not(HasSubstr("what is made:")));
  EXPECT_THAT(make, Not(HasSubstr("its size:")));
  EXPECT_THAT(parse({"show", "--help"}).text, Not(HasSubstr(": bash, zsh")));
}

TEST_F(ArgumentParser, SetsWhatIsGivenAndLeavesTheRest) {
  const ParsedLine line = parse({"make", "it.txt", "-q", "one", "--bits", "2048", "two", "-l", "0",
                                 "--as", "head", "--unset", "a", "--unset", "b"});
  EXPECT_EQ(line.command, &commands_[0]);
  EXPECT_EQ(line.text, "");
  EXPECT_EQ(line.mistake, "");
  EXPECT_TRUE(quiet_);
  EXPECT_FALSE(raw_);
  EXPECT_EQ(bits_, 2048);
  EXPECT_EQ(level_, 0);
  EXPECT_EQ(file_, "it.txt");
  EXPECT_EQ(kind_, "head");
  EXPECT_THAT(words_, ElementsAre("one", "two"));
  EXPECT_THAT(removed_, ElementsAre("a", "b"));
}

TEST_F(ArgumentParser, KeepsDefaultsAlsoForAnEmptyText) {
  EXPECT_EQ(parse({"make"}).command, &commands_[0]);
  EXPECT_EQ(file_, "made.txt");
  EXPECT_EQ(bits_, 3072);
  EXPECT_EQ(level_, std::nullopt);
  EXPECT_EQ(parse({"make", ""}).command, &commands_[0]);
  EXPECT_EQ(file_, "made.txt");
}

TEST_F(ArgumentParser, TakesOneValueForEachTimeThatAnOptionIsGiven) {
  EXPECT_EQ(parse({"make", "--unset", "a", "it.txt"}).mistake, "");
  EXPECT_THAT(removed_, ElementsAre("a"));
  EXPECT_EQ(file_, "it.txt");
}

// Some of the words are the library's, which differ between its versions.
TEST_F(ArgumentParser, SaysWhatMakesNoSense) {
  const std::pair<std::vector<std::string>, std::string> cases[] = {
      {{"make", "--bits", "1024"}, "--bits: 1024 not in {2048,3072}"},
      {{"make", "--level", "10"}, "--level: Value 10 not in range "},
      {{"make", "--as", "tial"}, "--as: \"tial\" is none of tail, head; did you mean \"tail\"?"},
      {{"make", "--as", "xyz"}, "--as: \"xyz\" is none of tail, head"},
      {{"show", "csh"}, "SHELL: csh not in {bash,zsh}"},
      {{"show"}, "SHELL is required"},
      {{"show", "zsh", "bash"}, "The following argument was not expected: bash"},
      {{"make", "--wrong"}, "The following argument was not expected: --wrong"}};
  for (const auto& [arguments, mistake] : cases) {
    const ParsedLine line = parse(arguments);
    EXPECT_EQ(line.command, nullptr) << mistake;
    EXPECT_EQ(line.text, "");
    EXPECT_THAT(line.mistake, StartsWith(mistake));
  }
}

TEST_F(ArgumentParser, ExplainsWithTheWordsOfTheCommand) {
  const ParsedLine line = parse({"make", "--help"});
  EXPECT_EQ(line.command, nullptr);
  EXPECT_EQ(line.mistake, "");
  EXPECT_THAT(line.text, AllOf(StartsWith("makes it\n"), HasSubstr("example:\n  make it\n"),
                               HasSubstr("FILE TEXT"), HasSubstr("made.txt"),
                               HasSubstr("what is made\n"), HasSubstr("--bits INT:{2048,3072}"),
                               HasSubstr("-q,--quiet"), HasSubstr("its kind: tail, head\n")));
  EXPECT_THAT(programHelp(commands_, {}), AllOf(HasSubstr("\n  make "), HasSubstr("shows it\n")));
}

TEST_F(ArgumentParser, KeepsWhatIsBehindTheDashesForACommandThatTakesIt) {
  std::vector<std::string> behind = {"from before"};
  commands_.push_back({"run",
                       "runs it",
                       "run -- it",
                       {{.name = "FILE", .into = &file_}},
                       nullptr,
                       {.name = "ARGUMENT", .description = "what it gets", .into = &behind}});
  EXPECT_EQ(parse({"run", "--", "--raw", "-q", "--", "x"}).mistake, "");
  EXPECT_THAT(behind, ElementsAre("--raw", "-q", "--", "x"));
  EXPECT_EQ(file_, "made.txt");
  EXPECT_FALSE(quiet_);
  parse({"run", "a.txt", "-q", "--"});
  EXPECT_TRUE(behind.empty());
  EXPECT_EQ(file_, "a.txt");
  EXPECT_THAT(parse({"run", "--help"}).text,
              HasSubstr("behind --:\n  ARGUMENT ...  what it gets\n"));
}

TEST_F(ArgumentParser, HasTheDashesMeanNoOptionsElsewhere) {
  EXPECT_EQ(parse({"make", "--", "--raw", "x"}).mistake, "");
  EXPECT_FALSE(raw_);
  EXPECT_EQ(file_, "--raw");
}

}  // namespace
}  // namespace quillory::pack
