#include "packager/content/stub_jar.h"

#include <gtest/gtest.h>

#include "tests/harness/child_process.h"
#include "tests/harness/temp_dir.h"

namespace quillory::pack {
namespace {

using testing::ChildResult;
using testing::runChild;
using testing::TempDir;
using testing::writeFile;

TEST(StubRuntimeJar, IsAJarForOthersAndAlwaysTheSame) {
  TempDir dir;
  writeFile(dir / "rt.jar", stubRuntimeJar());
  const ChildResult listing = runChild({"jar", "--list", "--file", dir / "rt.jar"});
  EXPECT_EQ(listing.exitStatus, 0) << listing.err;
  EXPECT_EQ(listing.out, "META-INF/MANIFEST.MF\n");
  const ChildResult test = runChild({"/usr/bin/python3", "-m", "zipfile", "-t", dir / "rt.jar"});
  EXPECT_EQ(test.out, "Done testing\n") << test.err;
  EXPECT_EQ(stubRuntimeJar(), stubRuntimeJar());
  EXPECT_LT(stubRuntimeJar().size(), 400u);
}

}  // namespace
}  // namespace quillory::pack
