#include "packager/content/class_list.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "packager/report/findings.h"
#include "tests/harness/file_size_limit.h"
#include "tests/harness/temp_dir.h"

namespace quillory::pack {
namespace {

namespace fs = std::filesystem;
using ::testing::ElementsAre;
using testing::FileSizeLimit;
using ::testing::IsEmpty;
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

TEST(ClassNamesIn, AreSortedAndEachThereOnce) {
  EXPECT_THAT(classNamesIn("java/util/Map\njava/lang/Object\njava/util/Map\njava/util/Map$Entry"),
              ElementsAre("java/lang/Object", "java/util/Map", "java/util/Map$Entry"));
}

// As Java 17 and 25 write it, and as it looks after a version control that changes the ends of
// lines.
TEST(ClassNamesIn, AreFoundAmongWhatAJvmWritesBesides) {
  EXPECT_THAT(
      classNamesIn("# NOTE: Do not modify this file.\n"
                   "#\n"
                   "java/lang/Object id: 0\n"
                   "java/lang/String\r\n"
                   "\n"
                   "a/Plugin id: 9 super: 0 source: /a/plugin.jar\n"
                   "@lambda-proxy a/Main run ()Ljava/lang/Runnable; ()V\n"
                   "@lambda-form-invoker [LF_RESOLVE] java.lang.invoke.DirectMethodHandle$Holder\n"
                   "@cp java/util/stream/Nodes$EmptyNode 1 2\n"
                   "[Ljava/lang/Object;\n"
                   "Main id: 10\n"),
      ElementsAre("Main", "java/lang/Object", "java/lang/String"));
}

TEST(ClassNamesIn, AreNoneInWhatIsNoList) {
  EXPECT_THAT(classNamesIn(""), IsEmpty());
  EXPECT_THAT(classNamesIn("\n \n#\n"), IsEmpty());
  EXPECT_THAT(classNamesIn(std::string("\0\x01\n\x7f\n", 6)), IsEmpty());
  EXPECT_THAT(classNamesIn("com.example.Main\n"), IsEmpty());
}

TEST(ClassesOf, AreAllWhereTheRuntimeDoesNotTell) {
  TempDir dir;
  EXPECT_THAT(classesOf(dir.str(), {"a/B"}), ElementsAre("a/B"));
}

TEST(ExtendedClassList, HasWhatWasMissingBehindWhatIsThere) {
  const std::string own = "# own\njava/lang/Object id: 0\n@lambda-form-invoker x";
  EXPECT_EQ(extendedClassList(own, {"java/lang/Object", "java/util/Map"}),
            own + "\njava/util/Map\n");
  EXPECT_EQ(extendedClassList(own, {"java/lang/Object"}), own);
  EXPECT_EQ(extendedClassList("", {"a/B"}), "a/B\n");
  EXPECT_THAT(missingIn(own, {"java/lang/Object", "java/util/Map"}), ElementsAre("java/util/Map"));
}

}  // namespace
}  // namespace quillory::pack
