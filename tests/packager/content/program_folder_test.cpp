#include "packager/content/program_folder.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "packager/reading/program_image.h"
#include "tests/harness/child_process.h"
#include "tests/harness/temp_dir.h"

namespace quillory::pack {
namespace {

namespace fs = std::filesystem;

TEST(ProgramFolder, IsThatOfThisProgram) {
  EXPECT_EQ(fs::path(programFolder()), fs::path(QUILLORY_THIS_PROGRAM).parent_path());
}

TEST(ProgramFolder, IsThatOfTheFileBehindALink) {
  const testing::TempDir dir;
  fs::create_symlink(QUILLORY_THIS_PROGRAM, dir / "link");
  // Whatever share of the tests this process runs, that one runs its test.
  const testing::ChildResult result =
      testing::runChild({"/usr/bin/env", "GTEST_TOTAL_SHARDS=1", "GTEST_SHARD_INDEX=0",
                         dir / "link", "--gtest_filter=ProgramFolder.IsThatOfThisProgram"});
  EXPECT_EQ(result.exitStatus, 0) << result.out;
  EXPECT_NE(result.out.find("1 test"), std::string::npos) << result.out;
}

TEST(NativeTarget, IsThisSystemUnlessToldOtherwise) {
  // This very program says what this system is.
  EXPECT_EQ(nameOf(nativeTarget()), targetNameOf(programImageIn(QUILLORY_THIS_PROGRAM)));
}

}  // namespace
}  // namespace quillory::pack
