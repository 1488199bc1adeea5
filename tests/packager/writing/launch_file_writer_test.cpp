#include "packager/writing/launch_file_writer.h"

#include <gtest/gtest.h>

#include "packager/report/findings.h"
#include "tests/harness/page_example.h"
#include "tests/harness/records.h"

namespace quillory::pack {
namespace {

using testing::pageExample;
using testing::records;

TEST(WriteLaunchFile, GivesTheExampleOfThePage) {
  LaunchFile file;
  file.mainClass = "com.example.hello.Hello";
  file.appName = "hello";
  file.maximumHeap = 256;
  file.classPath = {"hello.jar", "lib/a.jar"};
  file.arguments = {"--console"};
  EXPECT_EQ(launchFileBytes(file), pageExample("formats/launch-file.md"));
}

TEST(WriteLaunchFile, WritesEveryRecordInItsPlace) {
  LaunchFile file{"A", "B", "C", "D", true, 1, 2, {"E"}, {"F", "G"}, "H", {"I"}, true};
  EXPECT_EQ(launchFileBytes(file), records({"6", "A", "B", "C", "D", "1", "1", "2", "1", "E", "2",
                                            "F", "G", "H", "", "", "1", "I", "1"}));
}

TEST(WriteLaunchFile, WritesEveryRecordOfOneWithoutAnything) {
  EXPECT_EQ(launchFileBytes({}),
            records({"6", "", "", "", "", "0", "0", "0", "0", "0", "", "", "", "0", "0"}));
}

TEST(WriteLaunchFile, NamesTheRecordThatTheLauncherWouldCut) {
  LaunchFile file;
  file.classPath = {"a.jar", std::string(1023, 'j')};
  try {
    launchFileBytes(file);
    FAIL();
  } catch (const PackError& e) {
    EXPECT_STREQ(e.what(), "\"Classpath Entry\" has 1023 bytes; the launcher takes up to 1022");
  }
}

}  // namespace
}  // namespace quillory::pack
