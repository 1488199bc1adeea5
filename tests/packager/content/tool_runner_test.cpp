#include "packager/content/tool_runner.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

#include "packager/report/findings.h"
#include "tests/harness/temp_dir.h"

namespace quillory::pack {
namespace {

namespace fs = std::filesystem;
using testing::TempDir;
using testing::writeFile;

TEST(RunTool, ReturnsWhatWasPrintedOnBothOutputs) {
  TempDir dir;
  EXPECT_EQ(runTool({"sh", "-c", "echo out; echo err >&2"}, dir.str()), "out\nerr\n");
  EXPECT_TRUE(fs::is_empty(dir.path()));
}

TEST(RunTool, PassesArgumentsThatShellsWouldChange) {
  TempDir dir;
  EXPECT_EQ(runTool({"printf", "%s|", "a b", "$HOME", "`id`", "\"", "*", ""}, dir.str()),
            "a b|$HOME|`id`|\"|*||");
}

TEST(RunTool, ThrowsWhenTheToolFailsOrIsNotThere) {
  TempDir dir;
  EXPECT_THROW(runTool({"false"}, dir.str()), PackError);
  EXPECT_THROW(runTool({dir / "missing"}, dir.str()), PackError);
  EXPECT_THROW(runTool({"sh", "-c", "kill -9 $$"}, dir.str()), PackError);
}

TEST(FindJdkTool, LooksIntoTheFolderThatIsNamedOnly) {
  TempDir dir;
  EXPECT_THROW(findJdkTool("jlink", dir.str()), PackError);
  writeFile(dir / "bin/jlink", "x");
  fs::permissions(dir / "bin/jlink", fs::perms::owner_all);
  EXPECT_EQ(findJdkTool("jlink", dir.str()), dir / "bin/jlink");
}

TEST(FindJdkTool, LooksIntoJavaHomeThenIntoPath) {
  TempDir dir;
  writeFile(dir / "bin/some-jdk-tool", "x");
  fs::permissions(dir / "bin/some-jdk-tool", fs::perms::owner_all);
  const std::string path = std::getenv("PATH");
  unsetenv("JAVA_HOME");
  EXPECT_THROW(findJdkTool("some-jdk-tool", ""), PackError);
  setenv("PATH", (dir.str() + "/bin:" + path).c_str(), 1);
  EXPECT_EQ(findJdkTool("some-jdk-tool", ""), dir / "bin/some-jdk-tool");
  setenv("PATH", path.c_str(), 1);
  setenv("JAVA_HOME", dir.str().c_str(), 1);
  EXPECT_EQ(findJdkTool("some-jdk-tool", ""), dir / "bin/some-jdk-tool");
  unsetenv("JAVA_HOME");
}

}  // namespace
}  // namespace quillory::pack
