#include "support/log.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <cstdio>
#include <deque>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "support/clock.h"
#include "support/paths.h"
#include "support/platform.h"
#include "tests/harness/captured_log.h"
#include "tests/harness/captured_output.h"
#include "tests/harness/scoped_replace.h"
#include "tests/harness/scripted_clock.h"
#include "tests/harness/temp_dir.h"

namespace quillory {
namespace {

namespace fs = std::filesystem;
using testing::CapturedLog;
using testing::CapturedOutput;
using testing::readFile;
using testing::ScopedReplace;
using testing::ScriptedClock;
using testing::StoppedClock;
using testing::TempDir;

constexpr const char* kPrefix = "+0        ";
const std::string kStars(43, '*');

TEST(LogMessage, GoesToStandardOutputWithAPrefixAndToTheSystemLogWithout) {
  const StoppedClock clock;
  const CapturedLog system;
  CapturedOutput out;
  logMessage("[Tag] %s is %d\n", "this", 5);
  EXPECT_EQ(out.take(), "+0        [Tag] this is 5\n");
  EXPECT_EQ(system.messages(), std::vector<std::string>{"[Tag] this is 5\n"});
}

TEST(LogMessage, AddsNoLineEnd) {
  const StoppedClock clock;
  const CapturedLog system;
  CapturedOutput out;
  logMessage("half ");
  logMessage("line\n");
  EXPECT_EQ(out.take(), "+0        half +0        line\n");
}

TEST(LogMessage, PrefixesTheMillisecondsSinceThePreviousMessageWasFinished) {
  const CapturedLog system;
  // Two readings a message: 1000 and 1005, then 1020 and 1300, then 1301.
  const ScriptedClock clock({1000, 1005, 1020, 1300, 1301});
  CapturedOutput out;
  logMessage("first\n");
  logMessage("second\n");
  logMessage("third\n");
  const std::string text = out.take();
  EXPECT_EQ(text.substr(text.find('\n') + 1), "+15       second\n+1        third\n");
}

TEST(LogMessage, PadsTheNumberTo8AndLetsALongerOneBeLonger) {
  const CapturedLog system;
  const ScriptedClock clock({1, 1, 12345679, 1000000000, 2234567890});
  CapturedOutput out;
  logMessage("start\n");
  logMessage("eight\n");
  logMessage("ten\n");
  const std::string text = out.take();
  EXPECT_EQ(text.substr(text.find('\n') + 1), "+12345678 eight\n+1234567890 ten\n");
}

TEST(LogMessage, CountsFromZeroAgainAfterAClockThatFailed) {
  const CapturedLog system;
  const ScriptedClock clock({5000, 0, 7000});
  CapturedOutput out;
  logMessage("the clock fails behind this\n");
  logMessage("next\n");
  const std::string text = out.take();
  EXPECT_EQ(text.substr(text.find('\n') + 1), "+0        next\n");
}

TEST(LogMessage, WrapsWhenTheClockIsSetBack) {
  const CapturedLog system;
  const ScriptedClock clock({5000, 5000, 4999});
  CapturedOutput out;
  logMessage("first\n");
  logMessage("next\n");
  const std::string text = out.take();
  EXPECT_EQ(text.substr(text.find('\n') + 1), "+18446744073709551615 next\n");
}

TEST(LogMessage, ReadsTheClockBeforeTheSystemLogIsTold) {
  const ScriptedClock clock({1000, 2000, 3000});
  static std::uint64_t toldAt = 0;
  const ScopedReplace system(
      platformCalls.systemLog, +[](const char*) { toldAt = timeCalls.nowMillis(); });
  const CapturedOutput out;
  logMessage("message\n");
  EXPECT_EQ(toldAt, 3000U);
}

// What Java or a library has printed there comes before what happens next, a crash perhaps.
TEST(LogMessage, FlushesWhatStandsInTheBuffersOfBothStandardStreams) {
  const TempDir folder;
  const std::string out = folder / "out", err = folder / "err";
  const pid_t child = fork();
  if (child == 0) {
    const CapturedLog system;
    if (std::freopen(out.c_str(), "w", stdout) == nullptr) _exit(2);
    if (std::freopen(err.c_str(), "w", stderr) == nullptr) _exit(2);
    static char buffer[4096];
    if (std::setvbuf(stderr, buffer, _IOFBF, sizeof buffer) != 0) _exit(2);
    std::fputs("an error before\n", stderr);
    logMessage("message\n");
    _exit(0);
  }
  int status = 0;
  waitpid(child, &status, 0);
  EXPECT_EQ(status, 0);
  EXPECT_NE(readFile(out).find(" message\n"), std::string::npos);
  EXPECT_EQ(readFile(err), "an error before\n");
}

TEST(LogMessage, IsShownWhereTheTableSays) {
  static std::string shown;
  shown.clear();
  const StoppedClock clock;
  const ScopedReplace elsewhere(
      logCalls.show, +[](const char* line, std::size_t length) { shown.append(line, length); });
  const CapturedLog system;
  CapturedOutput out;
  logMessage("a%cb\n", '\0');
  EXPECT_EQ(out.take(), "");
  EXPECT_EQ(shown, std::string("+0        a\0b\n", 14));
}

TEST(LogMessage, ComesOutWholeWhateverItsLength) {
  const TempDir folder;
  const StoppedClock clock;
  const CapturedLog system;
  CapturedOutput out;
  setFileToLogTo(std::fopen((folder / "log").c_str(), "w"));
  const std::string text(1000000, 'x');
  logMessage("<%s>\n", text.c_str());
  const std::string line = kPrefix + ("<" + text) + ">\n";
  EXPECT_EQ(out.take(), line);
  EXPECT_EQ(readFile(folder / "log"), line);
  EXPECT_EQ(system.text(), "<" + text + ">\n");
  closeLoggedFile();
}

TEST(LogMessage, TakesPercentSignsInArgumentsLiterally) {
  const CapturedLog system;
  const CapturedOutput out;
  logMessage("%d%% of %s\n", 50, "%s%n%d");
  EXPECT_EQ(system.text(), "50% of %s%n%d\n");
}

TEST(LogMessage, MayBeEmpty) {
  const StoppedClock clock;
  const CapturedLog system;
  CapturedOutput out;
  logMessage("%s", "");
  EXPECT_EQ(out.take(), kPrefix);
  EXPECT_EQ(system.messages(), std::vector<std::string>{""});
}

TEST(LogMessage, GoesToTheFileFlushed) {
  const TempDir folder;
  const StoppedClock clock;
  const CapturedLog system;
  CapturedOutput out;
  setFileToLogTo(std::fopen((folder / "log").c_str(), "w"));
  logMessage("one\n");
  EXPECT_EQ(readFile(folder / "log"), "+0        one\n");
  EXPECT_EQ(out.take(), "+0        one\n");
  closeLoggedFile();
}

TEST(LogMessage, IgnoresAFileThatCannotBeWritten) {
  const StoppedClock clock;
  const CapturedLog system;
  CapturedOutput out;
  setFileToLogTo(std::fopen("/dev/full", "w"));
  logMessage("one\n");
  EXPECT_EQ(out.take(), "+0        one\n");
  EXPECT_EQ(system.text(), "one\n");
  closeLoggedFile();
}

// A process of its own, whose standard output is what the test reads.
void logInAFreshProcess() {
  dup2(STDERR_FILENO, STDOUT_FILENO);
  platformCalls.systemLog = +[](const char*) {};
  logMessage("first\n");
  std::_Exit(0);
}

TEST(LogMessageDeathTest, HasThePrefix0InTheFirstMessageOfARun) {
  ::testing::FLAGS_gtest_death_test_style = "threadsafe";
  EXPECT_EXIT(logInAFreshProcess(), ::testing::ExitedWithCode(0), "\\+0        first\n");
}

TEST(LogError, IsFramedByTwoLinesOf43Stars) {
  const TempDir folder;
  const StoppedClock clock;
  const CapturedLog system;
  CapturedOutput out;
  setFileToLogTo(std::fopen((folder / "log").c_str(), "w"));
  logError("[Tag] error %d\n", 7);
  const std::string expected =
      kPrefix + kStars + "\n" + kPrefix + "[Tag] error 7\n" + kPrefix + kStars + "\n";
  EXPECT_EQ(out.take(), expected);
  EXPECT_EQ(readFile(folder / "log"), expected);
  EXPECT_EQ(system.messages(),
            (std::vector<std::string>{kStars + "\n", "[Tag] error 7\n", kStars + "\n"}));
  closeLoggedFile();
}

TEST(LogToSystem, GoesToTheSystemLogOnly) {
  const TempDir folder;
  const CapturedLog system;
  CapturedOutput out;
  setFileToLogTo(std::fopen((folder / "log").c_str(), "w"));
  logToSystem("[Tag] %s", "told");
  EXPECT_EQ(out.take(), "");
  EXPECT_EQ(readFile(folder / "log"), "");
  EXPECT_EQ(system.messages(), std::vector<std::string>{"[Tag] told"});
  closeLoggedFile();
}

TEST(LogStartSection, IsThreeLines) {
  const CapturedLog system;
  const CapturedOutput out;
  logStartSection("JRE");
  const std::string line = std::string(48, '+') + "\n";
  EXPECT_EQ(system.messages(), (std::vector<std::string>{line, "+++ Start: JRE\n", line}));
}

TEST(LogEndSection, IsThreeLines) {
  const CapturedLog system;
  const CapturedOutput out;
  logEndSection("JRE");
  const std::string line = std::string(48, '-') + "\n";
  EXPECT_EQ(system.messages(), (std::vector<std::string>{line, "--- End: JRE\n", line}));
}

TEST(SetFileToLogTo, StoresTheFileAndClosesNothing) {
  const TempDir folder;
  const CapturedLog system;
  const CapturedOutput out;
  std::FILE* file = std::fopen((folder / "log").c_str(), "w");
  setFileToLogTo(file);
  setFileToLogTo(nullptr);
  logMessage("not in the file\n");
  EXPECT_EQ(std::fputs("still open\n", file), 1);
  std::fclose(file);
  EXPECT_EQ(readFile(folder / "log"), "still open\n");
}

// The system log without a Cocoa.
TEST(SystemLog, IsStandardErrorWithALineEndWhereOneIsMissing) {
  ::testing::internal::CaptureStderr();
  logToSystem("one");
  logToSystem("two\n");
  logToSystem("%s", "");
  EXPECT_EQ(::testing::internal::GetCapturedStderr(), "one\ntwo\n\n");
}

TEST(CloseLoggedFile, SaysSoInTheFileFirst) {
  const TempDir folder;
  const StoppedClock clock;
  const CapturedLog system;
  CapturedOutput out;
  setFileToLogTo(std::fopen((folder / "log").c_str(), "w"));
  closeLoggedFile();
  EXPECT_EQ(readFile(folder / "log"), "+0        [Utils] Closing logging file.\n");
  EXPECT_EQ(out.take(), "+0        [Utils] Closing logging file.\n");
  EXPECT_EQ(system.text(), "[Utils] Closing logging file.\n");
}

TEST(CloseLoggedFile, LeavesTheOtherSinksToLaterMessages) {
  const TempDir folder;
  const StoppedClock clock;
  const CapturedLog system;
  CapturedOutput out;
  setFileToLogTo(std::fopen((folder / "log").c_str(), "w"));
  closeLoggedFile();
  logMessage("later\n");
  EXPECT_EQ(readFile(folder / "log").find("later"), std::string::npos);
  EXPECT_NE(out.take().find("+0        later\n"), std::string::npos);
  EXPECT_TRUE(system.contains("later\n"));
}

TEST(CloseLoggedFile, ClosesTheFileOnlyOnce) {
  const TempDir folder;
  const CapturedLog system;
  const CapturedOutput out;
  std::FILE* file = std::fopen((folder / "log").c_str(), "w");
  const int descriptor = fileno(file);
  setFileToLogTo(file);
  closeLoggedFile();
  EXPECT_EQ(fcntl(descriptor, F_GETFD), -1);
  // The descriptor now belongs to another file, which a second close would hit.
  const int reused = open("/dev/null", O_RDONLY);
  EXPECT_EQ(reused, descriptor);
  closeLoggedFile();
  EXPECT_NE(fcntl(reused, F_GETFD), -1);
  close(reused);
}

TEST(LogPause, DropsWhatItsOwnThreadLogs) {
  const CapturedLog system;
  const CapturedOutput out;
  {
    const LogPause pause;
    const LogPause another;
    logMessage("dropped\n");
    logError("dropped\n");
    logToSystem("dropped\n");
    std::thread([] { logMessage("kept\n"); }).join();
  }
  logMessage("later\n");
  EXPECT_EQ(system.text(), "kept\nlater\n");
}

TEST(PrintWorkingDir, LogsTheCurrentDirectory) {
  const CapturedLog system;
  const CapturedOutput out;
  printWorkingDir();
  EXPECT_EQ(system.text(), "[Extractor] Working dir is '" + fs::current_path().string() + "'\n");
}

}  // namespace
}  // namespace quillory
