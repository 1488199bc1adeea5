#include "packager/content/runtime_image.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "packager/content/tool_runner.h"
#include "tests/packager/project.h"

namespace quillory::pack {
namespace {

namespace fs = std::filesystem;
using testing::Project;
using testing::readFile;
using testing::TempDir;
using testing::writeFile;

TEST(VersionNumberFor, GrowsWithTheVersion) {
  static constexpr struct {
    const char* version;
    const char* number;
  } kCases[] = {{"17.0.9", "170000900"},
                {"17.0.21.1", "170002101"},
                {"17", "170000000"},
                {"21.0.1", "210000100"},
                {"11.0.22", "110002200"},
                {"1.8.0_202", "80020200"},
                {"17-internal", "170000000"},
                {"", ""},
                {"unknown", ""},
                {"9.999999.1", "99900100"}};
  for (const auto& [version, number] : kCases) {
    EXPECT_EQ(versionNumberFor(version), number) << version;
  }
}

TEST(VersionNumberOf, ReadsTheReleaseFile) {
  Project project;
  EXPECT_EQ(versionNumberOf(project / "jre"), "170000900");
  writeFile(project / "jre/release", "IMPLEMENTOR=\"x\"\n");
  EXPECT_EQ(versionNumberOf(project / "jre"), "");
  fs::remove(project / "jre/release");
  EXPECT_EQ(versionNumberOf(project / "jre"), "");
}

TEST(FindJavaHome, TakesAHomeOrABundleAroundOne) {
  Project project;
  EXPECT_EQ(findJavaHome(project / "jre", {}), project / "jre");
  fs::create_directories(project / "bundle/Contents");
  fs::rename(project / "jre", project / "bundle/Contents/Home");
  EXPECT_EQ(findJavaHome(project / "bundle", {}), project / "bundle/Contents/Home");
}

TEST(FindJavaHome, RefusesARuntimeWithoutJava) {
  Project project;
  fs::remove(project / "jre/bin/java");
  try {
    findJavaHome(project / "jre", {"quillory.toml", 7});
    FAIL();
  } catch (const RejectedInput& e) {
    EXPECT_EQ(e.findings().at(0).rule, "no-java");
    EXPECT_EQ(asText(e.findings().at(0).place), "quillory.toml:7");
  }
}

std::vector<std::string> pathsOf(const ContentTree& tree) {
  std::vector<std::string> paths;
  for (const auto& [path, entry] : tree.entries()) {
    paths.push_back(path);
  }
  return paths;
}

TEST(RuntimeContent, HasTheShapeOfABundleAndAClassLibraryThatStandsIn) {
  Project project;
  RuntimeConfig config;
  config.version = "170000900";
  const ContentTree tree = runtimeContent(project / "jre", config);
  EXPECT_EQ(pathsOf(tree),
            (std::vector<std::string>{
                "Contents", "Contents/Home", "Contents/Home/bin", "Contents/Home/bin/java",
                "Contents/Home/lib", "Contents/Home/lib/libjli.so", "Contents/Home/lib/modules",
                "Contents/Home/lib/rt.jar", "Contents/Home/release", "Contents/Info.plist",
                "Contents/MacOS", "Contents/MacOS/libjli.so"}));
  EXPECT_EQ(tree.entries().at("Contents/Home/lib/rt.jar").bytes.substr(0, 2), "PK");
  EXPECT_TRUE(tree.check().empty());
}

TEST(RuntimeContent, KeepsAClassLibraryThatIsThere) {
  Project project;
  writeFile(project / "jre/lib/rt.jar", "classes");
  const ContentTree tree = runtimeContent(project / "jre", {});
  EXPECT_EQ(tree.entries().at("Contents/Home/lib/rt.jar").source, project / "jre/lib/rt.jar");
}

TEST(RuntimeContent, PutsTheLibraryOfMacRuntimesWhereTheLauncherLooksForIt) {
  Project project;
  fs::rename(project / "jre/lib/libjli.so", project / "jre/lib/libjli.dylib");
  const ContentTree tree = runtimeContent(project / "jre", {});
  EXPECT_TRUE(tree.contains("Contents/Home/lib/libjli.dylib"));
  EXPECT_TRUE(tree.contains("Contents/Home/lib/jli/libjli.dylib"));
  EXPECT_TRUE(tree.contains("Contents/MacOS/libjli.dylib"));
}

TEST(LinkRuntime, MakesARuntimeWithTheModulesThatTheJarsNeed) {
  TempDir dir;
  RuntimeConfig config;
  config.addModules = {"java.logging"};
  config.jlinkOptions = {"--strip-java-debug-attributes"};
  const std::string folder = linkRuntime(config, {QUILLORY_UPDATER_JAR}, dir.str());
  const std::string modules = runTool({folder + "/bin/java", "--list-modules"}, dir.str());
  EXPECT_NE(modules.find("java.base"), std::string::npos);
  EXPECT_NE(modules.find("java.logging"), std::string::npos);
  EXPECT_EQ(modules.find("java.desktop"), std::string::npos);
  EXPECT_NE(versionNumberOf(folder), "");
}

TEST(LinkRuntime, AddsTheClassesOfTheUpdaterToTheListForTheArchive) {
  TempDir dir;
  RuntimeConfig config;
  config.modules = {"java.base"};
  const std::string list = readFile(linkRuntime(config, {}, dir.str()) + "/lib/classlist");
  EXPECT_NE(list.find("\njava/lang/Object\n"), std::string::npos);
  EXPECT_NE(list.find("\njava/net/URLClassLoader\n"), std::string::npos);
  EXPECT_EQ(list.back(), '\n');
}

// The modules of another system: those of this one, with programs and a name of the other's.
TEST(LinkRuntime, LinksTheModulesThatAreNamed) {
  TempDir dir;
  const std::string jdk = fs::canonical(findJdkTool("jlink", "")).parent_path().parent_path();
  const std::string jmod = jdk + "/bin/jmod", base = dir / "base";
  runTool({jmod, "extract", "--dir", base, jdk + "/jmods/java.base.jmod"}, dir.str());
  writeFile(base + "/bin/java", "for another system");
  fs::create_directory(dir / "jmods");
  runTool({jmod, "create", "--class-path", base + "/classes", "--cmds", base + "/bin", "--libs",
           base + "/lib", "--config", base + "/conf", "--target-platform", "macos-amd64",
           dir / "jmods/java.base.jmod"},
          dir.str());
  RuntimeConfig config;
  config.modules = {"java.base"};
  config.jmods = dir / "jmods";
  const std::string folder = linkRuntime(config, {}, dir.str());
  EXPECT_EQ(readFile(folder + "/bin/java"), "for another system");
  EXPECT_NE(versionNumberOf(folder), "");
}

TEST(LinkRuntime, ShowsWhatJlinkSaid) {
  TempDir dir;
  RuntimeConfig config;
  config.modules = {"no.such.module"};
  try {
    linkRuntime(config, {}, dir.str());
    FAIL();
  } catch (const PackError& e) {
    EXPECT_NE(std::string(e.what()).find("no.such.module"), std::string::npos) << e.what();
  }
}

}  // namespace
}  // namespace quillory::pack
