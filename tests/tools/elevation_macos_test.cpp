// askForRights() of macOS, with a stand-in for osascript that any system can run.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "tests/harness/stand_in_program.h"
#include "tests/tools/hard_arguments.h"
#include "tools/elevation.h"

namespace quillory::testing {
namespace {

constexpr char kStandIn[] = QUILLORY_SOURCE_DIR "/tests/tools/osascript_stand_in.py";

class AskForRightsOnMacOs : public ::testing::Test {
 protected:
  AskForRightsOnMacOs() { writeProgram(tools_ / "osascript", readFile(kStandIn)); }

  int ask(std::vector<std::string> arguments, const std::string& prompt = "My App") {
    arguments.insert(arguments.begin(), program_);
    ::testing::internal::CaptureStdout();
    ::testing::internal::CaptureStderr();
    const int status = askForRights({prompt, arguments}, {false, true, {tools_.str()}});
    out_ = ::testing::internal::GetCapturedStdout();
    err_ = ::testing::internal::GetCapturedStderr();
    return status;
  }

  TempDir tools_;
  const std::string program_ = tools_ / "my \"program\" $x 'y' \\";
  std::string out_, err_;
};

TEST_F(AskForRightsOnMacOs, HandsOverEveryArgumentByteForByte) {
  const TempDir records;
  writeRecorder(program_, records / "args");
  EXPECT_EQ(ask(hardArguments()), 0);
  EXPECT_EQ(recordedIn(records / "args"), hardArguments());
  EXPECT_EQ(err_, "");
  EXPECT_FALSE(std::filesystem::exists("/x"));
}

TEST_F(AskForRightsOnMacOs, HandsOverEveryPromptByteForByte) {
  writeProgram(program_, "#!/bin/sh\n");
  for (const std::string& prompt : hardArguments()) {
    SCOPED_TRACE(prompt.substr(0, 40));
    EXPECT_EQ(ask({}, prompt), 0);
    EXPECT_EQ(readFile(tools_ / "osascript.prompt"),
              prompt + " is to be installed for all users of this Mac.");
  }
}

TEST_F(AskForRightsOnMacOs, ShowsWhatTheProgramWritesAndEndsAsItDoes) {
  for (const int status : {0, 1, 77, 255}) {
    writeProgram(program_, "#!/bin/sh\nprintf 'one\\r\\ntwo\\n'\nprintf three >&2\nexit " +
                               std::to_string(status) + "\n");
    EXPECT_EQ(ask({}), status);
    EXPECT_EQ(out_, "one\r\ntwo\nthree");
    EXPECT_EQ(err_, "");
  }
}

TEST_F(AskForRightsOnMacOs, ShowsMoreOutputThanAPipeHolds) {
  writeProgram(program_, "#!/bin/sh\nhead -c 300000 /dev/zero | tr '\\0' x\n");
  EXPECT_EQ(ask({}), 0);
  EXPECT_EQ(out_, std::string(300000, 'x'));
}

TEST_F(AskForRightsOnMacOs, CountsASignalOnTopOf128) {
  writeProgram(program_, "#!/bin/sh\nkill -TERM $$\n");
  EXPECT_EQ(ask({}), 128 + 15);
}

TEST_F(AskForRightsOnMacOs, IsDeniedWhenTheDialogIsCancelled) {
  writeProgram(tools_ / "osascript",
               "#!/bin/sh\necho '0:9: execution error: User canceled. (-128)' >&2\nexit 1\n");
  EXPECT_EQ(ask({}), kElevationDenied);
  EXPECT_EQ(err_,
            "0:9: execution error: User canceled. (-128)\n"
            "elev_mac: the administrator's rights were not given\n");
}

TEST_F(AskForRightsOnMacOs, SaysThatNothingCanGiveTheRights) {
  std::filesystem::remove(tools_ / "osascript");
  EXPECT_EQ(ask({}), kElevationUnavailable);
  EXPECT_EQ(err_,
            "elev_mac: osascript is missing: there is no way to get the administrator's rights\n");
}

TEST_F(AskForRightsOnMacOs, SaysThatTheStatusIsMissing) {
  writeProgram(tools_ / "osascript", "#!/bin/sh\necho something else\n");
  EXPECT_EQ(ask({}), kElevationUnavailable);
  EXPECT_EQ(err_, "elev_mac: osascript ended without the program's status\n");
}

}  // namespace
}  // namespace quillory::testing
