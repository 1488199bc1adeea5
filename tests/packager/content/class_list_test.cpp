#include "packager/content/class_list.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "packager/report/findings.h"
#include "tests/harness/file_size_limit.h"
#include "tests/harness/temp_dir.h"

namespace quillory::pack {
namespace {

namespace fs = std::filesystem;
using testing::FileSizeLimit;
using testing::readFile;
using testing::TempDir;
using testing::writeFile;

TEST(AddUpdaterClasses, LeavesARuntimeWithoutAListAsItIs) {
  TempDir dir;
  addUpdaterClasses(dir.str());
  EXPECT_TRUE(fs::is_empty(dir.path()));
}

TEST(AddUpdaterClasses, PutsThemBehindTheRuntimesOwn) {
  TempDir dir;
  writeFile(dir / "lib/classlist", "# a comment\njava/lang/Object\n");
  addUpdaterClasses(dir.str());
  EXPECT_EQ(readFile(dir / "lib/classlist"),
            "# a comment\njava/lang/Object\n"
            "java/io/IOException\n"
            "java/lang/reflect/InvocationTargetException\n"
            "java/net/URLClassLoader\n"
            "java/net/URLClassLoader$1\n"
            "java/nio/charset/CharsetDecoder\n"
            "java/security/AllPermissionCollection\n"
            "sun/nio/cs/UTF_8$Decoder\n");
}

TEST(AddUpdaterClasses, KeepsTheListOfADiskThatIsFull) {
  TempDir dir;
  writeFile(dir / "lib/classlist", "java/lang/Object\n");
  {
    const FileSizeLimit full(20);
    EXPECT_THROW(addUpdaterClasses(dir.str()), PackError);
  }
  EXPECT_EQ(readFile(dir / "lib/classlist"), "java/lang/Object\n");
}

}  // namespace
}  // namespace quillory::pack
