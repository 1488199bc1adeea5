#include "launcher/for_embedders.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <climits>
#include <string>

#include "tests/harness/captured_log.h"
#include "tests/harness/temp_dir.h"

namespace quillory {
namespace {

using testing::CapturedLog;

TEST(GetPathToExe, IsWhereThisProgramLies) {
  const CapturedLog log;
  std::array<char, PATH_MAX> path;
  path.fill('x');
  EXPECT_EQ(getPathToExe(path.data(), static_cast<int>(path.size())), 0);
  EXPECT_TRUE(std::string(path.data()).ends_with("/launcher_tests")) << path.data();
  EXPECT_EQ(path.back(), '\0') << "filled with zeros";
  EXPECT_EQ(log.text(), std::string("Path to exe is ") + path.data() + "\n");
}

TEST(GetPathToExe, IsCutToTheBuffer) {
  const CapturedLog log;
  char path[6] = {'x', 'x', 'x', 'x', 'x', 'x'};
  EXPECT_EQ(getPathToExe(path, 5), 0);
  EXPECT_EQ(std::string(path).size(), 4U);
  EXPECT_EQ(path[5], 'x');
}

TEST(GetPathToExe, FailsWithoutABuffer) {
  char path[1] = {'x'};
  EXPECT_EQ(getPathToExe(path, 0), -1);
  EXPECT_EQ(getPathToExe(path, -1), -1);
  EXPECT_EQ(path[0], 'x');
}

// As on a system without /proc.
TEST(GetPathToExe, FailsWhereTheLinkCannotBeRead) {
  if (geteuid() != 0) GTEST_SKIP() << "needs a root folder of its own";
  const testing::TempDir root;
  const pid_t child = fork();
  if (child == 0) {
    if (chroot(root.str().c_str()) != 0) _exit(2);
    std::array<char, 100> path;
    path.fill('x');
    _exit(getPathToExe(path.data(), static_cast<int>(path.size())) == -1 && path[0] == '\0' ? 0
                                                                                            : 1);
  }
  int status = 0;
  waitpid(child, &status, 0);
  EXPECT_EQ(status, 0);
}

}  // namespace
}  // namespace quillory
