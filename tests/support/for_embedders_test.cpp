#include "support/for_embedders.h"

#include <gmock/gmock.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <cerrno>
#include <chrono>
#include <climits>
#include <cstdint>
#include <cstring>
#include <string>

#include "support/clock.h"
#include "support/owned.h"
#include "support/paths.h"
#include "support/process.h"
#include "support/spawner.h"
#include "tests/harness/captured_log.h"
#include "tests/harness/scoped_replace.h"
#include "tests/harness/temp_dir.h"
#include "tests/support/wall_clock.h"

namespace quillory {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;
using testing::CapturedLog;
using ::testing::ElementsAre;
using testing::epochMillis;
using testing::readFile;
using testing::ScopedReplace;
using testing::TempDir;

TEST(CloneString, IsAllocCopyByAnotherName) {
  EXPECT_STREQ(OwnedText(cloneString("a text")).get(), "a text");
  EXPECT_STREQ(OwnedText(cloneString("")).get(), "");
}

TEST(AllocSubstring, CutsOutThatManyBytes) {
  static constexpr struct {
    int start, length;
    const char* expected;
  } kCases[] = {{0, 5, "hello"}, {1, 3, "ell"}, {4, 1, "o"}, {2, 0, ""}, {5, 0, ""}};
  for (const auto& [start, length, expected] : kCases) {
    SCOPED_TRACE(::testing::Message() << start << ", " << length);
    EXPECT_STREQ(OwnedText(allocSubstring("hello", start, length)).get(), expected);
  }
}

TEST(AllocSubstring, StaysInsideTheStringWhateverTheRange) {
  static constexpr struct {
    int start, length;
    const char* expected;
  } kCases[] = {{3, 100, "lo"}, {5, 1, ""},        {6, 1, ""},  {INT_MAX, INT_MAX, ""},
                {-1, 2, "he"},  {INT_MIN, 1, "h"}, {0, -1, ""}, {1, INT_MIN, ""}};
  for (const auto& [start, length, expected] : kCases) {
    SCOPED_TRACE(::testing::Message() << start << ", " << length);
    EXPECT_STREQ(OwnedText(allocSubstring("hello", start, length)).get(), expected);
  }
}

TEST(AllocTempString, PutsOneBehindTheOther) {
  EXPECT_STREQ(OwnedText(allocTempString("a", "bc")).get(), "abc");
  EXPECT_STREQ(OwnedText(allocTempString("", "b")).get(), "b");
  EXPECT_STREQ(OwnedText(allocTempString("a", "")).get(), "a");
  EXPECT_STREQ(OwnedText(allocTempString("", "")).get(), "");
}

TEST(AllocTempPath, PutsOneSeparatorBetween) {
  static constexpr struct {
    const char *a, *b, *expected;
  } kCases[] = {{"/a", "b", "/a/b"}, {"/a/", "b", "/a/b"}, {"", "b", "b"},
                {"a", "", "a/"},     {"/", "b", "/b"},     {"a", "/b", "a//b"}};
  for (const auto& [a, b, expected] : kCases) {
    SCOPED_TRACE(expected);
    std::string first(a), second(b);
    EXPECT_STREQ(OwnedText(allocTempPath(first.data(), second.data())).get(), expected);
  }
}

TEST(LastIndexOf, FindsTheLastOne) {
  EXPECT_EQ(lastIndexOf("/a/b/c", '/'), 4);
  EXPECT_EQ(lastIndexOf("/", '/'), 0);
  EXPECT_EQ(lastIndexOf("abc", '/'), -1);
  EXPECT_EQ(lastIndexOf("", '/'), -1);
}

TEST(IndexOf, CountsOccurrencesFrom1) {
  EXPECT_EQ(indexOf("/a/b/c", '/', 1), 0);
  EXPECT_EQ(indexOf("/a/b/c", '/', 2), 2);
  EXPECT_EQ(indexOf("/a/b/c", '/', 3), 4);
  EXPECT_EQ(indexOf("/a/b/c", '/', 4), -1);
}

TEST(IndexOf, IsMinusOneForCountsBelow1AndForTheEmptyString) {
  EXPECT_EQ(indexOf("/a/b/c", '/', 0), -1);
  EXPECT_EQ(indexOf("/a/b/c", '/', -1), -1);
  EXPECT_EQ(indexOf("", '/', 1), -1);
}

TEST(IntegerToA, WritesAtMost7CharactersAndReturnsTheWholeLength) {
  static constexpr struct {
    int value;
    const char* written;
    int returned;
  } kCases[] = {{0, "0", 1},
                {-42, "-42", 3},
                {1234567, "1234567", 7},
                {12345678, "1234567", 8},
                {123456789, "1234567", 9},
                {INT_MIN, "-214748", 11}};
  for (const auto& [value, written, returned] : kCases) {
    SCOPED_TRACE(value);
    char text[10];
    std::memset(text, '#', sizeof text);
    EXPECT_EQ(integerToA(value, text), returned);
    EXPECT_STREQ(text, written);
    EXPECT_EQ(text[8], '#');
    EXPECT_EQ(text[9], '#');
  }
}

TEST(Is32Bit, IsAlwaysFalse) { EXPECT_FALSE(is32Bit()); }

TEST(EditToWindowsSubsystem, TouchesNothing) {
  editToWindowsSubsystem("/no/such/file", 1);
  EXPECT_NE(access("/no/such/file", F_OK), 0);
}

TEST(PathToFile, PointsBehindTheLastSeparator) {
  char path[] = "/a/b/file.txt";
  EXPECT_EQ(pathToFile(path), path + 5);
  char plain[] = "file";
  EXPECT_EQ(pathToFile(plain), plain);
  char folder[] = "a/";
  EXPECT_STREQ(pathToFile(folder), "");
  char empty[] = "";
  EXPECT_EQ(pathToFile(empty), empty);
}

TEST(DoesDirExist, OnlyLogs) {
  const CapturedLog log;
  EXPECT_TRUE(doesDirExist("/no/such/folder"));
  EXPECT_THAT(log.messages(), ElementsAre("Checking if /no/such/folder exists\n"));
}

TEST(EscapeSpaces, ReturnsTheTextItselfWithoutTheFlag) {
  char text[] = "a b";
  EXPECT_EQ(escapeSpaces(text, false), text);
}

TEST(EscapeSpaces, PutsABackslashBeforeEverySpace) {
  char text[] = " a  b\tc ";
  const OwnedText escaped(escapeSpaces(text, true));
  EXPECT_STREQ(escaped.get(), "\\ a\\ \\ b\tc\\ ");
}

TEST(EscapeSpaces, GivesANewEmptyTextForAnEmptyOne) {
  char text[] = "";
  const OwnedText escaped(escapeSpaces(text, true));
  EXPECT_NE(escaped.get(), text);
  EXPECT_STREQ(escaped.get(), "");
}

TEST(QuoteSpaciousString, QuotesWithAndWithoutSpaces) {
  for (const char* const text : {"", "plain", "with space", "\"quoted\""}) {
    const OwnedText quoted(quoteSpaciousString(text));
    EXPECT_EQ(quoted.get(), '"' + std::string(text) + '"');
  }
}

TEST(QuoteStringIfNecessary, LeavesATextThatBeginsWithAQuote) {
  char text[] = "\"half";
  EXPECT_EQ(quoteStringIfNecessary(text), text);
}

TEST(QuoteStringIfNecessary, QuotesAnyOther) {
  char text[] = "a \"b\"";
  const OwnedText quoted(quoteStringIfNecessary(text));
  EXPECT_STREQ(quoted.get(), "\"a \"b\"\"");
  char empty[] = "";
  const OwnedText quotedEmpty(quoteStringIfNecessary(empty));
  EXPECT_STREQ(quotedEmpty.get(), "\"\"");
}

TEST(RunCommandGetOutput, IsTheTrimmedOutput) {
  EXPECT_STREQ(OwnedText(runCommandGetOutput("printf '1.8\\n\\r '")).get(), "1.8");
  EXPECT_STREQ(OwnedText(runCommandGetOutput("true")).get(), "");
}

TEST(RunCommandGetOutput, IsNullWhenNothingCanBeStarted) {
  const ScopedReplace spawn(
      processCalls.spawn, +[](pid_t*, const char*, const posix_spawn_file_actions_t*, char* const[],
                              char* const[]) { return EAGAIN; });
  EXPECT_EQ(runCommandGetOutput("true"), nullptr);
}

TEST(SystemTimeMillis, IsTheSameQuantity) {
  const std::int64_t before = epochMillis();
  const auto now = static_cast<std::int64_t>(systemTimeMillis());
  const std::int64_t after = epochMillis();
  EXPECT_LE(before, now);
  EXPECT_LE(now, after);
}

TEST(GetJustMillis, IsTheMillisecondPartOfTheSecond) {
  const ScopedReplace clock(
      timeCalls.nowMillis, +[] { return std::uint64_t{1795000000042}; });
  EXPECT_EQ(getJustMillis(), 42);
}

TEST(GetJustMillis, ReachesFrom0To999) {
  {
    const ScopedReplace clock(
        timeCalls.nowMillis, +[] { return std::uint64_t{1795000000999}; });
    EXPECT_EQ(getJustMillis(), 999);
  }
  const ScopedReplace clock(
      timeCalls.nowMillis, +[] { return std::uint64_t{1795000001000}; });
  EXPECT_EQ(getJustMillis(), 0);
}

TEST(Millisleep, FailsAtOnceForEveryWaitWorthTheName) {
  for (const int ms : {1, 2, 999, 1000, 1001, 60000, 2147483647}) {
    SCOPED_TRACE(ms);
    const auto begin = steady_clock::now();
    errno = 0;
    EXPECT_EQ(millisleep(ms), -1);
    EXPECT_EQ(errno, EINVAL);
    EXPECT_LT(steady_clock::now() - begin, milliseconds(500));
  }
}

TEST(Millisleep, SucceedsForZero) { EXPECT_EQ(millisleep(0), 0); }

class Pathcat : public ::testing::Test {
 protected:
  char path_[kPathCapacity] = {};
};

TEST_F(Pathcat, PutsOneSeparatorBetween) {
  std::strcpy(path_, "/a/");
  EXPECT_STREQ(pathcat(path_, "b"), "/a/b");
  std::strcpy(path_, "/a");
  EXPECT_STREQ(pathcat(path_, "b"), "/a/b");
}

TEST_F(Pathcat, ReturnsItsBuffer) {
  std::strcpy(path_, "/a");
  EXPECT_EQ(pathcat(path_, "b"), path_);
}

TEST_F(Pathcat, DoublesTheSeparatorBeforeAnAbsoluteComponent) {
  std::strcpy(path_, "/a");
  EXPECT_STREQ(pathcat(path_, "/b"), "/a//b");
  std::strcpy(path_, "/a/");
  EXPECT_STREQ(pathcat(path_, "/b"), "/a//b");
}

TEST_F(Pathcat, AppendsTheSeparatorEvenForAnEmptyComponent) {
  std::strcpy(path_, "/a");
  EXPECT_STREQ(pathcat(path_, ""), "/a/");
}

TEST_F(Pathcat, TakesItsOwnBufferAsTheComponent) {
  std::strcpy(path_, "/a");
  EXPECT_STREQ(pathcat(path_, path_), "/a//a");
}

// The error goes to the system log too, which is standard error here.
TEST_F(Pathcat, EndsTheProcessInsteadOfOverrunningTheBuffer) {
  ::testing::GTEST_FLAG(death_test_style) = "threadsafe";
  const std::string component(kPathCapacity - 3, 'x');
  std::strcpy(path_, "/a");
  EXPECT_EXIT(pathcat(path_, component.c_str()), ::testing::ExitedWithCode(1),
              "too long .*: /a/xxx");
}

class RunSpawnerAndContinue : public ::testing::Test {
 protected:
  void setShell(const char* command) {
    setSpawnerExe(spawner_.get(), "/bin/sh");
    addSpawnerArg(spawner_.get(), "-c");
    addSpawnerArg(spawner_.get(), command);
  }

  CapturedLog log_;
  const OwnedSpawner spawner_{createSpawner()};
};

TEST_F(RunSpawnerAndContinue, ReturnsBeforeTheChildEnds) {
  TempDir dir;
  const std::string pipe = dir / "pipe";
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  // The child cannot end before somebody writes into the pipe, which happens after the return.
  setShell("read line < pipe; echo $line > out");
  EXPECT_EQ(runSpawnerAndContinue(spawner_.get(), dir.str().c_str()), 0);
  testing::writeFile(pipe, "hello\n");
  int status = -1;
  ASSERT_GT(wait(&status), 0);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(readFile(dir.path() / "out"), "hello\n");
}

TEST_F(RunSpawnerAndContinue, IsZeroWhateverTheExitStatus) {
  setShell("exit 9");
  EXPECT_EQ(runSpawnerAndContinue(spawner_.get()), 0);
  int status = 0;
  ASSERT_GT(wait(&status), 0);
  EXPECT_EQ(WEXITSTATUS(status), 9);
}

TEST_F(RunSpawnerAndContinue, ReportsAProgramThatDoesNotExist) {
  setSpawnerExe(spawner_.get(), "/nonexistent/tool");
  EXPECT_EQ(runSpawnerAndContinue(spawner_.get()), -1);
  EXPECT_EQ(log_.messages().back(), "Launch Error 2.\n");
}

}  // namespace
}  // namespace quillory
