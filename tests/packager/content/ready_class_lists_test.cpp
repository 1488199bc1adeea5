#include "packager/content/ready_class_lists.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "packager/content/class_list.h"
#include "tests/packager/content/zip_bytes.h"
#include "tests/packager/project.h"

namespace quillory::pack {
namespace {

using ::testing::AnyOf;
using ::testing::Contains;
using ::testing::IsSupersetOf;
using ::testing::Not;
using testing::readFile;
using ::testing::StartsWith;
using testing::TempDir;
using testing::withZip;
using testing::writeFile;

class ToolkitOf : public ::testing::Test {
 protected:
  // A jar with a class that has this text among its constants.
  std::string jarNaming(const std::string& text, const std::string& entry = "a/B.class") {
    const std::string path = dir_ / ("jar" + std::to_string(++jars_));
    withZip(path, "w",
            "  z.writestr('" + entry + "', b'\\xca\\xfe\\xba\\xbe..." + text + "...')\n");
    return path;
  }

  TempDir dir_;
  int jars_ = 0;
};

TEST_F(ToolkitOf, IsWhatTheClassesName) {
  EXPECT_EQ(toolkitOf({}), Toolkit::kNone);
  EXPECT_EQ(toolkitOf({QUILLORY_UPDATER_JAR}), Toolkit::kNone);
  EXPECT_EQ(toolkitOf({QUILLORY_HELLO_JAR}), Toolkit::kSwing);
  EXPECT_EQ(toolkitOf({jarNaming("javax/swing/JFrame")}), Toolkit::kSwing);
  EXPECT_EQ(toolkitOf({jarNaming("javafx/application/Application")}), Toolkit::kJavaFX);
  EXPECT_EQ(toolkitOf({jarNaming("java/awt/Frame")}), Toolkit::kNone);
}

TEST_F(ToolkitOf, IsFoundInAnyJar) {
  EXPECT_EQ(toolkitOf({QUILLORY_UPDATER_JAR, jarNaming("javax/swing/JDialog")}), Toolkit::kSwing);
  EXPECT_EQ(toolkitOf({jarNaming("javax/swing/JFrame"), jarNaming("javafx/application/Application"),
                       jarNaming("javax/swing/JFrame")}),
            Toolkit::kJavaFX);
}

TEST_F(ToolkitOf, IsNotWhatOtherFilesName) {
  EXPECT_EQ(toolkitOf({jarNaming("javax/swing/JFrame", "notes.txt")}), Toolkit::kNone);
}

TEST_F(ToolkitOf, IsNotLookedForInWhatIsNoJar) {
  writeFile(dir_ / "no.jar", "javax/swing/JFrame");
  EXPECT_EQ(toolkitOf({dir_ / "no.jar", dir_ / "missing.jar"}), Toolkit::kNone);
}

TEST(ReadyClassList, HasTheWindowsOfItsToolkit) {
  for (const auto& [toolkit, window] : {std::pair{Toolkit::kSwing, "javax/swing/JFrame"},
                                        std::pair{Toolkit::kJavaFX, "javafx/stage/Stage"}}) {
    const std::vector<std::string> names = classNamesIn(readFile(readyClassList(toolkit)));
    EXPECT_THAT(names, IsSupersetOf({"java/lang/Object", window}));
    EXPECT_THAT(names, Not(Contains(AnyOf(StartsWith("SwingSample"), StartsWith("FxSample")))));
    EXPECT_GT(names.size(), 1000u);
  }
}

TEST(ReadyClassList, IsNoneWithoutAToolkit) { EXPECT_EQ(readyClassList(Toolkit::kNone), ""); }

}  // namespace
}  // namespace quillory::pack
