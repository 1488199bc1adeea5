#include "packager/commands/stored_jars.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <sstream>

#include "packager/report/findings.h"
#include "tests/harness/temp_dir.h"
#include "tests/packager/content/zip_bytes.h"

namespace quillory::pack {
namespace {

using testing::entriesOf;
using testing::TempDir;
using testing::withZip;
using testing::writeFile;
namespace fs = std::filesystem;

TEST(StoredJars, HaveTheNamesAndTheOrderOfTheOthers) {
  TempDir dir;
  fs::create_directories(dir / "lib");
  withZip(dir / "lib/b.jar", "w", "  z.writestr('b', 'b' * 1000)\n");
  writeFile(dir / "odd.jar", "no jar");
  withZip(dir / "b.jar", "w", "  z.writestr('other', 'b' * 1000)\n");
  std::ostringstream out, err;
  Reporter reporter(out, err, {.verbosity = Verbosity::kVerbose});
  const std::vector<std::string> jars =
      storedJars({dir / "lib/b.jar", dir / "odd.jar", dir / "b.jar"}, dir / "work", reporter);
  ASSERT_EQ(jars.size(), 3u);
  EXPECT_EQ(fs::path(jars[0]).filename(), "b.jar");
  EXPECT_EQ(entriesOf(jars[0]).substr(0, 9), "b 0 1000 ");
  EXPECT_EQ(jars[1], dir / "odd.jar");
  EXPECT_EQ(entriesOf(jars[2]).substr(0, 13), "other 0 1000 ");
  EXPECT_EQ(err.str(), (dir / "odd.jar") + " stays as it is: it is no plain jar\n");
}

}  // namespace
}  // namespace quillory::pack
