#include "packager/commands/bundle_parts.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "tests/harness/records.h"
#include "tests/packager/mach_o_bytes.h"
#include "tests/packager/project.h"
#include "tests/packager/rules_of.h"

namespace quillory::pack {
namespace {

namespace fs = std::filesystem;
using namespace std::string_literals;
using testing::bigEndian;
using testing::Project;
using testing::records;
using testing::rulesOf;
using testing::TempDir;
using testing::writeFile;

using Names = std::vector<std::string>;

class BundleParts : public ::testing::Test {
 protected:
  BundleParts() {
    fs::copy_file(QUILLORY_HELLO_JAR, dir_ / "hello.jar");
    config_.file = "quillory.toml";
    config_.folder = dir_.str();
    config_.application.name = "Hello";
    config_.application.mainClass = "com.example.hello.Hello";
    config_.application.jars = {"hello.jar"};
    config_.jvm.maximumHeap = 256;
    config_.jvm.initialHeap = 64;
    for (const auto& [key, line] :
         {std::pair{"application.jars", 5u}, std::pair{"application.main-class", 6u},
          std::pair{"application.files", 7u}, std::pair{"application.splash", 8u},
          std::pair{"application.icon", 9u}, std::pair{"updater.jar", 10u},
          std::pair{"updater.main-class", 11u}, std::pair{"updater.cacerts", 12u}}) {
      config_.places[key] = {"quillory.toml", line};
    }
  }

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
  static Names pathsOf(const ContentTree& tree) {
    Names paths;
    for (const auto& [path, entry] : tree.entries()) {
      paths.push_back(path);
    }
    return paths;
  }

  TempDir dir_;
  Config config_;
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
  const ContentTree tree = applicationContent(config_, {dir_ / "hello.jar", dir_ / "read.me"});
  EXPECT_EQ(tree.name(), "application");
  EXPECT_EQ(pathsOf(tree), (Names{"QuilloryLaunch", "data", "data/inside", "docs/README", "lib",
                                  "lib/hello.jar", "lib/read.me"}));
  EXPECT_EQ(tree.entries().at("lib/hello.jar").source, dir_ / "hello.jar");
  EXPECT_EQ(
      tree.entries().at("QuilloryLaunch").bytes,
      records({"6", "com.example.hello.Hello", "", "Hello", "", "0", "256", "64", "2",
               "lib/hello.jar", "lib/read.me", "2", "--console", "a b", "", "", "", "0", "0"}));
}

TEST_F(BundleParts, TheUpdaterOfOursIsStartedByItsOwnClasses) {
  BundleTools tools;
  tools.updaterJar = QUILLORY_UPDATER_JAR;
  const ContentTree tree = updaterContent(config_, tools);
  EXPECT_EQ(tree.name(), "updater");
  EXPECT_EQ(pathsOf(tree), (Names{"QuilloryLaunch", "updater.jar"}));
  EXPECT_EQ(
      tree.entries().at("QuilloryLaunch").bytes,
      records({"6", "io.quillory.updater.Main", "", "Hello", "", "0", "256", "64", "1",
               "updater.jar", "0", "io.quillory.updater.JreCompatibility", "", "", "0", "0"}));
}

TEST_F(BundleParts, AnotherUpdaterSaysItsClassItselfOrIsTold) {
  BundleTools tools;
  tools.updaterJar = dir_ / "hello.jar";
  config_.updater.jar = "hello.jar";
  const auto launchFile = [&] {
    return updaterContent(config_, tools).entries().at("QuilloryLaunch").bytes;
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
  EXPECT_THROW(updaterContent(config_, tools), PackError);
  tools.updaterJar = QUILLORY_UPDATER_JAR;
  config_.updater.mainClass = "no.such.Class";
  EXPECT_NE(rejectionOf([&] { updaterContent(config_, tools); }), "") << "that is the user's";
}

TEST_F(BundleParts, LintApplicationPathsKeepsThePlacesOfTheInstallation) {
  ContentTree tree("application");
  for (const char* path : {"App.p2", "App.p2.l2", "lib/App.p2", "App.p2.old"}) {
    tree.addBytes("x", path);
  }
  EXPECT_EQ(rulesOf(lintApplicationPaths(tree)), (Names{"path-taken", "path-taken"}));
  EXPECT_EQ(rulesOf(lintApplicationPaths(ContentTree("application"))), Names{});
}

TEST_F(BundleParts, LintFilesTakesAGoodConfiguration) {
  writeFile(dir_ / "splash.png", "\x89PNG\r\n\x1a\n\0\0\0\x0dIHDR"s + bigEndian(3) + bigEndian(5));
  writeFile(dir_ / "icon.png",
            "\x89PNG\r\n\x1a\n\0\0\0\x0dIHDR"s + bigEndian(256) + bigEndian(256));
  writeFile(dir_ / "cacerts", "x");
  fs::create_symlink("nowhere", dir_ / "link");
  config_.application.splash = "splash.png";
  config_.application.icon = "icon.png";
  config_.application.files = {{"cacerts", ""}, {"link", ""}};
  config_.updater.cacerts = "cacerts";
  EXPECT_EQ(rulesOf(lintFiles(config_, {dir_ / "hello.jar"})), Names{});
}

TEST_F(BundleParts, LintFilesNamesTheLineOfEveryFileThatIsNotThere) {
  config_.application.splash = "splash.png";
  config_.application.icon = "icon.png";
  config_.application.files = {{"data", ""}};
  config_.updater.cacerts = "cacerts";
  const Findings findings = lintFiles(config_, {dir_ / "hello.jar"});
  std::vector<unsigned> lines;
  for (const Finding& finding : findings) {
    EXPECT_EQ(finding.rule, "missing-file");
    lines.push_back(finding.place.line);
  }
  EXPECT_EQ(lines, (std::vector<unsigned>{7, 8, 9, 12}));
}

TEST_F(BundleParts, LintFilesLooksIntoPictures) {
  writeFile(dir_ / "text", "text");
  config_.application.splash = "text";
  config_.application.icon = "text";
  const Findings findings = lintFiles(config_, {dir_ / "hello.jar"});
  ASSERT_EQ(rulesOf(findings), (Names{"picture", "picture"}));
  EXPECT_EQ(findings[0].what, dir_ / "text" + " is no PNG picture");
  EXPECT_EQ(findings[1].what, dir_ / "text" + " is neither an icns nor a PNG picture");
}

TEST_F(BundleParts, LintFilesLooksForTheMainClassInAllJars) {
  writeFile(dir_ / "broken.jar", "text");
  const std::string updater = QUILLORY_UPDATER_JAR;
  EXPECT_EQ(rulesOf(lintFiles(config_, {updater, dir_ / "hello.jar"})), Names{});
  EXPECT_EQ(rulesOf(lintFiles(config_, {dir_ / "hello.jar", updater})), Names{});
  EXPECT_EQ(rulesOf(lintFiles(config_, {updater})), Names{"main-class"});
  EXPECT_EQ(rulesOf(lintFiles(config_, {updater, dir_ / "broken.jar"})), Names{"jar"})
      << "nobody knows what is in it";
  fs::copy_file(dir_ / "hello.jar", dir_ / "a:b.jar");
  EXPECT_EQ(rulesOf(lintFiles(config_, {dir_ / "a:b.jar"})), Names{"name-colon"});
}

}  // namespace
}  // namespace quillory::pack
