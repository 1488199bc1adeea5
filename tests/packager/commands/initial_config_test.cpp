#include "packager/commands/initial_config.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/harness/temp_dir.h"

namespace quillory::pack {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::Not;
using testing::TempDir;
using testing::writeFile;
using Names = std::vector<std::string>;

TEST(InitialConfig, InitialJvmSortsTheOptionsOfACommandLine) {
  const InitialJvm jvm =
      initialJvm({"-Xmx512m", "-Xms1G", "-Xss512k", "-XX:+UseSerialGC", "-Dmy.key=a=b", "-Dflag",
                  "-Dsun.java2d.uiScale=2", "-Dfile.encoding=UTF-8", "--add-opens=a/b=ALL-UNNAMED",
                  "-Dhome=$APP_HOME/lib", "-splash:a.png", "-cp", "-Xmx", "-D"});
  EXPECT_EQ(jvm.maximumHeap, 512);
  EXPECT_EQ(jvm.initialHeap, 1024);
  EXPECT_EQ(jvm.systemProperties, (Parameters{{"my.key", "a=b"}, {"flag", ""}}));
  EXPECT_EQ(jvm.options,
            (Names{"-Xss512k", "-XX:+UseSerialGC", "-Dsun.java2d.uiScale=2",
                   "-Dfile.encoding=UTF-8", "--add-opens=a/b=ALL-UNNAMED", "-Xmx", "-D"}));
  EXPECT_EQ(jvm.leftOut, (Names{"-Dhome=$APP_HOME/lib", "-splash:a.png", "-cp"}));
}

TEST(InitialConfig, TakesNoHeapThatIsNoWholeMebibytes) {
  for (const char* option : {"-Xmx1000k", "-Xmx123", "-Xmxm", "-Xmx9999999m", "-Xmx12mb"}) {
    const InitialJvm jvm = initialJvm({option});
    EXPECT_EQ(jvm.maximumHeap, 0) << option;
    EXPECT_EQ(jvm.options, Names{option});
  }
}

TEST(InitialConfig, HasWhatWasFoundInsteadOfExamples) {
  const TempDir dir;
  const std::string text = initialConfig({.name = "my-app-2.0",
                                          .displayVersion = "2.0",
                                          .mainClass = "a.B",
                                          .root = "build/install/app",
                                          .jars = {"lib/a.jar"},
                                          .nativeLibraries = {"lib/*.so"},
                                          .arguments = {"--a b"},
                                          .jvmOptions = {"-Xmx64m", "-Xint", "-Dx=\"y\""},
                                          .modules = {"java.base", "java.desktop"}},
                                         dir.str());
  for (const char* line :
       {"\nname = \"My App\" ", "\ndisplay-version = \"2.0\"\n", "\nmain-class = \"a.B\"\n",
        "\nroot = \"build/install/app\" ", "\njars = [\"lib/a.jar\"]\njars-stored = true ",
        "\narguments = [\"--a b\"]\n", "\nnative = [\"lib/*.so\"]\n", "\nmemory-mb = 64\n",
        "\noptions = [\"-Xint\"]\n", "\nsystem-properties = { \"x\" = \"\\\"y\\\"\" }\n",
        "\nmodules = [\"java.base\", \"java.desktop\"]\n", "\n# icon = "}) {
    EXPECT_THAT(text, HasSubstr(line));
  }
  EXPECT_THAT(text, Not(HasSubstr("\n# memory-mb")));
  EXPECT_THAT(
      initialConfig({.name = "a", .jars = {"a.jar"}}, dir.str()),
      AllOf(HasSubstr("\nmain-class = \"com.example.Main\"\n"), HasSubstr("\n# display-version"),
            HasSubstr("\n# arguments"), HasSubstr("\n# memory-mb"), Not(HasSubstr("\nroot")),
            Not(HasSubstr("\nmodules"))));
}

TEST(InitialConfig, TakesAnIconThatIsOne) {
  const TempDir dir;
  writeFile(dir / "lib/app.png", "no picture");
  EXPECT_THAT(initialConfig({.name = "a", .jars = {"a.jar"}, .icon = "lib/app.png"}, dir.str()),
              HasSubstr("\n# icon = "));
  writeFile(dir / "lib/app.png",
            std::string("\x89PNG\r\n\x1a\n\0\0\0\x0dIHDR\0\0\0\x40\0\0\0\x40", 24));
  EXPECT_THAT(initialConfig({.name = "a", .jars = {"a.jar"}, .icon = "lib/app.png"}, dir.str()),
              HasSubstr("\nicon = \"lib/app.png\"\n"));
}

}  // namespace
}  // namespace quillory::pack
