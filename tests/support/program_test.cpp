#include "support/program.h"

#include <gmock/gmock.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <filesystem>
#include <string>
#include <vector>

#include "support/process.h"
#include "tests/harness/captured_log.h"
#include "tests/harness/captured_output.h"
#include "tests/harness/scoped_replace.h"
#include "tests/harness/temp_dir.h"

namespace quillory {
namespace {

using quillory::testing::CapturedLog;
using quillory::testing::CapturedOutput;
using quillory::testing::readFile;
using quillory::testing::ScopedReplace;
using quillory::testing::TempDir;
using ::testing::ElementsAre;

std::vector<std::string> shell(const std::string& script) { return {"/bin/sh", "-c", script}; }

ProgramOptions withOutput(ProgramOutput output) {
  ProgramOptions options;
  options.output = output;
  return options;
}

TEST(RunProgram, TellsTheExitStatus) {
  for (const int status : {0, 1, 72, 255}) {
    SCOPED_TRACE(status);
    const ProgramResult program = runProgram(shell("exit " + std::to_string(status)));
    EXPECT_TRUE(program.started);
    EXPECT_EQ(program.error, 0);
    EXPECT_GT(program.process, 0);
    EXPECT_TRUE(program.exited);
    EXPECT_EQ(program.status, status);
    EXPECT_EQ(program.signal, 0);
    EXPECT_EQ(program.waitStatus, status << 8) << "as waitpid() has it";
    EXPECT_EQ(program.output, "");
  }
}

TEST(RunProgram, TellsTheSignalThatEndedIt) {
  const ProgramResult program = runProgram(shell("kill -TERM $$"));
  EXPECT_TRUE(program.started);
  EXPECT_FALSE(program.exited);
  EXPECT_EQ(program.status, -1);
  EXPECT_EQ(program.signal, SIGTERM);
}

TEST(RunProgram, TellsWhyItDidNotStart) {
  const TempDir dir;
  const std::string plain = dir / "plain";
  quillory::testing::writeFile(plain, "x");
  const struct {
    std::vector<std::string> arguments;
    int error;
  } kCases[] = {
      {{"/nonexistent/tool"}, ENOENT}, {{plain}, EACCES}, {{"true"}, ENOENT}, {{}, ENOENT}};
  for (const auto& [arguments, error] : kCases) {
    SCOPED_TRACE(arguments.empty() ? "nothing" : arguments[0]);
    for (const ProgramOutput output : {ProgramOutput::kInherited, ProgramOutput::kCaptured}) {
      const ProgramResult program = runProgram(arguments, withOutput(output));
      EXPECT_FALSE(program.started);
      EXPECT_EQ(program.error, error);
      EXPECT_FALSE(program.exited);
      EXPECT_EQ(program.status, -1);
      EXPECT_EQ(program.signal, 0);
    }
  }
}

TEST(RunProgram, HandsOverTheArgumentsAsTheyAre) {
  const ProgramResult program =
      runProgram({"/usr/bin/printf", "<%s>", "a b", "", "$HOME", "\"q\"", "`id`"},
                 withOutput(ProgramOutput::kCaptured));
  EXPECT_EQ(program.output, "<a b><><$HOME><\"q\"><`id`>");
}

TEST(RunProgram, LeavesTheOutputWhereOursGoes) {
  CapturedOutput ours;
  const ProgramResult program = runProgram(shell("echo out"));
  EXPECT_EQ(ours.take(), "out\n");
  EXPECT_EQ(program.output, "");
}

TEST(RunProgram, CapturesTheOutputToTheLastByte) {
  const ProgramResult program = runProgram(shell("printf ' a\\0b \\n'; seq 1 30000; exit 3"),
                                           withOutput(ProgramOutput::kCaptured));
  EXPECT_EQ(program.status, 3);
  EXPECT_TRUE(program.output.starts_with(std::string(" a\0b \n1\n", 8)));
  EXPECT_TRUE(program.output.ends_with("30000\n"));
  EXPECT_GT(program.output.size(), 65536U) << "more than a pipe holds";
}

TEST(RunProgram, CapturesErrorsOnlyWhereTheyAreWanted) {
  const std::string script = "echo out; echo err >&2";
  ::testing::internal::CaptureStderr();
  EXPECT_EQ(runProgram(shell(script), withOutput(ProgramOutput::kCaptured)).output, "out\n");
  EXPECT_EQ(::testing::internal::GetCapturedStderr(), "err\n");
  ::testing::internal::CaptureStderr();
  EXPECT_EQ(runProgram(shell(script), withOutput(ProgramOutput::kBothCaptured)).output,
            "out\nerr\n");
  EXPECT_EQ(::testing::internal::GetCapturedStderr(), "");
}

TEST(RunProgram, KeepsNothingOfADiscardedOutput) {
  CapturedOutput ours;
  ::testing::internal::CaptureStderr();
  const ProgramResult program =
      runProgram(shell("echo out; echo err >&2; exit 4"), withOutput(ProgramOutput::kDiscarded));
  EXPECT_EQ(::testing::internal::GetCapturedStderr(), "");
  EXPECT_EQ(ours.take(), "");
  EXPECT_EQ(program.output, "");
  EXPECT_EQ(program.status, 4);
}

TEST(RunProgram, RunsInTheDirectoryAndComesBack) {
  const TempDir dir;
  const std::filesystem::path before = std::filesystem::current_path();
  ProgramOptions options = withOutput(ProgramOutput::kCaptured);
  options.directory = dir.str();
  EXPECT_EQ(runProgram(shell("pwd"), options).output, dir.str() + "\n");
  EXPECT_EQ(std::filesystem::current_path(), before);
}

TEST(RunProgram, RunsInOurDirectoryWhereTheGivenOneIsMissing) {
  const CapturedLog log;
  const std::string before = std::filesystem::current_path().string();
  ProgramOptions options = withOutput(ProgramOutput::kCaptured);
  options.directory = "/nonexistent/folder";
  EXPECT_EQ(runProgram(shell("pwd"), options).output, before + "\n");
  EXPECT_THAT(log.messages(),
              ElementsAre("[Spawner] WARNING: couldn't change to /nonexistent/folder\n"));
}

TEST(RunProgram, DoesNotWaitWhereNobodyWantsTo) {
  const TempDir dir;
  const std::string pipe = dir / "pipe";
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  ProgramOptions options;
  options.waits = false;
  // It cannot end before somebody writes into the pipe, which happens after the return.
  ProgramResult program = runProgram(shell("read line < " + pipe + "; exit 7"), options);
  EXPECT_TRUE(program.started);
  EXPECT_FALSE(program.exited);
  EXPECT_EQ(program.status, -1);
  quillory::testing::writeFile(pipe, "go on\n");
  waitForProgram(program);
  EXPECT_TRUE(program.exited);
  EXPECT_EQ(program.status, 7);
}

TEST(RunProgram, TellsNothingOfAnEndThatCannotBeWaitedFor) {
  ScopedReplace wait(
      processCalls.waitFor, +[](pid_t child, int*) -> pid_t {
        waitpid(child, nullptr, 0);
        errno = ECHILD;
        return -1;
      });
  const ProgramResult program = runProgram(shell("exit 0"));
  EXPECT_TRUE(program.started);
  EXPECT_FALSE(program.exited);
  EXPECT_EQ(program.status, -1);
  EXPECT_EQ(program.signal, 0);
}

TEST(RunProgram, LeavesNoFileOpen) {
  const auto openFiles = [] {
    return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
  };
  const auto before = openFiles();
  for (const ProgramOutput output :
       {ProgramOutput::kCaptured, ProgramOutput::kBothCaptured, ProgramOutput::kDiscarded}) {
    runProgram(shell("true"), withOutput(output));
    runProgram({"/nonexistent/tool"}, withOutput(output));
  }
  EXPECT_EQ(openFiles(), before);
}

TEST(RunProgram, LeavesItsPipeToTheProgramAsStandardOutputOnly) {
  const TempDir dir;
  const std::string file = dir / "files";
  runProgram(shell("ls /proc/self/fd > " + file));
  EXPECT_EQ(runProgram(shell("ls /proc/self/fd"), withOutput(ProgramOutput::kCaptured)).output,
            readFile(file));
}

}  // namespace
}  // namespace quillory
