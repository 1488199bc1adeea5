// askForRights() where polkit and sudo give rights, with stand-ins for both.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>

#include "tests/harness/stand_in_program.h"
#include "tests/tools/hard_arguments.h"
#include "tools/elevation.h"

namespace quillory::testing {
namespace {

namespace fs = std::filesystem;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

class AskForRights : public ::testing::Test {
 protected:
  void installPkexec(const std::string& then) {
    writeRecorder(tools_ / "pkexec", tools_ / "pkexec.args", then);
  }
  void installSudo(const std::string& then, const std::string& answer = "exit 1") {
    writeRecorder(tools_ / "sudo", tools_ / "sudo.args",
                  "if [ \"$1\" = -n ]; then " + answer + "; fi\n" + then);
  }

  int ask(bool hasDisplay, std::vector<std::string> arguments = {}) {
    arguments.insert(arguments.begin(), "/opt/my app/run");
    ::testing::internal::CaptureStdout();
    ::testing::internal::CaptureStderr();
    const int status =
        askForRights({"My App", arguments}, {false, hasDisplay, {tools_ / "none", tools_.str()}});
    out_ = ::testing::internal::GetCapturedStdout();
    err_ = ::testing::internal::GetCapturedStderr();
    return status;
  }

  TempDir tools_;
  std::string out_, err_;
};

TEST_F(AskForRights, UsesPkexecWhereThereIsADisplay) {
  installPkexec("echo output; exit 3");
  installSudo("exit 4");
  EXPECT_EQ(ask(true), 3);
  EXPECT_EQ(out_, "output\n");
  EXPECT_EQ(err_, "");
  EXPECT_THAT(recordedIn(tools_ / "pkexec.args"), ElementsAre("/opt/my app/run"));
  EXPECT_FALSE(fs::exists(tools_ / "sudo.args"));
}

TEST_F(AskForRights, UsesSudoWithoutADisplay) {
  installPkexec("exit 3");
  installSudo("echo output; exit 4");
  EXPECT_EQ(ask(false), 4);
  EXPECT_EQ(out_, "output\n");
  EXPECT_EQ(err_, "");
  EXPECT_THAT(recordedIn(tools_ / "sudo.args"),
              ElementsAre("-p", "My App: ", "--", "/opt/my app/run"));
  EXPECT_FALSE(fs::exists(tools_ / "pkexec.args"));
}

TEST_F(AskForRights, UsesSudoWherePkexecIsMissing) {
  installSudo("exit 4");
  EXPECT_EQ(ask(true), 4);
}

TEST_F(AskForRights, TakesOnlyAFileThatCanBeExecutedForATool) {
  writeFile(tools_ / "pkexec", "#!/bin/sh\nexit 3\n");
  installSudo("exit 4");
  EXPECT_EQ(ask(true), 4);
  fs::remove(tools_ / "sudo");
  fs::create_directory(tools_ / "sudo");
  EXPECT_EQ(ask(true), kElevationUnavailable);
}

TEST_F(AskForRights, HandsOverEveryArgumentByteForByte) {
  installPkexec("");
  installSudo("");
  ASSERT_EQ(ask(true, hardArguments()), 0);
  ASSERT_EQ(ask(false, hardArguments()), 0);
  std::vector<std::string> expected = hardArguments();
  expected.insert(expected.begin(), "/opt/my app/run");
  EXPECT_EQ(recordedIn(tools_ / "pkexec.args"), expected);
  expected.insert(expected.begin(), {"-p", "My App: ", "--"});
  EXPECT_EQ(recordedIn(tools_ / "sudo.args"), expected);
}

TEST_F(AskForRights, IsDeniedWhenTheDialogIsCancelledOrNobodyCanAsk) {
  for (const char* status : {"126", "127"}) {
    SCOPED_TRACE(status);
    installPkexec(std::string("exit ") + status);
    EXPECT_EQ(ask(true), kElevationDenied);
    EXPECT_EQ(err_,
              "elev_mac: the administrator's rights were not given: the question was cancelled or "
              "not answered rightly, or this session has no authentication agent that could ask "
              "it\n");
  }
}

TEST_F(AskForRights, IsDeniedWhenSudoRefuses) {
  installSudo("exit 1", "echo never shown; echo nor this >&2; exit 1");
  EXPECT_EQ(ask(false), kElevationDenied);
  EXPECT_EQ(out_, "");
  EXPECT_THAT(err_, HasSubstr("elev_mac: the administrator's rights were not given\n"));
  EXPECT_THAT(err_, Not(HasSubstr("nor this")));
}

TEST_F(AskForRights, TellsAProgramThatEndsWithOneFromARefusal) {
  installSudo("exit 1", "exit 0");
  EXPECT_EQ(ask(false), 1);
  EXPECT_EQ(err_, "");
}

TEST_F(AskForRights, DoesNotAskSudoAboutAnyOtherStatus) {
  installSudo("exit 2", "touch '" + (tools_ / "asked") + "'");
  EXPECT_EQ(ask(false), 2);
  EXPECT_FALSE(fs::exists(tools_ / "asked"));
}

TEST_F(AskForRights, CountsASignalOnTopOf128) {
  installSudo("kill -TERM $$");
  EXPECT_EQ(ask(false), 128 + SIGTERM);
}

TEST_F(AskForRights, SaysThatNothingCanGiveTheRights) {
  EXPECT_EQ(ask(false), kElevationUnavailable);
  EXPECT_EQ(err_,
            "elev_mac: sudo is not installed, and there is no display for pkexec: there is no way "
            "to get the administrator's rights\n");
  EXPECT_EQ(ask(true), kElevationUnavailable);
  EXPECT_EQ(err_,
            "elev_mac: neither pkexec nor sudo is installed: there is no way to get the "
            "administrator's rights\n");
}

TEST_F(AskForRights, SaysThatAToolCannotBeStarted) {
  writeProgram(tools_ / "sudo", "#!/missing/interpreter\n");
  EXPECT_EQ(ask(false), kElevationUnavailable);
  EXPECT_EQ(err_,
            "elev_mac: " + (tools_ / "sudo") + " cannot be started: No such file or directory\n");
}

}  // namespace
}  // namespace quillory::testing
