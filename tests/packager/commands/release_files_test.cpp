#include "packager/commands/release_files.h"

#include <gtest/gtest.h>

#include "tests/harness/temp_dir.h"

namespace quillory::pack {
namespace {

using testing::readFile;
using testing::TempDir;
using testing::writeFile;

TEST(AddRelease, WritesAVersionFileAndTheArchiveUnderTheNamesThatClientsAskFor) {
  TempDir dir;
  writeFile(dir / "packed", "archive");
  addRelease(dir / "release", "JRE", "170000900", dir / "packed");
  EXPECT_EQ(readFile(dir / "release/Quillory-JRE-version.txt"), "170000900\n");
  EXPECT_EQ(readFile(dir / "release/Quillory-JRE-170000900-archive.p2.l2"), "archive");
}

}  // namespace
}  // namespace quillory::pack
