#include "java/launch_command.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace quillory {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

TEST(AddMemoryOptions, AddsAnOptionForEachNumberOfAtLeastOne) {
  static const struct {
    int memory;
    int stack;
    std::vector<std::string> expected;
  } kCases[] = {{256, 64, {"-Xmx256m", "-Xms64m"}},
                {1, 0, {"-Xmx1m"}},
                {0, 1, {"-Xms1m"}},
                {0, 0, {}},
                {-5, -1, {}}};
  for (const auto& [memory, stack, expected] : kCases) {
    SCOPED_TRACE(::testing::Message() << memory << ' ' << stack);
    LaunchCommand command;
    addMemoryOptions(memory, stack, command);
    EXPECT_EQ(command.jvmOptions, expected);
  }
}

TEST(SetClassPath, JoinsTheEntriesBelowTheFolder) {
  LaunchCommand command;
  setClassPath("/m/App", {"a.jar", "lib/b c.jar"}, command);
  EXPECT_THAT(command.classPath, ElementsAre("/m/App/a.jar", "/m/App/lib/b c.jar"));
  EXPECT_EQ(command.classPathText, "/m/App/a.jar:/m/App/lib/b c.jar");
}

TEST(SetClassPath, IsEmptyWithoutEntries) {
  LaunchCommand command;
  setClassPath("/m/App", {}, command);
  EXPECT_THAT(command.classPath, IsEmpty());
  EXPECT_EQ(command.classPathText, "");
}

TEST(SetClassPath, TakesEntriesLikePathsAreJoinedEverywhere) {
  LaunchCommand command;
  setClassPath("/m/App/", {"a", "/b", ""}, command);
  EXPECT_EQ(command.classPathText, "/m/App/a:/m/App//b:/m/App/");
}

TEST(SetClassPath, GrowsBeyondEveryFixedSize) {
  LaunchCommand command;
  setClassPath("/m", std::vector<std::string>(5000, "entry.jar"), command);
  EXPECT_THAT(command.classPath, SizeIs(5000));
  EXPECT_THAT(command.classPathText, SizeIs(5000 * std::string("/m/entry.jar:").size() - 1));
}

LaunchCommand fullCommand() {
  LaunchCommand command;
  command.executable = "/jre/bin/app";
  addMemoryOptions(256, 64, command);
  setClassPath("/m", {"a.jar"}, command);
  command.jvmOptions.push_back("-Dremembered=1");
  command.jvmOptions.push_back("-Dremembered=2");
  command.classToRun = "com.example.Main";
  command.applicationArguments = {"/m/props", "extra", "user"};
  return command;
}

TEST(ProcessArguments, PutsRememberedOptionsBehindTheClassPath) {
  EXPECT_THAT(
      processArguments(fullCommand()),
      ElementsAre("/jre/bin/app", "-Xmx256m", "-Xms64m", "-cp", "/m/a.jar", "-Dremembered=1",
                  "-Dremembered=2", "com.example.Main", "/m/props", "extra", "user"));
}

TEST(ProcessArguments, HasAnEmptyClassPathWhereThereAreNoEntries) {
  LaunchCommand command;
  command.executable = "/java";
  command.classToRun = "Main";
  EXPECT_THAT(processArguments(command), ElementsAre("/java", "-cp", "", "Main"));
}

TEST(ProcessArguments, EndsWhereTheClassIsMissing) {
  LaunchCommand command = fullCommand();
  command.classToRun = std::nullopt;
  EXPECT_THAT(processArguments(command),
              ElementsAre("/jre/bin/app", "-Xmx256m", "-Xms64m", "-cp", "/m/a.jar",
                          "-Dremembered=1", "-Dremembered=2"));
}

}  // namespace
}  // namespace quillory
