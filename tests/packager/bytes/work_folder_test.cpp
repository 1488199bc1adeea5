#include "packager/bytes/work_folder.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "packager/report/findings.h"
#include "tests/harness/temp_dir.h"

namespace quillory::pack {
namespace {

namespace fs = std::filesystem;
using testing::TempDir;
using testing::writeFile;

TEST(WorkFolder, IsGoneWithEverythingInIt) {
  TempDir dir;
  {
    WorkFolder work(dir / "new/dist");
    writeFile(work / "a/b", "x");
    EXPECT_TRUE(fs::exists(work / "a/b"));
  }
  EXPECT_TRUE(fs::is_empty(dir / "new/dist"));
}

TEST(WorkFolder, ReportsWhereItCannotBe) {
  EXPECT_THROW(WorkFolder("/proc/nonexistent"), PackError);
}

}  // namespace
}  // namespace quillory::pack
