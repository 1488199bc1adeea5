#include "packager/content/app_image_application.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "tests/harness/child_process.h"
#include "tests/harness/temp_dir.h"

namespace quillory::pack {
namespace {

namespace fs = std::filesystem;
using testing::runChild;
using testing::TempDir;
using testing::writeFile;
using Names = std::vector<std::string>;

TEST(AppImageApplication, IsWhatJpackageMakes) {
  const TempDir dir;
  fs::create_directory(dir / "in");
  fs::copy_file(QUILLORY_HELLO_JAR, dir / "in/hello.jar");
  writeFile(dir / "in/data/words", "x");
  testing::ChildOptions options;
  options.limit = std::chrono::seconds{120};
  const auto made = runChild({"jpackage",
                              "--type",
                              "app-image",
                              "--name",
                              "Hello World",
                              "--app-version",
                              "1.2",
                              "--input",
                              dir / "in",
                              "--main-jar",
                              "hello.jar",
                              "--main-class",
                              "com.example.hello.Hello",
                              "--add-modules",
                              "java.base,java.logging",
                              "--java-options",
                              "-Dgreeting=a",
                              "--arguments",
                              "--first",
                              "--dest",
                              dir / "out",
                              "--jlink-options",
                              "--strip-native-commands"},
                             options);
  ASSERT_EQ(made.exitStatus, 0) << made.out << made.err;
  const auto found = findAppImage(dir.str());
  ASSERT_TRUE(found);
  EXPECT_EQ(found->name, "Hello World");
  EXPECT_EQ(found->root, "out/Hello World/lib/app");
  EXPECT_EQ(found->jars, Names{"hello.jar"});
  EXPECT_EQ(found->mainClass, "com.example.hello.Hello");
  EXPECT_EQ(found->arguments, Names{"--first"});
  EXPECT_EQ(found->jvmOptions, (Names{"-Djpackage.app-version=1.2", "-Dgreeting=a"}));
  EXPECT_EQ(found->modules, (Names{"java.base", "java.logging"}));
  EXPECT_EQ(found->icon, "out/Hello World/lib/Hello World.png");
  const auto inside = findAppImage(dir / "out/Hello World");
  ASSERT_TRUE(inside);
  EXPECT_EQ(inside->root, "lib/app");
  EXPECT_EQ(inside->icon, "lib/Hello World.png");
}

constexpr char kSettings[] =
    "[Application]\r\n"
    "app.name=Hello\r\n"
    "app.version=2.0\r\n"
    "app.classpath=$APPDIR/b.jar:$APPDIR/lib/a.jar:$APPDIR/gone.jar\r\n"
    "app.mainclass=com/example/Main\r\n"
    "\r\n"
    "[ArgOptions]\r\n"
    "arguments=a=b\r\n";

TEST(AppImageApplication, TakesImagesOfOlderVersionsAndThoseForMacOS) {
  const TempDir dir;
  const std::string folder = dir / "dist/Hello.app/Contents/app/";
  writeFile(folder + "Aaa.cfg", "app.mainclass=a.Helper\napp.classpath=$APPDIR/b.jar\n");
  writeFile(folder + "Hello.cfg", kSettings);
  writeFile(folder + "b.jar", "x");
  writeFile(folder + "lib/a.jar", "x");
  const auto found = findAppImage(dir.str());
  ASSERT_TRUE(found);
  EXPECT_EQ(found->name, "Hello");
  EXPECT_EQ(found->displayVersion, "2.0");
  EXPECT_EQ(found->root, "dist/Hello.app/Contents/app");
  EXPECT_EQ(found->jars, (Names{"b.jar", "lib/a.jar"}));
  EXPECT_EQ(found->mainClass, "com.example.Main");
  EXPECT_EQ(found->arguments, Names{"a=b"});
  EXPECT_EQ(found->modules, Names{});
  EXPECT_EQ(found->icon, "");
}

TEST(AppImageApplication, IsNotThereWithoutJars) {
  const TempDir dir;
  EXPECT_FALSE(findAppImage(dir.str()));
  fs::create_directories(dir / "lib/app");
  EXPECT_FALSE(findAppImage(dir.str())) << "no configuration";
  writeFile(dir / "lib/app/linked.cfg", "[Application]\napp.mainmodule=m/a.Main\n");
  EXPECT_FALSE(findAppImage(dir.str())) << "its classes are in its runtime";
  writeFile(dir / "lib/app/linked.cfg", kSettings);
  EXPECT_FALSE(findAppImage(dir.str())) << "the jars are gone";
}

TEST(AppImageApplication, AppImageSettingsAreLinesInTheirOrder) {
  using Settings = std::vector<std::pair<std::string, std::string>>;
  EXPECT_EQ(appImageSettings("[A=B]\nk=v\n# c=d\n\nk=w=x\r\nlast="),
            (Settings{{"k", "v"}, {"k", "w=x"}, {"last", ""}}));
  EXPECT_EQ(appImageSettings(""), Settings{});
}

}  // namespace
}  // namespace quillory::pack
