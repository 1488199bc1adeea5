#include "packager/cli/command_line.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "tests/packager/project_fixture.h"

namespace quillory::testing {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::StartsWith;

const std::vector<std::string> kCommands = {"init",    "keygen", "bundle", "inspect",    "verify",
                                            "extract", "set",    "doctor", "completion", "manual"};

TEST(CommandLine, ListsItsCommandsAndStatuses) {
  for (const char* option : {"--help", "-h"}) {
    const CommandResult result = pack({option});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.err, "");
    EXPECT_THAT(result.out, HasSubstr("exit status: 0 done"));
    for (const std::string& command : kCommands) {
      EXPECT_THAT(result.out, HasSubstr("\n  " + command + ' '));
    }
  }
}

TEST(CommandLine, ExplainsEachCommandWithAnExample) {
  for (const std::string& command : kCommands) {
    const CommandResult result = pack({command, "--help"});
    EXPECT_EQ(result.status, 0) << command;
    EXPECT_THAT(result.out, AllOf(HasSubstr("Usage: quillory-pack " + command), HasSubstr("--json"),
                                  HasSubstr("example:\n  ")))
        << command;
  }
}

TEST(CommandLine, HasAVersion) {
  EXPECT_EQ(pack({"--version"}).status, 0);
  EXPECT_THAT(pack({"--version"}).out, StartsWith("quillory-pack "));
}

TEST(CommandLine, ShowsTheHelpWhenNothingIsAsked) {
  const CommandResult result = pack({});
  EXPECT_EQ(result.status, 2);
  EXPECT_EQ(result.out, "");
  EXPECT_THAT(result.err, HasSubstr("Subcommands:"));
}

TEST(CommandLine, SuggestsTheNearestCommand) {
  const CommandResult result = pack({"bundel"});
  EXPECT_EQ(result.status, 2);
  EXPECT_EQ(result.err, "error: there is no command \"bundel\"\n  -> did you mean \"bundle\"?\n");
  EXPECT_THAT(pack({"xyzzy"}).err, HasSubstr("--help lists the commands"));
}

TEST(CommandLine, RefusesWhatMakesNoSense) {
  const std::vector<std::string> cases[] = {{"bundle", "--wrong"},
                                            {"bundle", "--compression", "10"},
                                            {"bundle", "--compression", "x"},
                                            {"bundle", "a", "b"},
                                            {"bundle", "--target", "windows"},
                                            {"bundle", "--target", ""},
                                            {"bundle", "--target"},
                                            {"keygen", "--bits", "1024"},
                                            {"inspect"},
                                            {"extract", "only-one"},
                                            {"verify"},
                                            {"doctor"},
                                            {"completion", "tcsh"},
                                            {"--wrong"},
                                            {"set"}};
  for (const auto& arguments : cases) {
    const CommandResult result = pack(arguments);
    EXPECT_EQ(result.status, 2) << ::testing::PrintToString(arguments);
    EXPECT_EQ(result.out, "");
    EXPECT_THAT(result.err, AllOf(StartsWith("error: "), HasSubstr("--help explains")));
  }
}

TEST(CommandLine, ExplainsTheSystemsOfABundleAndSuggestsTheNearest) {
  EXPECT_THAT(pack({"bundle", "--help"}).out,
              AllOf(HasSubstr("--target TEXT"), HasSubstr("instead of this one: linux, macos\n"),
                    HasSubstr("example:\n  quillory-pack bundle --target macos ")));
  EXPECT_EQ(pack({"bundle", "--target", "macosx"}).err,
            "error: --target: \"macosx\" is none of linux, macos; did you mean \"macos\"?\n"
            "  -> quillory-pack bundle --help explains\n");
  EXPECT_EQ(pack({"bundle", "--target", "darwin"}).err,
            "error: --target: \"darwin\" is none of linux, macos\n"
            "  -> quillory-pack bundle --help explains\n");
}

TEST(CommandLine, ReportsAllThatIsWrongWithAConfigurationAtOnce) {
  Project project;
  const CommandResult result =
      pack({"bundle", project.writeConfig("[application]\nname = \"a-b\"\nversoin = 1\n")});
  EXPECT_EQ(result.status, 3);
  EXPECT_THAT(
      result.err,
      AllOf(HasSubstr("quillory.toml:3: error: there is no application.versoin"),
            HasSubstr("application.version is missing"), HasSubstr("application.jars is missing")));
}

TEST(CommandLine, GivesScriptsOneDocumentWithAllFindings) {
  Project project;
  const CommandResult bad =
      pack({"bundle", "--json", project.writeConfig("[application]\nversion = 1.5\n")});
  EXPECT_EQ(bad.err, "");
  const auto document = nlohmann::json::parse(bad.out);
  EXPECT_EQ(document["command"], "bundle");
  EXPECT_EQ(document["status"], 3);
  EXPECT_EQ(document["findings"].back()["rule"], "version");
  EXPECT_EQ(document["findings"].back()["line"], 2);
  const CommandResult good = pack({"bundle", "--json", project.writeConfig(project.config())});
  EXPECT_EQ(good.err, "");
  EXPECT_EQ(nlohmann::json::parse(good.out)["bundle"], project / "dist/Hello.app");
}

TEST(CommandLine, GivesScriptsADocumentForAWrongUseToo) {
  const CommandResult option = pack({"bundle", "--json", "--wrong"});
  EXPECT_EQ(option.status, 2);
  EXPECT_EQ(option.err, "");
  const auto document = nlohmann::json::parse(option.out);
  EXPECT_EQ(document["command"], "bundle");
  EXPECT_EQ(document["status"], 2);
  EXPECT_THAT(document["findings"][0]["what"].get<std::string>(), HasSubstr("--wrong"));
  EXPECT_EQ(document["findings"][0]["advice"], "quillory-pack bundle --help explains");
  const auto command = nlohmann::json::parse(pack({"bundel", "--json"}).out);
  EXPECT_EQ(command["command"], "");
  EXPECT_EQ(command["findings"][0]["advice"], "did you mean \"bundle\"?");
}

TEST(CommandLine, SaysLessOrMoreWhenAsked) {
  Project project;
  const std::string config = project.writeConfig(project.config("[runtime]\nfolder = \"jre\"\n"));
  EXPECT_EQ(pack({"bundle", "--quiet", config}).err, "");
  const std::string normal = pack({"bundle", config}).err;
  EXPECT_THAT(normal, HasSubstr("packing "));
  EXPECT_THAT(pack({"bundle", "--verbose", config}).err, HasSubstr("version 170000900"));
  EXPECT_EQ(normal.find("version 170000900"), std::string::npos);
}

}  // namespace
}  // namespace quillory::testing
