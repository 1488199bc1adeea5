#include "update/command_line.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace quillory::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using update::Command;
using update::CommandLine;
using update::parseCommandLine;
using Kind = CommandLine::Kind;

TEST(ParseCommandLine, TakesACommandAndItsOptionsInAnyOrder) {
  const CommandLine line =
      parseCommandLine({"skip", "--own-folder", "/own", "7", "--properties", "/p"});
  EXPECT_EQ(line.kind, Kind::kCommand) << line.mistake;
  EXPECT_EQ(line.command, Command::kSkip);
  EXPECT_EQ(line.argument, "7");
  EXPECT_EQ(line.properties, "/p");
  EXPECT_EQ(line.ownFolder, "/own");
}

TEST(ParseCommandLine, LeavesOutWhatMayBeLeftOut) {
  EXPECT_EQ(parseCommandLine({"remind-later", "--properties", "/p"}).kind, Kind::kCommand);
  EXPECT_EQ(parseCommandLine({"remind-later", "4", "--properties", "/p"}).argument, "4");
}

TEST(ParseCommandLine, SaysWhatMakesNoSense) {
  const std::vector<std::pair<std::vector<std::string>, std::string>> cases = {
      {{}, "there is no command"},
      {{"chekc"}, "there is no command chekc"},
      {{"check"}, "--properties is missing"},
      {{"check", "--properties"}, "--properties needs a value"},
      {{"check", "--properties", "/p", "more"}, "check takes no more"},
      {{"check", "--properties", "/p", "--fast", "1"}, "check takes no --fast"},
      {{"skip", "--properties", "/p"}, "skip needs VERSION"},
      {{"skip", "1", "2", "--properties", "/p"}, "skip takes no 2"},
      {{"--help", "check"}, "nothing may follow --help"},
      {{"check", "--properties", "/p", "--elevate"}, "--elevate needs a value"},
      {{"download", "--elevate", "--properties", "/p"}, "download takes no --elevate"},
      {{"install-for-all", "--properties", "/p"},
       "install-for-all takes --draw DRAW and nothing else"},
      {{"install-for-all", "--draw"}, "install-for-all takes --draw DRAW and nothing else"},
      {{"install-for-all", "--draw", "00112233445566778899aabbccddeef"},
       "that is no draw: 00112233445566778899aabbccddeef"},
      {{"install-for-all", "--draw", "00112233445566778899aabbccddeefg"},
       "that is no draw: 00112233445566778899aabbccddeefg"},
      {{"restart", "--wait", "12"}, "restart needs --wait PID -- PROGRAM"},
      {{"restart", "--wait", "12x", "--", "/bin/true"}, "that is no process: 12x"},
      {{"restart", "--wait", "1", "--", "/bin/true"}, "that is no process: 1"},
      {{"restart", "--wait", "12", "--", "true"}, "the program to start is no absolute path: true"},
  };
  for (const auto& [arguments, mistake] : cases) {
    const CommandLine line = parseCommandLine(arguments);
    EXPECT_EQ(line.kind, Kind::kMistake);
    EXPECT_EQ(line.mistake, mistake);
  }
}

TEST(ParseCommandLine, TakesWhatIsForAdministrators) {
  const CommandLine asking = parseCommandLine({"install", "--elevate", "--properties", "/p"});
  EXPECT_EQ(asking.kind, Kind::kCommand) << asking.mistake;
  EXPECT_TRUE(asking.elevates);
  EXPECT_FALSE(parseCommandLine({"install", "--properties", "/p"}).elevates);
  EXPECT_EQ(parseCommandLine({"install-for-all"}).kind, Kind::kInstallForAll);
  const std::string draw = "00112233445566778899aabbccddeeff";
  const CommandLine drawn = parseCommandLine({"install-for-all", "--draw", draw});
  EXPECT_EQ(drawn.kind, Kind::kInstallForAll) << drawn.mistake;
  EXPECT_EQ(drawn.draw, draw);
}

TEST(ParseCommandLine, TakesAProgramToStartAgain) {
  const CommandLine line =
      parseCommandLine({"restart", "--wait", "4711", "--", "/bin/app", "--wait", "x"});
  EXPECT_EQ(line.kind, Kind::kRestart) << line.mistake;
  EXPECT_EQ(line.waitFor, 4711);
  EXPECT_THAT(line.program, ElementsAre("/bin/app", "--wait", "x"));
}

TEST(Help, NamesEveryCommand) {
  for (const auto& command : update::kCommands) {
    EXPECT_THAT(update::help(), HasSubstr(std::string("  ") + command.name + ' '));
    EXPECT_THAT(update::manual(), HasSubstr(command.text));
  }
  EXPECT_EQ(parseCommandLine({"--help"}).kind, Kind::kHelp);
  EXPECT_EQ(parseCommandLine({"--version"}).kind, Kind::kVersion);
}

}  // namespace
}  // namespace quillory::testing
