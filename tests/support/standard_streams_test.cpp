#include "support/standard_streams.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <initializer_list>

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

}  // namespace
}  // namespace quillory
