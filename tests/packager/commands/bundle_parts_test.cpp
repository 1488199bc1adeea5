#include "packager/commands/bundle_parts.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "tests/harness/records.h"
#include "tests/packager/content/zip_bytes.h"
#include "tests/packager/hello_config.h"
#include "tests/packager/paths_of.h"
#include "tests/packager/rules_of.h"

namespace quillory::pack {
namespace {

namespace fs = std::filesystem;
using testing::Names;
using testing::pathsOf;
using testing::records;
using testing::rulesOf;
using testing::writeFile;

class BundleParts : public testing::HelloConfig {
 protected:
  // The jars that a list of patterns stands for, without the folder of the configuration.
  Names jarsOf(const Names& patterns) {
    config_.application.jars = patterns;
    Names names;
    for (const std::string& path : findJars(config_)) {
      names.push_back(path.substr(dir_.str().size() + 1));
    }
    return names;
  }
  template <typename Run>
  std::string rejectionOf(Run run) {
    try {
      run();
    } catch (const RejectedInput& e) {
      return asText(e.findings().at(0));
    }
    return "";
  }
};

TEST_F(BundleParts, FindJarsKeepsTheOrderOfTheListAndSortsWhatAPatternFinds) {
  for (const char* name : {"lib/b.jar", "lib/a.jar", "lib/.hidden.jar", "z.jar"}) {
    writeFile(dir_ / name, "x");
  }
  fs::create_directory(dir_ / "lib/folder.jar");
  EXPECT_EQ(jarsOf({"z.jar", "lib/*.jar", "hello.jar"}),
            (Names{"z.jar", "lib/a.jar", "lib/b.jar", "hello.jar"}));
  EXPECT_EQ(jarsOf({"lib/b.jar", "lib/?.jar", "./lib/b.jar"}).size(), 3u)
      << "one file twice, when it is named in two ways";
  EXPECT_EQ(jarsOf({"lib/b.jar", "lib/[ab].jar", "lib/b.jar"}), (Names{"lib/b.jar", "lib/a.jar"}));
}

TEST_F(BundleParts, FindJarsNamesEveryPatternThatFindsNothing) {
  config_.application.jars = {"missing.jar", "hello.jar", "lib/*.jar"};
  try {
    findJars(config_);
    FAIL();
  } catch (const RejectedInput& e) {
    ASSERT_EQ(rulesOf(e.findings()), (Names{"missing-file", "missing-file"}));
    EXPECT_EQ(asText(e.findings()[0]), "quillory.toml:5: error: there is no jar " +
                                           dir_ / "missing.jar" +
                                           " [missing-file]\n  -> build it, or correct the name");
    EXPECT_EQ(e.findings()[1].what, "there is no jar " + dir_ / "lib/*.jar");
  }
}

TEST_F(BundleParts, TheApplicationHasItsJarsInLibAndALaunchFile) {
  config_.application.arguments = {"--console", "a b"};
  writeFile(dir_ / "data/inside", "x");
  writeFile(dir_ / "read.me", "x");
  config_.application.files = {{"data/", ""}, {"read.me", "docs/README"}};
  const BundlePart part = applicationPart(config_, {dir_ / "hello.jar", dir_ / "read.me"});
  EXPECT_EQ(part.name, "Hello");
  EXPECT_EQ(part.version, "12");
  const ContentTree& tree = part.content;
  EXPECT_EQ(tree.name(), "application");
  EXPECT_EQ(pathsOf(tree), (Names{"QuilloryLaunch", "data", "data/inside", "docs/README", "lib",
                                  "lib/hello.jar", "lib/read.me"}));
  EXPECT_EQ(tree.entries().at("lib/hello.jar").source, dir_ / "hello.jar");
  EXPECT_EQ(tree.entries().at("QuilloryLaunch").bytes, records({"6",
                                                                "com.example.hello.Hello",
                                                                "",
                                                                "Hello",
                                                                "",
                                                                "0",
                                                                "256",
                                                                "64",
                                                                "2",
                                                                "lib/hello.jar",
                                                                "lib/read.me",
                                                                "2",
                                                                "--console",
                                                                "a b",
                                                                "",
                                                                "",
                                                                "",
                                                                "1",
                                                                "-Dquillory.arguments=user",
                                                                "0"}));
}

TEST_F(BundleParts, TheApplicationSaysWhatIsSetAndPassedBeforeItsMainClass) {
  config_.application.hasPropertiesArgument = true;
  config_.application.isSingleInstance = true;
  config_.application.workingDirectory = WorkingDirectory::kHome;
  config_.jvm.environment = {{"GDK_BACKEND", "x11"}};
  config_.jvm.systemProperties = {{"my.property", "a=b c"}, {"empty", ""}};
  const BundlePart part = applicationPart(config_, {dir_ / "hello.jar"});
  EXPECT_EQ(part.content.entries().at("QuilloryLaunch").bytes,
            records({"6",
                     "com.example.hello.Hello",
                     "",
                     "Hello",
                     "",
                     "0",
                     "256",
                     "64",
                     "1",
                     "lib/hello.jar",
                     "0",
                     "",
                     "",
                     "",
                     "5",
                     "-Dquillory.instance=single",
                     "-Dquillory.directory=home",
                     "-Dquillory.environment.GDK_BACKEND=x11",
                     "-Dmy.property=a=b c",
                     "-Dempty=",
                     "0"}));
}

TEST_F(BundleParts, JarsLieBesideTheFilesThatTheyExpectThere) {
  config_.application.layout = JarLayout::kBeside;
  writeFile(dir_ / "keymaps/one", "x");
  config_.application.files = {{"keymaps", ""}};
  const BundlePart part = applicationPart(config_, {dir_ / "hello.jar"});
  EXPECT_EQ(pathsOf(part.content),
            (Names{"QuilloryLaunch", "hello.jar", "keymaps", "keymaps/one"}));
  EXPECT_EQ(part.content.entries().at("QuilloryLaunch").bytes,
            records({"6", "com.example.hello.Hello", "", "Hello", "", "0", "256", "64", "1",
                     "hello.jar", "0", "", "", "", "1", "-Dquillory.arguments=user", "0"}));
}

TEST_F(BundleParts, ARootIsPackedAsItLies) {
  for (const char* name : {"tree/lib/b.jar", "tree/lib/a.jar", "tree/bin/app", "tree/.hidden"}) {
    writeFile(dir_ / name, name);
  }
  writeFile(dir_ / "read.me", "x");
  config_.application.files = {{"read.me", ""}};
  config_.application.jars = {"lib/b.jar", "lib/*.jar"};
  for (const char* root : {"tree", "tree/", "./tree"}) {
    config_.application.root = root;
    const std::vector<std::string> jars = findJars(config_);
    const BundlePart part = applicationPart(config_, jars);
    EXPECT_EQ(pathsOf(part.content), (Names{".hidden", "QuilloryLaunch", "bin", "bin/app", "lib",
                                            "lib/a.jar", "lib/b.jar", "read.me"}));
    EXPECT_EQ(part.content.entries().at("QuilloryLaunch").bytes,
              records({"6", "com.example.hello.Hello", "", "Hello", "", "0", "256", "64", "2",
                       "lib/b.jar", "lib/a.jar", "0", "", "", "", "1", "-Dquillory.arguments=user",
                       "0"}));
    EXPECT_EQ(rulesOf(part.content.check()), Names{});
  }
}

TEST_F(BundleParts, JarsMadeAnewTakeTheirPlacesInARoot) {
  writeFile(dir_ / "tree/lib/a.jar", "a");
  writeFile(dir_ / "tree/b.jar", "b");
  writeFile(dir_ / "work/0/a.jar", "stored");
  config_.application.root = "tree";
  config_.application.jars = {"lib/a.jar", "b.jar"};
  const std::vector<std::string> jars = findJars(config_);
  const BundlePart part = applicationPart(config_, jars, {dir_ / "work/0/a.jar", jars.at(1)});
  EXPECT_EQ(part.content.entries().at("lib/a.jar").source, dir_ / "work/0/a.jar");
  EXPECT_EQ(part.content.entries().at("lib/a.jar").size, 6u);
  EXPECT_EQ(part.content.entries().at("b.jar").size, 1u);
  EXPECT_EQ(rulesOf(part.content.check()), Names{});
}

TEST_F(BundleParts, ARootThatIsNotThereIsNamedWithItsLine) {
  config_.application.root = "hello.jar";
  config_.places["application.root"] = {"quillory.toml", 4};
  EXPECT_EQ(rejectionOf([this] { findJars(config_); }),
            "quillory.toml:4: error: there is no folder " + dir_ / "hello.jar" +
                " [missing-file]\n  -> build it, or correct the name");
}

TEST_F(BundleParts, AModuleIsNamedAndItsMainClassReached) {
  config_.application.module = "com.example";
  const BundlePart part = applicationPart(config_, {dir_ / "hello.jar"});
  EXPECT_EQ(part.content.entries().at("QuilloryLaunch").bytes,
            records({"6", "com.example.hello.Hello", "", "Hello", "", "0", "256", "64", "1",
                     "lib/hello.jar", "0", "", "", "", "3", "-Dquillory.arguments=user",
                     "-Dquillory.module=com.example",
                     "--add-opens=com.example/com.example.hello=ALL-UNNAMED", "0"}));
}

TEST_F(BundleParts, AStartupArchiveIsWantedWithAPackedRuntime) {
  const auto isWanted = [this] {
    const BundlePart part = applicationPart(config_, {dir_ / "hello.jar"});
    return part.content.entries()
               .at("QuilloryLaunch")
               .bytes.find(records({"-Dquillory.startup.archive=true"})) != std::string::npos;
  };
  config_.runtime.source = RuntimeSource::kNone;
  EXPECT_FALSE(isWanted());
  config_.runtime.source = RuntimeSource::kFolder;
  EXPECT_TRUE(isWanted());
  config_.jvm.hasStartupArchive = false;
  EXPECT_FALSE(isWanted());
}

TEST_F(BundleParts, TheAgentOfTheMainJarsManifestIsNamed) {
  testing::withZip(dir_ / "agent.jar", "w",
                   "  z.writestr('META-INF/MANIFEST.MF',\n"
                   "             'Manifest-Version: 1.0\\nLauncher-Agent-Class: a.B\\n\\n')\n"
                   "  z.writestr('com/example/hello/Hello.class', 'x')\n");
  const BundlePart part = applicationPart(config_, {dir_ / "agent.jar"});
  const std::string& bytes = part.content.entries().at("QuilloryLaunch").bytes;
  EXPECT_NE(bytes.find(records({"-Dquillory.agent=lib/agent.jar",
                                "--add-exports=java.instrument/sun.instrument=ALL-UNNAMED"})),
            std::string::npos);
}

TEST_F(BundleParts, NativeLibrariesLieWhereTheUpdaterLooksForThem) {
  for (const char* name : {"libone.so", "libtwo.so", "other"}) writeFile(dir_ / name, "x");
  config_.application.nativeLibraries = {"lib*.so"};
  EXPECT_EQ(
      pathsOf(applicationPart(config_, {dir_ / "hello.jar"}).content),
      (Names{"QuilloryLaunch", "lib", "lib/hello.jar", "native/libone.so", "native/libtwo.so"}));
  config_.application.nativeLibraries = {"missing/*.so"};
  try {
    applicationPart(config_, {dir_ / "hello.jar"});
    FAIL();
  } catch (const RejectedInput& e) {
    EXPECT_EQ(e.findings().at(0).what, "there is no native library " + dir_ / "missing/*.so");
  }
}

TEST_F(BundleParts, TheUpdaterOfOursIsStartedByItsOwnClasses) {
  BundleTools tools;
  tools.updaterJar = QUILLORY_UPDATER_JAR;
  const BundlePart part = updaterPart(config_, tools);
  EXPECT_EQ(part.name, "Quillory");
  EXPECT_EQ(part.version, "3");
  const ContentTree& tree = part.content;
  EXPECT_EQ(tree.name(), "updater");
  EXPECT_EQ(pathsOf(tree), (Names{"QuilloryLaunch", "updater.jar"}));
  EXPECT_EQ(tree.entries().at("QuilloryLaunch").bytes,
            records({"6", "io.quillory.updater.Main", "", "Hello", "", "0", "256", "64", "1",
                     "updater.jar", "0", "io.quillory.updater.JreCompatibility", "", "", "1",
                     "-Dquillory.class.path=application", "0"}));
}

TEST_F(BundleParts, TheUpdaterHasItsProgramsAndSettingsWhereThereAreSettings) {
  BundleTools tools;
  tools.updaterJar = QUILLORY_UPDATER_JAR;
  tools.updateProgram = dir_ / "quillory-update";
  tools.updateWindow = dir_ / "window";
  writeFile(tools.updateProgram, "program");
  writeFile(tools.updateWindow, "window");
  EXPECT_EQ(pathsOf(updaterPart(config_, tools).content), (Names{"QuilloryLaunch", "updater.jar"}));
  const BundlePart part = updaterPart(config_, tools, "settings");
  EXPECT_EQ(pathsOf(part.content), (Names{"QuilloryLaunch", "QuilloryUpdate", "quillory-update",
                                          "quillory-update-window", "updater.jar"}));
  EXPECT_EQ(part.content.entries().at("QuilloryUpdate").bytes, "settings");
  EXPECT_EQ(part.content.entries().at("quillory-update-window").source, dir_ / "window");
}

TEST_F(BundleParts, TheUpdaterHasTheSplashForScreensWithTwoPixels) {
  BundleTools tools;
  tools.updaterJar = QUILLORY_UPDATER_JAR;
  writeFile(dir_ / "splash.png", "1");
  config_.application.splash = "splash.png";
  EXPECT_EQ(pathsOf(updaterPart(config_, tools).content), (Names{"QuilloryLaunch", "updater.jar"}));
  writeFile(dir_ / "splash@2x.png", "2");
  EXPECT_EQ(pathsOf(updaterPart(config_, tools).content),
            (Names{"QuilloryLaunch", "nativesplash@2x.png", "updater.jar"}));
  config_.application.splashOverride = true;
  EXPECT_EQ(pathsOf(updaterPart(config_, tools).content), (Names{"QuilloryLaunch", "updater.jar"}));
}

TEST_F(BundleParts, AnotherUpdaterSaysItsClassItselfOrIsTold) {
  BundleTools tools;
  tools.updaterJar = dir_ / "hello.jar";
  config_.updater.jar = "hello.jar";
  const auto launchFile = [&] {
    return updaterPart(config_, tools).content.entries().at("QuilloryLaunch").bytes;
  };
  const std::string said = records({"6", "com.example.hello.Hello", "", "Hello"});
  EXPECT_EQ(launchFile().substr(0, said.size()), said);
  config_.updater.compatibilityClass = "my.Compatibility";
  EXPECT_NE(launchFile().find("my.Compatibility"), std::string::npos);
  config_.updater.mainClass = "no.such.Class";
  EXPECT_EQ(rejectionOf(launchFile), "quillory.toml:11: error: " + dir_ / "hello.jar" +
                                         " has no class \"no.such.Class\" [main-class]\n"
                                         "  -> name its main class with updater.main-class");
  config_.updater.mainClass = "";
  writeFile(dir_ / "hello.jar", "text");
  EXPECT_EQ(rejectionOf(launchFile), "quillory.toml:10: error: " + dir_ / "hello.jar" +
                                         ": is not a jar, or a damaged one [jar]\n"
                                         "  -> build it again, or correct the name");
}

TEST_F(BundleParts, AnUpdaterOfOursThatCannotBeStartedIsNobodysMistake) {
  BundleTools tools;
  tools.updaterJar = dir_ / "broken.jar";
  writeFile(dir_ / "broken.jar", "text");
  EXPECT_THROW(updaterPart(config_, tools), PackError);
  tools.updaterJar = QUILLORY_UPDATER_JAR;
  config_.updater.mainClass = "no.such.Class";
  EXPECT_NE(rejectionOf([&] { updaterPart(config_, tools); }), "") << "that is the user's";
}

}  // namespace
}  // namespace quillory::pack
