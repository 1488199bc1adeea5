#include "packager/content/class_list.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "tests/harness/temp_dir.h"

namespace quillory::pack {
namespace {

namespace fs = std::filesystem;
using testing::TempDir;

TEST(AddUpdaterClasses, LeavesARuntimeWithoutAListAsItIs) {
  TempDir dir;
  addUpdaterClasses(dir.str());
  EXPECT_TRUE(fs::is_empty(dir.path()));
}

}  // namespace
}  // namespace quillory::pack
