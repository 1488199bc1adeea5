#include "packager/content/runtime_image.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "packager/content/program_folder.h"
#include "packager/content/tool_runner.h"
#include "tests/harness/stand_in_program.h"
#include "tests/packager/mac_programs.h"
#include "tests/packager/paths_of.h"
#include "tests/packager/project.h"
#include "tests/packager/rules_of.h"

namespace quillory::pack {
namespace {

namespace fs = std::filesystem;
using ::testing::HasSubstr;
using testing::kElf;
using testing::kX86;
using testing::pathsOf;
using testing::Project;
using testing::readFile;
using testing::recordedIn;
using testing::rulesOf;
using testing::TempDir;
using testing::thinMachO;
using testing::writeFile;
using testing::writeProgram;
using testing::writeRecorder;

TEST(RuntimeContent, HasNoArchivesOfClasses) {
  const TempDir dir;
  for (const char* file : {"bin/java", "lib/modules", "lib/server/classes.jsa",
                           "lib/server/classes_nocoops.jsa", "lib/server/libjvm.so"}) {
    writeFile(dir / file, "x");
  }
  const ContentTree tree = runtimeContent(dir.str(), "JRE", "17");
  EXPECT_FALSE(tree.contains("Contents/Home/lib/server/classes.jsa"));
  EXPECT_FALSE(tree.contains("Contents/Home/lib/server/classes_nocoops.jsa"));
  EXPECT_TRUE(tree.contains("Contents/Home/lib/server/libjvm.so"));
}

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

TEST(RuntimeContent, HasTheShapeOfABundleAndAClassLibraryThatStandsIn) {
  Project project;
  const ContentTree tree = runtimeContent(project / "jre", "JRE", "170000900");
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
  const ContentTree tree = runtimeContent(project / "jre", "JRE", "17");
  EXPECT_EQ(tree.entries().at("Contents/Home/lib/rt.jar").source, project / "jre/lib/rt.jar");
}

TEST(RuntimeContent, PutsTheLibraryOfMacRuntimesWhereTheLauncherLooksForIt) {
  Project project;
  fs::rename(project / "jre/lib/libjli.so", project / "jre/lib/libjli.dylib");
  const ContentTree tree = runtimeContent(project / "jre", "JRE", "17");
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
  const std::string modules = runTool({folder + "/bin/java", "--list-modules"});
  EXPECT_NE(modules.find("java.base"), std::string::npos);
  EXPECT_NE(modules.find("java.logging"), std::string::npos);
  EXPECT_EQ(modules.find("java.desktop"), std::string::npos);
  EXPECT_NE(versionNumberOf(folder), "");
}

// As a class path has it: nobody asks there for what a module requires.
TEST(LinkRuntime, TakesAModuleWithoutWhatItRequiresForPlainClasses) {
  TempDir dir;
  const std::string jdk = fs::canonical(findJdkTool("jlink", "")).parent_path().parent_path();
  writeFile(dir / "absent/module-info.java", "module absent {}");
  writeFile(dir / "src/module-info.java", "module present { requires absent; }");
  writeFile(dir / "src/p/A.java",
            "package p; class A { java.util.logging.Logger log; java.sql.Driver driver; }");
  runTool({jdk + "/bin/javac", "-d", dir / "out/absent", dir / "absent/module-info.java"});
  runTool({jdk + "/bin/javac", "-d", dir / "plain", dir / "src/p/A.java"});
  runTool(
      {jdk + "/bin/javac", "-d", dir / "plain", "-p", dir / "out", dir / "src/module-info.java"});
  runTool({jdk + "/bin/jar", "--create", "--file", dir / "a.jar", "-C", dir / "plain", "."});
  const std::string folder = linkRuntime({}, {dir / "a.jar", dir / "a.jar"}, dir.str());
  EXPECT_THAT(runTool({folder + "/bin/java", "--list-modules"}), HasSubstr("java.sql@"));
}

// A jar without a descriptor is a module by its name, which no runtime can be linked with.
TEST(LinkRuntime, LinksForAModuleThatRequiresAPlainJar) {
  TempDir dir;
  const std::string jdk = fs::canonical(findJdkTool("jlink", "")).parent_path().parent_path();
  writeFile(dir / "lib/q/B.java", "package q; public class B {}");
  runTool({jdk + "/bin/javac", "-d", dir / "lib-out", dir / "lib/q/B.java"});
  runTool({jdk + "/bin/jar", "--create", "--file", dir / "plain.jar", "-C", dir / "lib-out", "."});
  writeFile(dir / "src/module-info.java", "module app { requires plain; requires java.sql; }");
  writeFile(dir / "src/p/A.java", "package p; class A extends q.B { java.util.logging.Logger l; }");
  runTool({jdk + "/bin/javac", "-d", dir / "out", "-p", dir / "plain.jar",
           dir / "src/module-info.java", dir / "src/p/A.java"});
  runTool({jdk + "/bin/jar", "--create", "--file", dir / "app.jar", "-C", dir / "out", "."});
  const std::string folder =
      linkRuntime({}, {dir / "app.jar", dir / "plain.jar"}, dir.str(), {{}, {}, "app"});
  const std::string modules = runTool({folder + "/bin/java", "--list-modules"});
  EXPECT_THAT(modules, HasSubstr("java.sql@"));
  EXPECT_THAT(modules, HasSubstr("java.logging@"));
  EXPECT_THAT(modules, ::testing::Not(HasSubstr("java.desktop@")));
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

// jlink takes a value that begins with "--" for another option, and the JVM each of them.
TEST(LinkRuntime, MakesARuntimeThatPassesOnWhatAManifestAsksFor) {
  TempDir dir;
  RuntimeConfig config;
  config.modules = {"java.base"};
  const std::string folder = linkRuntime(
      config, {}, dir.str(), {{}, {{"java.base", "--add-opens=java.base/sun.nio.ch=ALL-UNNAMED"}}});
  EXPECT_NE(readFile(folder + "/lib/modules").find("--add-opens=java.base/sun.nio.ch=ALL-UNNAMED"),
            std::string::npos);
  EXPECT_NE(runTool({folder + "/bin/java", "--list-modules"}).find("java.base"), std::string::npos);
}

// The modules of another system: those of this one, with programs and a name of the other's.
TEST(LinkRuntime, LinksTheModulesThatAreNamed) {
  TempDir dir;
  const std::string jdk = fs::canonical(findJdkTool("jlink", "")).parent_path().parent_path();
  const std::string jmod = jdk + "/bin/jmod", base = dir / "base";
  runTool({jmod, "extract", "--dir", base, jdk + "/jmods/java.base.jmod"});
  writeFile(base + "/bin/java", "for another system");
  fs::create_directory(dir / "jmods");
  runTool({jmod, "create", "--class-path", base + "/classes", "--cmds", base + "/bin", "--libs",
           base + "/lib", "--config", base + "/conf", "--target-platform", "macos-amd64",
           dir / "jmods/java.base.jmod"});
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

TEST(VersionNumberFor, GivesEachPartItsPlaces) {
  static constexpr struct {
    const char* version;
    const char* number;
  } kCases[] = {{"17.99.999.99", "179999999"}, {"17.100.1000.100", "179999999"},
                {"9999", "99990000000"},       {"10000", "99990000000"},
                {"1.8.0", "80000000"},         {"1", "10000000"},
                {"17.0.9+11", "170000900"},    {"0.0.1", "100"},
                {"17..1", "170000100"},        {"0", ""}};
  for (const auto& [version, number] : kCases) {
    EXPECT_EQ(versionNumberFor(version), number) << version;
  }
}

TEST(VersionNumberOf, TakesTheKeyAtTheBeginningOfALine) {
  TempDir dir;
  writeFile(dir / "release", "JAVA_VERSION=\"21.0.1\"");
  EXPECT_EQ(versionNumberOf(dir.str()), "210000100");
  writeFile(dir / "release", "OLD_JAVA_VERSION=\"8\"\nJAVA_VERSION=\"21.0.1\"\n");
  EXPECT_EQ(versionNumberOf(dir.str()), "210000100");
  writeFile(dir / "release", "OLD_JAVA_VERSION=\"8\"\n");
  EXPECT_EQ(versionNumberOf(dir.str()), "");
  writeFile(dir / "release", "JAVA_VERSION=\"unknown\"\n");
  EXPECT_EQ(versionNumberOf(dir.str()), "");
}

TEST(FindJavaHome, PrefersTheHomeInsideOfABundle) {
  TempDir dir;
  writeFile(dir / "bin/java", "x");
  writeFile(dir / "Contents/Home/bin/java", "x");
  EXPECT_EQ(findJavaHome(dir.str(), {}), dir / "Contents/Home");
}

TEST(RuntimeContent, KeepsTheLibraryThatIsWhereTheLauncherLooksForIt) {
  Project project;
  writeFile(project / "jre/lib/jli/libjli.dylib", "the first choice");
  writeFile(project / "jre/lib/libjli.dylib", "the second");
  const ContentTree tree = runtimeContent(project / "jre", "JRE", "17");
  EXPECT_EQ(tree.entries().at("Contents/MacOS/libjli.dylib").source,
            project / "jre/lib/jli/libjli.dylib");
  EXPECT_EQ(tree.entries().at("Contents/Home/lib/jli/libjli.dylib").source,
            project / "jre/lib/jli/libjli.dylib");
  EXPECT_FALSE(tree.contains("Contents/MacOS/libjli.so")) << "one is enough";
  EXPECT_EQ(rulesOf(tree.check()), std::vector<std::string>{});
}

TEST(RuntimeContent, NamesTheLibraryAsTheExecutableOfTheBundle) {
  Project project;
  const auto plist = [&] {
    return runtimeContent(project / "jre", "JRE", "5").entries().at("Contents/Info.plist").bytes;
  };
  EXPECT_THAT(plist(), HasSubstr("<key>CFBundleExecutable</key>\n\t<string>libjli.so</string>"));
  EXPECT_THAT(plist(), HasSubstr("<key>CFBundleVersion</key>\n\t<string>5</string>"));
  fs::remove(project / "jre/lib/libjli.so");
  EXPECT_THAT(plist(), ::testing::Not(HasSubstr("CFBundleExecutable")));
}

class LintRuntime : public testing::MacPrograms {
 protected:
  Findings lint(Target target) const {
    return lintRuntime(dir_ / "jre", target, dir_ / "launcher", {"quillory.toml", 9});
  }
};

TEST_F(LintRuntime, TakesOneThatGoesWithTheLauncher) {
  EXPECT_EQ(rulesOf(lint(Target::kMacOS)), std::vector<std::string>{});
}

TEST_F(LintRuntime, RefusesOneOfAnotherSystem) {
  const Findings findings = lint(Target::kLinux);
  ASSERT_EQ(rulesOf(findings), std::vector<std::string>{"platform"});
  EXPECT_EQ(findings[0].severity, Severity::kError);
  EXPECT_EQ(findings[0].what,
            dir_ / "jre/bin/java" + " is for macOS (x86_64, arm64), and the bundle is for Linux");
  EXPECT_EQ(asText(findings[0].place), "quillory.toml:9");
}

TEST_F(LintRuntime, TakesAScriptForAJavaOfEverySystem) {
  writeFile(dir_ / "jre/bin/java", "#!/bin/sh");
  writeFile(dir_ / "launcher", kElf);
  EXPECT_EQ(rulesOf(lint(Target::kLinux)), std::vector<std::string>{});
  EXPECT_EQ(rulesOf(lint(Target::kMacOS)), std::vector<std::string>{});
}

TEST_F(LintRuntime, WantsAVirtualMachineForMacOSAndNotForLinux) {
  fs::remove(dir_ / "jre/lib/server/libjvm.dylib");
  EXPECT_EQ(lint(Target::kMacOS).at(0).what,
            "there is no " + dir_ / "jre/lib/server/libjvm.dylib" + ": it is no runtime for macOS");
  writeFile(dir_ / "jre/jre/lib/server/libjvm.dylib", "x");
  EXPECT_EQ(rulesOf(lint(Target::kMacOS)), std::vector<std::string>{});
  fs::remove_all(dir_ / "jre/jre");
  writeFile(dir_ / "jre/bin/java", kElf);
  EXPECT_EQ(rulesOf(lint(Target::kLinux)), std::vector<std::string>{});
}

TEST_F(LintRuntime, WarnsOfProcessorsThatOnlyTheLauncherRunsOn) {
  writeFile(dir_ / "jre/bin/java", thinMachO(kX86));
  EXPECT_EQ(rulesOf(lint(Target::kMacOS)), std::vector<std::string>{"architecture"});
}

class RequireModules : public ::testing::Test {
 protected:
  // What is refused, as people read it; "" when nothing is.
  std::string errorFor(Target target) const {
    try {
      requireModulesFor(target, config_);
    } catch (const RejectedInput& e) {
      EXPECT_EQ(e.findings().size(), 1u);
      return asText(e.findings().at(0));
    }
    return "";
  }
  std::string withTools(std::initializer_list<const char*> tools) {
    fs::remove_all(dir_ / "jdk");
    for (const char* tool : tools) {
      fs::create_directories(dir_ / "jdk/bin");
      writeProgram(dir_ / "jdk/bin/" + tool, "");
    }
    config_.runtime.jdk = dir_ / "jdk";
    return errorFor(nativeTarget());
  }

  const Target other_ = nativeTarget() == Target::kLinux ? Target::kMacOS : Target::kLinux;
  TempDir dir_;
  Config config_;
};

TEST_F(RequireModules, TakesThoseOfThisSystemForThisSystemOnly) {
  EXPECT_EQ(errorFor(nativeTarget()), "");
  EXPECT_THAT(errorFor(other_), HasSubstr("error: jlink links the modules of this system, and the "
                                          "bundle is for " +
                                          std::string(systemOf(other_)) + " [platform]\n"));
}

TEST_F(RequireModules, TakesThoseThatAreNamedForEverySystem) {
  config_.runtime.jmods = dir_ / "jmods";
  const std::string missing =
      "error: " + dir_ / "jmods" +
      " holds no java.base.jmod [missing-file]\n  -> name the folder jmods of a JDK: "
      "Contents/Home/jmods in one for macOS";
  EXPECT_EQ(errorFor(nativeTarget()), missing);
  EXPECT_EQ(errorFor(other_), missing);
  writeFile(dir_ / "jmods/java.base.jmod", "x");
  EXPECT_EQ(errorFor(nativeTarget()), "");
  EXPECT_EQ(errorFor(other_), "");
}

TEST_F(RequireModules, WantsTheToolsInAJdkThatIsNamed) {
  EXPECT_EQ(withTools({"jlink", "jdeps"}), "");
  EXPECT_THAT(withTools({"jlink"}),
              HasSubstr("error: there is no program " + dir_ / "jdk/bin/jdeps" +
                        ": that is no JDK [missing-file]"));
  EXPECT_THAT(withTools({"jdeps"}), HasSubstr(dir_ / "jdk/bin/jlink"));
  config_.runtime.modules = {"java.base"};
  EXPECT_EQ(withTools({"jlink"}), "") << "nobody has to look for the modules";
  EXPECT_THAT(withTools({"jdeps"}), HasSubstr(dir_ / "jdk/bin/jlink"));
}

// A JDK whose tools keep their arguments.
// What tools of the JDK are started with.
std::vector<std::string> behindSoonReady(const std::vector<std::string>& words) {
  std::vector<std::string> all = {"-J-XX:+IgnoreUnrecognizedVMOptions", "-J-XX:TieredStopAtLevel=1",
                                  "-J-XX:+UseSerialGC"};
  all.insert(all.end(), words.begin(), words.end());
  return all;
}

class LinkWithStandIns : public ::testing::Test {
 protected:
  LinkWithStandIns() { config_.jdk = dir_ / "jdk"; }

  void jdepsSays(const std::string& script) {
    fs::create_directories(dir_ / "jdk/bin");
    writeRecorder(dir_ / "jdk/bin/jdeps", dir_ / "jdeps", script);
    writeRecorder(dir_ / "jdk/bin/jlink", dir_ / "jlink");
  }
  std::vector<std::string> argumentsOfJlink() {
    EXPECT_EQ(linkRuntime(config_, {"a.jar", "lib/b.jar"}, dir_.str()), dir_ / "runtime");
    return recordedIn(dir_ / "jlink");
  }
  std::string errorOf() {
    try {
      argumentsOfJlink();
    } catch (const PackError& e) {
      return e.what();
    }
    return "";
  }

  TempDir dir_;
  RuntimeConfig config_;
};

TEST_F(LinkWithStandIns, AsksJdepsWhichModulesTheJarsNeed) {
  jdepsSays("echo 'Warning: something'; echo; echo ' java.base,java.desktop '; echo");
  EXPECT_EQ(argumentsOfJlink(),
            behindSoonReady({"--add-modules", "java.base,java.desktop", "--no-header-files",
                             "--no-man-pages", "--output", dir_ / "runtime"}));
  EXPECT_EQ(recordedIn(dir_ / "jdeps"),
            behindSoonReady({"--print-module-deps", "--ignore-missing-deps", "--multi-release",
                             "base", "--class-path", "a.jar:lib/b.jar", "a.jar", "lib/b.jar"}));
}

// A jlink whose runtime is a file with the number of its runs.
TEST_F(LinkWithStandIns, LinksOnceWhatIsInTheCache) {
  jdepsSays("exit 1");
  config_.modules = {"java.base"};
  writeFile(dir_ / "jdk/jmods/java.base.jmod", "classes");
  writeFile(dir_ / "jdk/bin/jlink",
            "#!/bin/sh\necho run >>'" + dir_ / "runs" +
                "'\nfor word; do folder=$word; [ \"$before\" = --output ] && break; before=$word; "
                "done\nmkdir -p \"$folder/bin\"; echo java >\"$folder/bin/java\"\n");
  fs::permissions(dir_ / "jdk/bin/jlink", fs::perms::owner_all);
  PackCache cache(dir_ / "cache");
  const auto runsAfter = [&] {
    fs::remove_all(dir_ / "work");
    fs::create_directory(dir_ / "work");
    const std::string folder = linkRuntime(config_, {"a.jar"}, dir_ / "work", {}, &cache);
    EXPECT_EQ(readFile(folder + "/bin/java"), "java\n");
    return readFile(dir_ / "runs").size() / 4;
  };
  EXPECT_EQ(runsAfter(), 1u);
  EXPECT_EQ(runsAfter(), 1u);
  config_.addModules = {"java.sql"};
  EXPECT_EQ(runsAfter(), 2u);
  writeFile(dir_ / "jdk/jmods/java.base.jmod", "other classes");
  EXPECT_EQ(runsAfter(), 3u);
  config_.jlinkOptions = {"--order-resources=@" + dir_ / "order"};
  EXPECT_EQ(runsAfter(), 4u);
  EXPECT_EQ(runsAfter(), 5u) << "an option names a file, which may change";
}

TEST_F(LinkWithStandIns, DoesNotAskWhereModulesAreNamed) {
  jdepsSays("exit 1");
  config_.modules = {"java.base", "java.sql"};
  config_.addModules = {"java.logging", "java.xml"};
  config_.jmods = "other/jmods";
  config_.jlinkOptions = {"--compress", "2"};
  EXPECT_EQ(argumentsOfJlink(),
            behindSoonReady({"--add-modules", "java.base,java.sql,java.logging,java.xml",
                             "--no-header-files", "--no-man-pages", "--output", dir_ / "runtime",
                             "--module-path", "other/jmods", "--compress", "2"}));
}

TEST_F(LinkWithStandIns, SaysWhenJdepsFoundNoModules) {
  const std::string error = "jdeps did not find the modules that the jars need: ";
  jdepsSays("");
  EXPECT_EQ(errorOf(), error);
  jdepsSays("echo 'a.jar -> not found'");
  EXPECT_EQ(errorOf(), error + "a.jar -> not found");
  EXPECT_FALSE(fs::exists(dir_ / "jlink")) << "jlink is not started then";
}

TEST_F(LinkWithStandIns, PassesOnTheOptionsWhoseModulesAreThere) {
  jdepsSays("echo java.base");
  writeRecorder(dir_ / "jdk/bin/java", dir_ / "java",
                "echo java.base@17.0.9; echo java.xml@17.0.9");
  config_.jmods = "other/jmods";  // nothing of it can be started here
  linkRuntime(config_, {"a.jar"}, dir_.str(),
              {{"-Xss2m", "-Da=b c"},
               {{"java.xml", "--add-opens=java.xml/p=ALL-UNNAMED"},
                {"java.sql", "--add-opens=java.sql/p=ALL-UNNAMED"},
                {"", "--enable-native-access=ALL-UNNAMED"}}});
  EXPECT_EQ(recordedIn(dir_ / "java"),
            (std::vector<std::string>{"--limit-modules", "java.base", "--list-modules"}));
  EXPECT_EQ(recordedIn(dir_ / "jlink").back(),
            "--add-options= -Xss2m '-Da=b c' --add-opens=java.xml/p=ALL-UNNAMED "
            "--enable-native-access=ALL-UNNAMED");
}

TEST_F(LinkWithStandIns, RefusesOptionsWithWhichJavaDoesNotStart) {
  jdepsSays("echo java.base");
  fs::create_directories(dir_ / "runtime/bin");
  writeProgram(dir_ / "runtime/bin/java",
               "#!/bin/sh\necho 'Unrecognized option: -Xno' >&2\nexit 1\n");
  try {
    linkRuntime(config_, {"a.jar"}, dir_.str(), {{"-Xno"}, {}});
    FAIL();
  } catch (const PackError& e) {
    EXPECT_THAT(e.what(), HasSubstr("Java does not start with the options of its runtime: "));
    EXPECT_THAT(e.what(), HasSubstr("Unrecognized option: -Xno"));
  }
}

}  // namespace
}  // namespace quillory::pack
