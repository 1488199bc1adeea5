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

TEST(StubRuntimeJar, HoldsAManifestOfTheEarliestTimeAndNothingElse) {
  TempDir dir;
  writeFile(dir / "rt.jar", stubRuntimeJar());
  const ChildResult result =
      runChild({"/usr/bin/python3", "-c",
                "import sys, zipfile\n"
                "jar = zipfile.ZipFile(sys.argv[1])\n"
                "for entry in jar.infolist():\n"
                "  print(entry.filename, entry.date_time, entry.compress_type,\n"
                "        entry.header_offset, entry.file_size, entry.compress_size)\n"
                "  print(jar.read(entry))\n",
                dir / "rt.jar"});
  EXPECT_EQ(result.out,
            "META-INF/MANIFEST.MF (1980, 1, 1, 0, 0, 0) 0 0 103 103\n"
            "b'Manifest-Version: 1.0\\r\\nComment: stands in for the class library that is in "
            "lib/modules since Java 9\\r\\n\\r\\n'\n")
      << result.err;
}

}  // namespace
}  // namespace quillory::pack
