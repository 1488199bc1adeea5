#include "packager/content/tool_runner.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>

#include "packager/bytes/work_folder.h"
#include "packager/report/findings.h"
#include "tests/harness/temp_dir.h"

namespace quillory::pack {
namespace {

namespace fs = std::filesystem;
using testing::TempDir;
using testing::writeFile;

constexpr char kShell[] = "/bin/sh";

// What a failure says, as people read it.
std::string errorOf(const std::vector<std::string>& command) {
  try {
    runTool(command);
  } catch (const PackError& e) {
    return asText(e.finding());
  }
  return "";
}

TEST(RunTool, ReturnsWhatWasPrintedOnBothOutputs) {
  EXPECT_EQ(runTool({kShell, "-c", "echo out; echo err >&2; echo more"}), "out\nerr\nmore\n");
}

TEST(RunTool, PassesArgumentsThatShellsWouldChange) {
  EXPECT_EQ(runTool({"/usr/bin/printf", "%s|", "a b", "$HOME", "`id`", "\"", "*", ""}),
            "a b|$HOME|`id`|\"|*||");
}

TEST(RunTool, ThrowsWhenTheToolFailsOrIsNotThere) {
  TempDir dir;
  EXPECT_THROW(runTool({kShell, "-c", "false"}), PackError);
  EXPECT_EQ(errorOf({dir / "missing"}),
            dir / "missing" + ": error: cannot be started: No such file or directory");
  EXPECT_THROW(runTool({kShell, "-c", "kill -9 $$"}), PackError);
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

// Ends the process, in which a signal has been noticed, with 0 where the test is right; at once, so
// that the folders of the test stay with their owner.
void failWhenInterrupted() {
  noticeInterruptions();
  std::raise(SIGTERM);
  try {
    runTool({kShell, "-c", "false"});
  } catch (const PackError& e) {
    std::_Exit(e.what() == std::string("interrupted") ? 0 : 1);
  }
  std::_Exit(2);
}

TEST(RunTool, DoesNotBlameAToolThatWasInterruptedToo) {
  EXPECT_EXIT(failWhenInterrupted(), ::testing::ExitedWithCode(0), "");
}

TEST(RunTool, ShowsHowAToolFailedAndWhatItSaid) {
  EXPECT_EQ(errorOf({kShell, "-c", "echo no; exit 3"}),
            "error: /bin/sh failed with status 3:\nno\n");
  EXPECT_EQ(errorOf({kShell, "-c", "echo out; kill -9 $$"}), "error: /bin/sh failed:\nout\n");
}

TEST(RunTool, ShowsTheLast2000BytesOfWhatWasSaid) {
  const std::string script = "i=0; while [ $i -lt 400 ]; do echo 1234; i=$((i+1)); done; ";
  EXPECT_EQ(errorOf({kShell, "-c", script + "exit 1"}).size(),
            std::string("error: /bin/sh failed with status 1:\n").size() + 2000);
  const std::string more = errorOf({kShell, "-c", "echo first; " + script + "exit 1"});
  EXPECT_EQ(more.find("first"), std::string::npos);
  EXPECT_EQ(more.size(), std::string("error: /bin/sh failed with status 1:\n").size() + 2000);
}

TEST(FindJdkTool, SaysWhereItLookedAndWhatToDo) {
  TempDir dir;
  writeFile(dir / "bin/not-executable", "x");
  try {
    findJdkTool("not-executable", dir.str());
    FAIL();
  } catch (const PackError& e) {
    EXPECT_EQ(asText(e.finding()),
              "error: there is no not-executable in " + dir.str() +
                  "/bin\n  -> set runtime.jdk or JAVA_HOME to the folder of a JDK");
  }
}

TEST(FindJdkTool, TakesTheFirstFolderOfPathThatHasIt) {
  TempDir dir;
  for (const char* name : {"a/tool-of-two", "b/tool-of-two", "c/tool-of-two"}) {
    writeFile(dir / name, "x");
  }
  for (const char* name : {"b/tool-of-two", "c/tool-of-two"}) {
    fs::permissions(dir / name, fs::perms::owner_all);
  }
  const std::string path = std::getenv("PATH");
  unsetenv("JAVA_HOME");
  setenv("PATH", ("::" + dir / "a" + ":" + dir / "b" + ":" + dir / "c").c_str(), 1);
  EXPECT_EQ(findJdkTool("tool-of-two", ""), dir / "b/tool-of-two");
  unsetenv("PATH");
  EXPECT_THROW(findJdkTool("tool-of-two", ""), PackError);
  setenv("PATH", path.c_str(), 1);
}

TEST(FindJdkTool, DoesNotFallBackFromTheHomeThatIsNamed) {
  TempDir dir;
  writeFile(dir / "bin/sh", "x");
  fs::permissions(dir / "bin/sh", fs::perms::owner_all);
  fs::create_directory(dir / "empty");
  setenv("JAVA_HOME", (dir / "empty").c_str(), 1);
  EXPECT_THROW(findJdkTool("sh", ""), PackError) << "PATH has one";
  EXPECT_EQ(findJdkTool("sh", dir.str()), dir / "bin/sh");
  unsetenv("JAVA_HOME");
}

}  // namespace
}  // namespace quillory::pack
