#include "launcher/for_embedders.h"

#include <gtest/gtest.h>

#include <array>
#include <climits>
#include <string>

#include "tests/harness/captured_log.h"

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

}  // namespace
}  // namespace quillory
