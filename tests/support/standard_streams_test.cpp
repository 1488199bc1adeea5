#include "support/standard_streams.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <initializer_list>
#include <string>
#include <vector>

#include "support/process.h"
#include "support/program.h"

namespace quillory {
namespace {

bool isNullDevice(int descriptor) {
  struct stat opened {
  }, null{};
  return fstat(descriptor, &opened) == 0 && stat("/dev/null", &null) == 0 &&
         opened.st_rdev == null.st_rdev;
}

/// Whether all of `closed` lead to the null device after the call, and 3 is still free; found out
/// in a child process.
bool fills(std::initializer_list<int> closed) {
  const pid_t child = fork();
  if (child == 0) {
    for (int descriptor = 3; descriptor < 64; ++descriptor) close(descriptor);
    for (const int descriptor : closed) close(descriptor);
    fillStandardStreams();
    for (const int descriptor : closed)
      if (!isNullDevice(descriptor)) _exit(1);
    struct stat next {};
    _exit(fstat(3, &next) == 0 ? 2 : 0);
  }
  int status = 0;
  waitpid(child, &status, 0);
  return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

TEST(FillStandardStreams, OpensTheNullDeviceInPlaceOfEachThatIsClosed) {
  EXPECT_TRUE(fills({0}));
  EXPECT_TRUE(fills({1}));
  EXPECT_TRUE(fills({2}));
  EXPECT_TRUE(fills({0, 2}));
  EXPECT_TRUE(fills({0, 1, 2}));
}

TEST(FillStandardStreams, LeavesOpenOnesAlone) {
  struct stat before[3] = {};
  for (int descriptor = 0; descriptor < 3; ++descriptor) fstat(descriptor, &before[descriptor]);
  fillStandardStreams();
  for (int descriptor = 0; descriptor < 3; ++descriptor) {
    struct stat after {};
    ASSERT_EQ(fstat(descriptor, &after), 0);
    EXPECT_EQ(after.st_ino, before[descriptor].st_ino);
    EXPECT_EQ(after.st_dev, before[descriptor].st_dev);
  }
}

/// What happens in a child process that has `before` done, outlives its readers, and then `does`
/// something: its wait status.
template <typename Before, typename Does>
int statusOfChild(Before before, Does does) {
  const pid_t child = fork();
  if (child == 0) {
    before();
    outliveReaders();
    _exit(does());
  }
  int status = 0;
  waitpid(child, &status, 0);
  return status;
}

// 0 when writing to a pipe without a reader fails as any other write.
int writeToNobody() {
  int ends[2];
  if (pipe(ends) != 0) return 2;
  close(ends[0]);
  return write(ends[1], "x", 1) == -1 && errno == EPIPE ? 0 : 1;
}

// Whether the signal ends a program that is started, directly and by a shell.
int startedProgramsDie() {
  const std::vector<std::string> program = {"/bin/sh", "-c", "kill -PIPE $$; exit 0"};
  if (runProgram(program).signal != SIGPIPE) return 1;
  const int byShell = processCalls.runShell("sh -c 'kill -PIPE $$; exit 0'; [ $? -gt 128 ]");
  return WIFEXITED(byShell) && WEXITSTATUS(byShell) == 0 ? 0 : 2;
}

void haveDefault() { std::signal(SIGPIPE, SIG_DFL); }

TEST(OutliveReaders, LetsAWriteWithoutAReaderFail) {
  EXPECT_EQ(statusOfChild(haveDefault, writeToNobody), 0);
}

TEST(OutliveReaders, IsNotHandedOnToPrograms) {
  EXPECT_EQ(statusOfChild(haveDefault, startedProgramsDie), 0);
}

TEST(OutliveReaders, LeavesItToProgramsWhereItWasIgnoredBefore) {
  const auto ignored = [] { std::signal(SIGPIPE, SIG_IGN); };
  EXPECT_EQ(statusOfChild(ignored, writeToNobody), 0);
  EXPECT_EQ(WEXITSTATUS(statusOfChild(ignored, startedProgramsDie)), 1);
}

}  // namespace
}  // namespace quillory
