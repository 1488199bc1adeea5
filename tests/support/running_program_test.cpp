#include "support/running_program.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "tests/harness/child_process.h"
#include "tests/harness/temp_dir.h"

namespace quillory {
namespace {

namespace fs = std::filesystem;

TEST(RunningProgram, IsTheFileWithoutTheLinksThatLeadToIt) {
  const std::string program = runningProgram();
  EXPECT_EQ(program, fs::canonical(program).string());
  EXPECT_EQ(fs::path(program).filename(), "support_tests");
  const testing::TempDir dir;
  fs::create_symlink(program, dir / "link");
  // Whatever share of the tests this process runs, that one runs its test.
  const testing::ChildResult result =
      testing::runChild({"/usr/bin/env", "GTEST_TOTAL_SHARDS=1", "GTEST_SHARD_INDEX=0",
                         dir / "link", "--gtest_filter=RunningProgram.HasTheNameOfTheseTests"});
  EXPECT_EQ(result.exitStatus, 0) << result.out;
  EXPECT_NE(result.out.find("1 test"), std::string::npos) << result.out;
}

TEST(RunningProgram, HasTheNameOfTheseTests) {
  EXPECT_EQ(fs::path(runningProgram()).filename(), "support_tests");
}

}  // namespace
}  // namespace quillory
