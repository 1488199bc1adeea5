#include "tests/harness/own_folder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>

#include <algorithm>
#include <string>
#include <vector>

#include "tests/harness/child_process.h"
#include "tests/harness/eventually.h"
#include "tests/harness/private_root.h"
#include "tests/harness/programs_of.h"
#include "tests/harness/temp_dir.h"

namespace quillory::testing {
namespace {

namespace fs = std::filesystem;
using ::testing::IsEmpty;
using ::testing::StartsWith;

std::string firstLine(const std::string& text) { return text.substr(0, text.find('\n')); }

bool hasSleeper(const std::string& folder) {
  const std::vector<std::string> programs = programsOf(folder);
  return std::find(programs.begin(), programs.end(), "sleep") != programs.end();
}

class OwnFolder : public ::testing::Test {
 protected:
  // Kills the program as soon as what it starts runs; its folder.
  static std::string killWhileRunning(const std::string& mode) {
    BackgroundChild program({QUILLORY_ABANDONING_PROGRAM, mode});
    EXPECT_TRUE(program.waitForOutput("\n"));
    const std::string folder = firstLine(program.out());
    EXPECT_TRUE(eventually([&] { return hasSleeper(folder); })) << program.err();
    EXPECT_TRUE(fs::exists(folder));
    program.sendSignal(SIGKILL);
    EXPECT_EQ(program.finish().signal, SIGKILL);
    return folder;
  }
};

TEST_F(OwnFolder, IsWhatTheProcessAndItsChildrenTakeForTheTemporaryFolder) {
  EXPECT_EQ(fs::temp_directory_path(), ownFolder());
  EXPECT_EQ(modeOf(ownFolder()), 01777U);
  EXPECT_THAT(TempDir().str(), StartsWith(ownFolder().string() + "/"));
  const ChildResult child = runChild({"sh", "-c", "echo $TMPDIR $QUILLORY_TEST_FOLDER"});
  EXPECT_EQ(child.out, ownFolder().string() + " " + ownFolder().string() + "\n");
}

TEST_F(OwnFolder, StaysForTheProgramWhenACopyOfItEnds) {
  const TempDir folder;
  EXPECT_EXIT(std::exit(0), ::testing::ExitedWithCode(0), "");
  EXPECT_TRUE(fs::exists(folder.path()));
}

TEST_F(OwnFolder, IsGoneWithTheProcessesThatWereLeftWhenTheProgramIsKilled) {
  const std::string folder = killWhileRunning("session");
  EXPECT_TRUE(eventually([&] { return !fs::exists(folder); }));
  EXPECT_THAT(programsOf(folder), IsEmpty());
}

TEST_F(OwnFolder, IsGoneWithTheProcessesThatHaveTheirRootInIt) {
  if (!PrivateRoot::whyImpossible().empty()) GTEST_SKIP() << PrivateRoot::whyImpossible();
  const std::string folder = killWhileRunning("root");
  EXPECT_TRUE(eventually([&] { return !fs::exists(folder); }));
  EXPECT_THAT(programsOf(folder), IsEmpty());
}

TEST(RemoveFolder, RemovesWhatIsReadOnlyAndNothingBehindALink) {
  const TempDir folder;
  writeFile(folder / "inside/read only/file", "content");
  writeFile(folder / "outside/file", "content");
  fs::create_symlink(folder / "outside", folder / "inside/link");
  fs::permissions(folder / "inside/read only", fs::perms::owner_read | fs::perms::owner_exec);
  removeFolder(folder / "inside");
  EXPECT_FALSE(fs::exists(folder / "inside"));
  EXPECT_TRUE(fs::exists(folder / "outside/file"));
}

}  // namespace
}  // namespace quillory::testing
