#include "packager/cli/manual.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <regex>

#include "packager/cli/program.h"

namespace quillory::pack {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::Not;

TEST(ManualPage, SaysWhatACommandCanBeGiven) {
  bool raw = false;
  int bits = 3072;
  std::string file = "made.txt", kind;
  std::vector<std::string> words;
  const std::vector<Command> commands = {
      {"make",
       "makes it",
       "make it",
       {{.name = "FILE", .description = "what is made", .into = &file},
        {.name = "WORD", .description = "of it", .into = &words, .isRequired = true},
        {.name = "-r,--raw", .description = "as it is", .into = &raw},
        {.name = "--bits", .description = "its size", .into = &bits},
        {.name = "--as", .description = "its kind", .into = &kind, .choices = {"tail", "head"}}},
       nullptr}};
  const std::string page =
      manualPage(commands, {{.name = "--json", .description = "as a document", .into = &raw}});
  EXPECT_THAT(page, AllOf(HasSubstr(".SS \"make\"\n"),
                          HasSubstr("\nquillory\\-pack make [OPTION]... [FILE] WORD...\n"),
                          HasSubstr("\nmakes it\n"), HasSubstr("\nmake it\n")));
  EXPECT_THAT(page, HasSubstr(".B \"FILE\"\nwhat is made (without it, made.txt)\n"));
  EXPECT_THAT(page, HasSubstr(".B \"WORD\"\nof it\n"));
  EXPECT_THAT(page, HasSubstr(".B \"\\-r, \\-\\-raw\"\nas it is\n"));
  EXPECT_THAT(page, HasSubstr(".B \"\\-\\-bits NUMBER\"\nits size (without it, 3072)\n"));
  EXPECT_THAT(page, HasSubstr(".B \"\\-\\-as TEXT\"\nits kind: tail, head\n"));
  EXPECT_THAT(page, HasSubstr(".B \"\\-\\-json\"\nas a document\n"));
}

TEST(ManualPage, HasEveryCommandOnceAndEveryOption) {
  TalkOptions talk;
  const std::string page = manualPage(allCommands(), talkArguments(talk));
  for (const Command& command : allCommands()) {
    // A dash that is not to be taken for a hyphen has a backslash.
    const std::string name = std::regex_replace(command.name, std::regex("-"), "\\-");
    const std::string heading = ".SS \"" + name + "\"\n";
    ASSERT_THAT(page, HasSubstr(heading));
    EXPECT_THAT(page.substr(page.find(heading) + 1), Not(HasSubstr(heading)));
    for (const Argument& argument : command.arguments) {
      EXPECT_THAT(page, HasSubstr(argument.description)) << command.name << ' ' << argument.name;
    }
  }
}

TEST(ManualPage, HasTheFirstStepsAndTheStatuses) {
  const std::string page = manualPage({}, {});
  EXPECT_THAT(
      page, AllOf(HasSubstr("\n.SH NAME\nquillory\\-pack \\- packs Java"),
                  HasSubstr("  quillory\\-pack keygen    # makes signing.pem"),
                  HasSubstr("\n.SH \"COMMANDS\"\n"), HasSubstr(".SH \"EXIT STATUS\"\n0 done; 1 ")));
}

}  // namespace
}  // namespace quillory::pack
