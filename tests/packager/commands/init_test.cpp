#include "packager/commands/init.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <sstream>

#include "tests/harness/child_process.h"
#include "tests/packager/project_fixture.h"

namespace quillory::testing {
namespace {

namespace fs = std::filesystem;
using ::testing::AllOf;
using ::testing::HasSubstr;

TEST(Init, WritesAConfigurationThatPacks) {
  Project project;
  fs::create_directories(project / "target");
  fs::rename(project / "hello.jar", project / "target/hello-world-1.2.jar");
  fs::copy_file(QUILLORY_UPDATER_JAR, project / "target/some-sources.jar");
  const std::string path = project / "quillory.toml";
  const CommandResult init = pack({"init", path});
  EXPECT_EQ(init.status, 0) << init.err;
  EXPECT_EQ(init.out, path + '\n');
  std::string text = readFile(path);
  EXPECT_THAT(text, AllOf(HasSubstr("name = \"Hello World\" "),
                          HasSubstr("main-class = \"com.example.hello.Hello\"\n"),
                          HasSubstr("jars = [\"target/hello-world-1.2.jar\"]\n")));
  // With the tools and the runtime of this test, and nothing else changed.
  text.replace(text.find("jlink = true"), 12, "folder = \"jre\"");
  text.replace(text.find("signing.pem"), 11, Project::key());
  writeFile(path,
            text + "[bundle]\nlauncher = \"launcher\"\nlzma64 = \"lzma64\"\n[updater]\njar = \"" +
                QUILLORY_UPDATER_JAR + "\"\n");
  const CommandResult bundle = pack({"bundle", path});
  EXPECT_EQ(bundle.status, 0) << bundle.err;
  EXPECT_EQ(bundle.out, project / "dist/Hello World.app\n");
}

TEST(Init, EveryKeyInItsCommentsIsOneThatExists) {
  Project project;
  ASSERT_EQ(pack({"init", project / "quillory.toml"}).status, 0);
  std::istringstream lines(readFile(project / "quillory.toml"));
  std::string text;
  int line = 0;
  for (std::string each; std::getline(lines, each); ++line) {
    const bool isExample = line > 3 && each.rfind("# ", 0) == 0;
    text += (isExample ? each.substr(2) : each) + '\n';
  }
  // One of the examples is for instead of another line.
  text.erase(text.find("folder = \"/path"),
             text.find('\n', text.find("folder = \"/path")) - text.find("folder = \"/path"));
  const CommandResult result = pack({"bundle", project.writeConfig(text)});
  EXPECT_EQ(result.err.find("[unknown-key]"), std::string::npos) << result.err;
  EXPECT_EQ(result.err.find("[wrong-kind]"), std::string::npos) << result.err;
  EXPECT_EQ(result.err.find("[toml]"), std::string::npos) << result.err;
}

TEST(Init, PacksTheFoldersThatAFinishedJarHasBesideIt) {
  Project project;
  const TempDir dir;
  fs::copy_file(project / "hello.jar", dir / "hello.jar");
  for (const char* folder : {"keymaps", "modes", "lib", "dist", ".git", "Old.app"})
    fs::create_directory(dir / folder);
  ASSERT_EQ(pack({"init", dir / "quillory.toml"}).status, 0);
  EXPECT_THAT(readFile(dir / "quillory.toml"),
              AllOf(HasSubstr("\nlayout = \"beside\" "),
                    HasSubstr("\nfiles = [\"keymaps\", \"modes\"]\n")));
  // Where it is built, nobody knows what of that it needs.
  fs::create_directory(dir / "src");
  ASSERT_EQ(pack({"init", dir / "other.toml"}).status, 0);
  EXPECT_THAT(readFile(dir / "other.toml"), HasSubstr("\n# files = [\"data\"] "));
}

// As `java -jar` does.
TEST(Init, TakesAMainClassThatIsWrittenWithSlashes) {
  const TempDir dir;
  writeFile(dir / "manifest", "Main-Class:  com/example/Main \n");
  ASSERT_EQ(runChild({"jar", "--create", "--file", dir / "a.jar", "--manifest", dir / "manifest"})
                .exitStatus,
            0);
  ASSERT_EQ(pack({"init", dir / "quillory.toml"}).status, 0);
  EXPECT_THAT(readFile(dir / "quillory.toml"), HasSubstr("main-class = \"com.example.Main\"\n"));
}

TEST(Init, NeverReplacesAConfigurationAndWantsJars) {
  Project project;
  project.writeConfig("mine");
  EXPECT_EQ(pack({"init", project / "quillory.toml"}).status, 1);
  EXPECT_EQ(readFile(project / "quillory.toml"), "mine");
  const TempDir empty;
  const CommandResult result = pack({"init", empty / "quillory.toml"});
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.err, HasSubstr("there is no jar here"));
  EXPECT_TRUE(fs::is_empty(empty.path()));
}

// What "bundle" makes of the file that "init" writes, with the tools and the runtime of the tests.
CommandResult packWhatInitWrites(const Project& project) {
  const std::string path = project / "quillory.toml";
  const CommandResult init = pack({"init", path});
  EXPECT_EQ(init.status, 0) << init.err;
  std::string text = readFile(path);
  text.replace(text.find("jlink = true"), 12, "folder = \"jre\"");
  text.replace(text.find("signing.pem"), 11, Project::key());
  writeFile(path,
            text + "[bundle]\nlauncher = \"launcher\"\nlzma64 = \"lzma64\"\n[updater]\njar = \"" +
                QUILLORY_UPDATER_JAR + "\"\n");
  return pack({"bundle", path});
}

TEST(Init, PacksWhatGradleHasInstalledAsItLies) {
  Project project;
  const std::string home = project / "build/install/app/";
  fs::create_directories(home + "lib");
  fs::rename(project / "hello.jar", home + "lib/hello.jar");
  writeFile(home + "lib/data.txt", "x");
  writeFile(home + "bin/app",
            "#!/bin/sh\nDEFAULT_JVM_OPTS='\"-Xmx99m\" \"-Dhome=$APP_HOME\"'\n"
            "CLASSPATH=$APP_HOME/lib/hello.jar\n"
            "set -- -classpath \"$CLASSPATH\" com.example.hello.Hello \"$@\"\n");
  const CommandResult bundle = packWhatInitWrites(project);
  EXPECT_EQ(bundle.status, 0) << bundle.err;
  const std::string archive = project / "dist/release/Quillory-App-1-archive.p2.l2";
  const CommandResult extracted = pack({"extract", archive, project / "out"});
  ASSERT_EQ(extracted.status, 0) << extracted.err;
  for (const char* file : {"lib/hello.jar", "lib/data.txt", "bin/app", "QuilloryLaunch"})
    EXPECT_TRUE(fs::exists(project / "out" + ('/' + std::string(file)))) << file;
}

TEST(Init, TellsWhatItChoseAndWhy) {
  Project project;
  const std::string home = project / "build/install/app/";
  fs::create_directories(home + "lib");
  fs::copy_file(project / "hello.jar", home + "lib/hello.jar");
  writeFile(
      home + "bin/app",
      "#!/bin/sh\nDEFAULT_JVM_OPTS='\"-Dhome=$APP_HOME\"'\nCLASSPATH=$APP_HOME/lib/hello.jar\n"
      "set -- -classpath \"$CLASSPATH\" com.example.hello.Hello \"$@\"\n");
  const CommandResult init = pack({"init", project / "quillory.toml"});
  EXPECT_THAT(init.err,
              AllOf(HasSubstr("build/install/app, as Gradle's application plugin has installed it"),
                    HasSubstr("from its script bin/app\n"),
                    HasSubstr("left out, as only its old launcher understands it: "
                              "-Dhome=$APP_HOME\n")));
  fs::remove_all(project / "build");
  fs::remove(project / "hello.jar");
  writeFile(project / "m/x", "x");
  ASSERT_EQ(runChild({"jar", "--create", "--file", project / "a.jar", "-C", project / "m", "x"})
                .exitStatus,
            0);
  EXPECT_THAT(pack({"init", project / "other.toml"}).err,
              HasSubstr("main class: nothing here names it"));
}

TEST(Init, WritesWhatCanBePackedWhateverTheJarIsCalled) {
  const std::pair<std::string, std::string> cases[] = {
      {"a\nb\x1b\x7f.jar", "A B"},
      {"quillory.jar", "Quillory App"},
      {"jre-8.jar", "Jre App"},
      {"java.jar", "Java App"},
      {"a \"quoted\" \\name.jar", "A \"quoted\" \\name"},
      {std::string(249, 'n') + ".jar", 'N' + std::string(99, 'n')},
      {"....jar", "My Application"}};
  for (const auto& [jar, name] : cases) {
    Project project;
    fs::rename(project / "hello.jar", project / jar);
    const CommandResult bundle = packWhatInitWrites(project);
    EXPECT_EQ(bundle.status, 0) << jar << bundle.err;
    EXPECT_EQ(bundle.out, project / ("dist/" + name + ".app\n"));
  }
}

TEST(Init, TakesAJarThatWasCopiedOnce) {
  Project project;
  for (const char* folder : {"target", "dist"}) {
    fs::create_directory(project / folder);
    fs::copy_file(project / "hello.jar", project / folder + std::string("/app.jar"));
  }
  fs::copy_file(project / "hello.jar", project / "a:b.jar");
  const CommandResult bundle = packWhatInitWrites(project);
  EXPECT_EQ(bundle.status, 0) << bundle.err;
  EXPECT_THAT(readFile(project / "quillory.toml"),
              HasSubstr("jars = [\"hello.jar\", \"target/app.jar\"]\n"));
}

TEST(Init, PassesOverFilesThatOnlyLookLikeJars) {
  Project project;
  writeFile(project / "aaa.jar", "text");
  ASSERT_EQ(pack({"init", project / "quillory.toml"}).status, 0);
  EXPECT_THAT(readFile(project / "quillory.toml"), HasSubstr("jars = [\"hello.jar\"]"));
}

}  // namespace
}  // namespace quillory::testing
