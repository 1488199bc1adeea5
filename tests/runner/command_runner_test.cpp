#include "runner/command_runner.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <string>

#include "tests/harness/child_process.h"
#include "tests/harness/eventually.h"
#include "tests/harness/page_example.h"
#include "tests/harness/temp_dir.h"
#include "tests/runner/runner_fixture.h"

namespace quillory {
namespace {

namespace fs = std::filesystem;
using testing::ChildOptions;
using testing::ChildResult;
using testing::eventually;
using ::testing::HasSubstr;
using ::testing::Not;
using testing::readFile;
using testing::runChild;
using testing::RunnerTest;
using testing::writeFile;

// The program that stands for another, in a folder of its own: started by its path, with the folder
// of the test, which holds the runner.cfg, as the current directory.
class RunConfiguredCommand : public RunnerTest {
 protected:
  ChildResult start(const std::vector<std::string>& arguments = {}, std::string name = "app") {
    const fs::path program = folder_.path() / "bin" / name;
    fs::create_directories(program.parent_path());
    if (!fs::exists(program)) fs::create_symlink(RUNNER_PROGRAM, program);
    std::vector<std::string> command{program.string()};
    command.insert(command.end(), arguments.begin(), arguments.end());
    ChildOptions options;
    options.directory = folder_.str();
    options.environment["GREETING"] = "good day";
    options.environment["HOME"] = "/home/me";
    return runChild(command, options);
  }

  // A program that tells its arguments, one a line, and ends with 5.
  std::string teller(const std::string& name = "teller") {
    const std::string path = folder_ / name;
    writeFile(path, "#!/bin/sh\nfor a in \"$@\"; do echo \"<$a>\"; done\nexit 5\n");
    fs::permissions(path, fs::perms::owner_all);
    return path;
  }
};

TEST_F(RunConfiguredCommand, BecomesTheCommandOfTheExampleOnThePage) {
  writeConfig(testing::pageExample("formats/runner-cfg.md"));
  const ChildResult child = start();
  EXPECT_EQ(child.out, "hello a b\n");
  EXPECT_EQ(child.exitStatus, 0);
}

TEST_F(RunConfiguredCommand, EndsWithTheStatusOfTheCommand) {
  writeConfig("app:" + teller() + "\n");
  EXPECT_EQ(start().exitStatus, 5);
}

TEST_F(RunConfiguredCommand, AppendsTheArgumentsOfTheProgram) {
  writeConfig("app:" + teller() + "\napp:configured\n");
  EXPECT_EQ(start({"one two", "", "$x\"%SAME%[y]"}).out,
            "<configured>\n<one two>\n<>\n<$x\"%SAME%[y]>\n");
}

TEST_F(RunConfiguredCommand, AppendsMoreArgumentsThanTheListHasPlaces) {
  writeConfig("app:" + teller() + "\n");
  const ChildResult child = start(std::vector<std::string>(2000, "x"));
  EXPECT_EQ(std::count(child.out.begin(), child.out.end(), '\n'), 2000);
}

TEST_F(RunConfiguredCommand, LeavesTheConfigurationToNoCommand) {
  const std::string lister = folder_ / "lister";
  writeFile(lister, "#!/bin/sh\nfor file in /proc/$$/fd/*; do readlink \"$file\"; done\n");
  fs::permissions(lister, fs::perms::owner_all);
  writeConfig("app:" + lister + "\napp:[more]\nmore:x\n");
  const std::string open = start().out;
  EXPECT_THAT(open, HasSubstr("lister")) << "the shell reads its script";
  EXPECT_THAT(open, Not(HasSubstr("runner.cfg")));
}

TEST_F(RunConfiguredCommand, SearchesThePathForTheProgram) {
  writeConfig("app:echo\napp:found\n");
  EXPECT_EQ(start().out, "found\n");
}

TEST_F(RunConfiguredCommand, RunsAScriptWithoutAnInterpreterLine) {
  const std::string script = folder_ / "script";
  writeFile(script, "echo \"script with $1\"\n");
  fs::permissions(script, fs::perms::owner_all);
  writeConfig("app:" + script + "\napp:argument\n");
  EXPECT_EQ(start().out, "script with argument\n");
}

TEST_F(RunConfiguredCommand, ReplacesImportsFirstAndThenVariables) {
  writeConfig("app:" + teller() + "\napp:[more]\nmore:%GREETING%\nmore:%NOPE%\n");
  EXPECT_EQ(start().out, "<good day>\n<%NOPE%>\n");
}

TEST_F(RunConfiguredCommand, KnowsTheHomeFolder) {
  writeConfig("app:" + teller() + "\napp:%HOME%/x\n");
  EXPECT_EQ(start().out, "</home/me/x>\n");
}

TEST_F(RunConfiguredCommand, LooksUpItsNameWithoutFoldersAndExe) {
  writeConfig("setup:" + teller() + "\nsetup:small\nsetup.EXE:" + teller() +
              "\nsetup.EXE:capital\n");
  EXPECT_EQ(start({}, "setup").out, "<small>\n");
  EXPECT_EQ(start({}, "setup.exe").out, "<small>\n");
  EXPECT_EQ(start({}, "setup.EXE").out, "<capital>\n");
}

TEST_F(RunConfiguredCommand, TakesALineWithExeForTheNameWithoutIt) {
  writeConfig("app.exe:" + teller() + "\napp.exe:x\n");
  EXPECT_EQ(start().out, "<x>\n");
}

TEST_F(RunConfiguredCommand, QuotesAProgramWithABlankInItsOwnNameOnly) {
  const std::string program = folder_ / "my teller";
  fs::create_symlink("/bin/sh", program);
  writeConfig("app:" + program + "\napp:-c\napp:echo \"<$0>\"\n");
  EXPECT_EQ(start().out, "<\"" + program + "\">\n");
}

TEST_F(RunConfiguredCommand, TellsThatTheCommandCannotBeRunAndEndsWith0) {
  writeConfig("app:/no/such/program\n");
  const ChildResult child = start();
  EXPECT_EQ(child.out, "command run failed\n");
  EXPECT_EQ(child.exitStatus, 0);
}

TEST_F(RunConfiguredCommand, ComesBackWithMinus1WithoutTheFile) {
  const ChildResult child = start();
  EXPECT_EQ(child.out, "could not find config file: runner.cfg\ncame back with -1\n");
  EXPECT_EQ(child.exitStatus, 77);
}

TEST_F(RunConfiguredCommand, ComesBackWithMinus1WithoutAnEntry) {
  writeConfig("other:x\n");
  EXPECT_EQ(start().out, "could not find config entry\ncame back with -1\n");
}

TEST_F(RunConfiguredCommand, RunsNothingWhenThereAreTooManyArguments) {
  std::string lines = "app:" + teller() + "\n";
  for (int i = 0; i < 498; ++i) lines += "app:x\n";
  writeConfig(lines);
  EXPECT_EQ(start().exitStatus, 5);
  writeConfig(lines + "app:x\n");
  EXPECT_EQ(start().out,
            "too many arguments in config entry app: at most 499\ncame back with -1\n");
}

TEST_F(RunConfiguredCommand, RunsNothingWhenImportsGoInACircle) {
  writeConfig("app:" + teller() + "\napp:[app]\n");
  EXPECT_EQ(start().out,
            "too many arguments with import entry app: at most 499\ncame back with -1\n");
}

TEST_F(RunConfiguredCommand, TellsEveryStepWhenDebuggingAndPassesTheSwitchOn) {
  const std::string program = teller("my teller");
  writeConfig("app:" + program + "\n");
  EXPECT_EQ(start({"-DEBUG", "x"}).out, "name: app\napp[" + program + "]\nCMD:[" + program +
                                            "]\nCMD:[-DEBUG]\nCMD:[x]\ndone printing commands\n" +
                                            "wrapping " + program + "\nwrapped \"" + program +
                                            "\"\n<-DEBUG>\n<x>\n");
}

TEST_F(RunConfiguredCommand, LooksForSwitchesInTheFirstArgumentOnly) {
  writeConfig("app:" + teller() + "\n");
  EXPECT_EQ(start({"x", "-DEBUG"}).out, "<x>\n<-DEBUG>\n");
  EXPECT_EQ(start({"x", "-GENERATESCRIPT"}).out, "<x>\n<-GENERATESCRIPT>\n");
  EXPECT_EQ(start({"-debug"}).out, "<-debug>\n");
}

TEST_F(RunConfiguredCommand, WritesTheCommandIntoAScript) {
  writeConfig("app:/bin/echo\napp:hello\napp:%GREETING%\n");
  const ChildResult child = start({"-GENERATESCRIPT", "script", "not in it"});
  EXPECT_EQ(child.out, "Generating Bash script\n");
  EXPECT_EQ(child.exitStatus, 0);
  EXPECT_EQ(readFile(folder_ / "script"), "#/bin/sh\n# app\n/bin/echo hello good day  &\n");
}

TEST_F(RunConfiguredCommand, WritesAScriptThatRunsTheCommandInTheBackground) {
  const std::string mark = folder_ / "mark";
  writeConfig("app:sleep 0.2 && touch\napp:" + mark + "\n");
  ASSERT_EQ(start({"-GENERATESCRIPT", "script"}).exitStatus, 0);
  EXPECT_EQ(runChild({"/bin/sh", folder_ / "script"}).exitStatus, 0);
  EXPECT_TRUE(eventually([&] { return fs::exists(mark); }));
}

TEST_F(RunConfiguredCommand, WritesAScriptThatIsWaitedForInItsShell) {
  writeConfig("app:/bin/echo\napp:hello\n");
  ASSERT_EQ(start({"-GENERATESCRIPT", "script"}).exitStatus, 0);
  const std::string command = ". '" + (folder_ / "script") + "'; wait";
  EXPECT_EQ(runChild({"/bin/sh", "-c", command}).out, "hello\n");
}

TEST_F(RunConfiguredCommand, ReplacesAnOldScript) {
  writeConfig("app:x\n");
  writeFile(folder_ / "script", "something much longer that was here before the script");
  start({"-GENERATESCRIPT", "script"});
  EXPECT_EQ(readFile(folder_ / "script"), "#/bin/sh\n# app\nx  &\n");
}

TEST_F(RunConfiguredCommand, EndsWith1WithoutTheNameOfTheScript) {
  const ChildResult child = start({"-GENERATESCRIPT"});
  EXPECT_EQ(child.out, "You must specify a script name\n");
  EXPECT_EQ(child.exitStatus, 1);
}

TEST_F(RunConfiguredCommand, EndsWith1WhenTheScriptCannotBeWritten) {
  writeConfig("app:x\n");
  for (const std::string script : {"no/such/folder", "/dev/full"}) {
    SCOPED_TRACE(script);
    const ChildResult child = start({"-GENERATESCRIPT", script});
    EXPECT_EQ(child.out, "Generating Bash script\ncould not write script: " + script + "\n");
    EXPECT_EQ(child.exitStatus, 1);
  }
}

TEST_F(RunConfiguredCommand, CutsTheNameOfTheProgramInPlace) {
  char path[] = "/some/where/app.exe";
  char* arguments[] = {path, nullptr};
  int returnCode = 0;
  writeConfig("other:x\n");
  outputOf([&] { runConfiguredCommand(1, arguments, &returnCode); });
  EXPECT_STREQ(path, "app");
  EXPECT_EQ(returnCode, -1);
}

TEST_F(RunConfiguredCommand, LeavesTheNameAloneWithoutTheFile) {
  char path[] = "/some/where/app.exe";
  char* arguments[] = {path, nullptr};
  int returnCode = 0;
  outputOf([&] { runConfiguredCommand(1, arguments, &returnCode); });
  EXPECT_STREQ(path, "/some/where/app.exe");
  EXPECT_EQ(returnCode, -1);
}

}  // namespace
}  // namespace quillory
