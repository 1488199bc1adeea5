#include "java/launch_start.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>

#include "java/bundle_loader.h"
#include "java/launch_flow.h"
#include "support/platform.h"
#include "tests/harness/child_process.h"
#include "tests/harness/eventually.h"
#include "tests/harness/records.h"
#include "tests/java/launch_fixture.h"

namespace quillory {
namespace {

namespace fs = std::filesystem;
using ::quillory::testing::ChildResult;
using ::quillory::testing::eventually;
using ::quillory::testing::LaunchFileText;
using ::quillory::testing::LaunchTest;
using ::quillory::testing::readFile;
using ::quillory::testing::records;
using ::quillory::testing::runChild;
using ::quillory::testing::ScopedReplace;
using ::quillory::testing::withJvm;
using ::quillory::testing::writeFile;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

/// The JRE's bundle has the stub for a JVM library; it writes down how it is called.
class StartApplication : public LaunchTest {
 protected:
  StartApplication() {
    const std::string library = jre_ + ".plugin/Contents/Home/lib/server/libjvm.dylib";
    fs::create_directories(fs::path(library).parent_path());
    fs::copy_file(QUILLORY_STUB_JVM, library);
  }

  void rememberOptions(std::initializer_list<std::string_view> options) const {
    writeFile(master_ + "/QYApps/JRE-LastSuccessfulOptions-Quillory-JRE-17-complete",
              records(options));
  }
  std::string recordOption() const { return "-Dstub.record=" + (dir_ / "record"); }
};

TEST_F(StartApplication, RunsTheMainClassInThisProcess) {
  rememberOptions({"1", recordOption()});
  writeLaunchFile({.memory = "256", .stack = "64"});
  recordSpawn();
  EXPECT_EQ(launch(kLaunchApplication), 0);
  EXPECT_EQ(readFile(dir_ / "record"),
            "create version 65540 ignore 1\n"
            "option -Djava.class.path=" +
                app_ + "/a.jar:" + app_ +
                "/lib/b.jar\n"
                "option -Xmx256m\noption -Xms64m\noption " +
                recordOption() +
                "\n"
                "find com/example/Main\nmethod main ([Ljava/lang/String;)V\n"
                "find java/lang/String\narray 4\n"
                "string " +
                properties_ +
                "\nset 0\nstring extra\nset 1\nstring user\nset 2\n"
                "string two words\nset 3\ncall\ndestroy\n");
  EXPECT_THAT(spawned(), IsEmpty());
}

TEST_F(StartApplication, LearnsFromTheJvmHowItEndsWhereSomebodyAsks) {
  rememberOptions({"1", recordOption()});
  fs::create_directory(master_ + "/QYUpdates");
  EXPECT_EQ(launch(kLaunchApplication), 0);
  EXPECT_THAT(readFile(dir_ / "record"),
              HasSubstr("option " + recordOption() + "\noption exit\nfind com/example/Main\n"));
  EXPECT_FALSE(log_.contains("=exit"));
  EXPECT_THAT(fs::is_empty(master_ + "/QYUpdates"), true) << "no try, and none is made";
}

TEST_F(StartApplication, NotesTheEndOfMainWhereTheUpdaterHasBegunATry) {
  const std::string file = master_ + "/QYUpdates/try-1700000000123-3";
  writeFile(file, "folder\n");
  EXPECT_EQ(launch(kLaunchApplication), 0);
  EXPECT_EQ(readFile(file), "folder\nended 0\n");
  rememberOptions({"1", "-Dstub.throw"});
  fs::remove(properties_);  // The time stands still: the next file is to have the same name.
  EXPECT_EQ(launch(kLaunchApplication), 0);
  EXPECT_EQ(readFile(file), "folder\nended 0\nended 1\n");
}

TEST_F(StartApplication, WaitsForAProcessWhoseEndIsToBeNoted) {
  const ScopedReplace forced(forceSpawn, true);
  const std::string file = master_ + "/QYUpdates/try-1700000000123-3";
  static constexpr struct {
    const char* end;
    const char* noted;
  } kCases[] = {{"exit 3", "ended 3\n"},
                {"exit 0", "ended 0\n"},
                {"kill -TERM $$", "ended 143\n"},
                {"kill -HUP $$", "ended 129\n"},
                {"kill -KILL $$", ""}};
  for (const auto& [end, noted] : kCases) {
    SCOPED_TRACE(end);
    writeFile(file, "");
    fs::remove(properties_);
    fs::remove(executable_);
    writeJava(jre_ + "/bin/java", end);
    EXPECT_EQ(launch(kLaunchApplication), 0);
    EXPECT_EQ(readFile(file), noted);
  }
}

TEST_F(StartApplication, LogsTheInProcessLaunchAsASection) {
  launch(kLaunchApplication);
  const std::string plus = std::string(48, '+') + "\n";
  const std::string minus = std::string(48, '-') + "\n";
  EXPECT_TRUE(log_.contains("[Extractor] Adjusted JRE folder is " + jre_ +
                            ".plugin/Contents/Home\n"
                            "[Extractor] Force spawn is 0 so attempting to launch via JNI\n" +
                            plus + "+++ Start: JNI Launch\n\n" + plus + "[JNILaunch] [pid="));
  EXPECT_TRUE(
      log_.text().ends_with("[JNILauncher] Done!\n"
                            "[Extractor] Return code for JNI launch was 0\n" +
                            minus + "--- End: JNI Launch\n\n" + minus));
}

TEST_F(StartApplication, SpawnsWhenTheInProcessLaunchFails) {
  for (const char* step : {"create", "class", "method"}) {
    SCOPED_TRACE(step);
    const std::string failure = std::string("-Dstub.fail=") + step;
    rememberOptions({"1", failure});
    recordSpawn();
    EXPECT_EQ(launch(kLaunchApplication), 0);
    EXPECT_EQ(spawned().at(0), executable_);
    EXPECT_THAT(spawned(), Contains("com.example.Main"));
  }
  const std::string minus = std::string(48, '-') + "\n";
  EXPECT_TRUE(log_.contains("[Extractor] Return code for JNI launch was 1\n" + minus +
                            "--- End: JNI Launch\n\n" + minus +
                            "[Extractor] JNI launch failed. Attempting legacy spawn instead\n"
                            "[Extractor] Attempting spawn launch\n"));
}

TEST_F(StartApplication, LoadsNoJvmLibraryButTheBundleWhenTheSpawnIsForced) {
  const ScopedReplace forced(forceSpawn, true);
  static std::string loaded;
  loaded.clear();
  const ScopedReplace bundles(platformCalls.bundles,
                              BundleCalls{.createBundle =
                                              [](const char* path) {
                                                loaded = path;
                                                return static_cast<void*>(&loaded);
                                              },
                                          .loadExecutable = [](void*) { return true; }});
  rememberOptions({"1", recordOption()});
  recordSpawn();
  EXPECT_EQ(launch(kLaunchApplication), 0);
  EXPECT_EQ(loaded, jre_ + ".plugin");
  EXPECT_TRUE(log_.contains("[BundleLoader] Bundle Loaded OK\n"));
  EXPECT_FALSE(log_.contains("[JNILaunch]"));
  EXPECT_FALSE(fs::exists(dir_ / "record"));
  EXPECT_EQ(spawned().at(0), executable_);
}

TEST_F(StartApplication, RunsInTheDirectoryAndTheEnvironmentThatItIsToHave) {
  const std::string before = fs::current_path();
  const std::string there = dir_ / "there";
  fs::create_directories(there);
  LaunchCommand command;
  command.executable = dir_ / "java";
  command.environment = {"QUILLORY_TEST_VARIABLE=a=b"};
  command.directory = there;
  command.tryFile = dir_ / "waited for";
  writeJava(command.executable, "pwd >out; echo \"$QUILLORY_TEST_VARIABLE\" >>out");
  EXPECT_EQ(startApplication("Main", jre_, true, command), 0);
  EXPECT_EQ(readFile(there + "/out"), there + "\na=b\n");
  command.directory = dir_ / "gone";
  EXPECT_EQ(startApplication("Main", jre_, true, command), 0);
  EXPECT_TRUE(log_.contains("[Extractor] The working directory stays, because " +
                            command.directory + " cannot be entered: No such file or directory\n"));
  fs::current_path(before);
  unsetenv("QUILLORY_TEST_VARIABLE");
}

TEST_F(StartApplication, ReturnsTheErrorNumberOfAFailedSpawn) {
  const ScopedReplace forced(forceSpawn, true);
  fs::remove(jre_ + "/bin/java");
  EXPECT_EQ(launch(kLaunchApplication), ENOENT);
  EXPECT_THAT(log_.messages(), Contains("Launch Error 2.\n"));
}

// The whole way with a real JVM, in a process of its own.

class RealLaunch : public LaunchTest {
 protected:
  /// The alias folder and the bundle beside it, whose home is a link to it.
  RealLaunch() {
    const fs::path runtime = QUILLORY_TEST_RUNTIME;
    fs::remove_all(jre_);
    fs::create_directories(jre_ + "/bin");
    fs::copy_file(runtime / "bin/java", jre_ + "/bin/java");
    fs::create_symlink(runtime / "lib", jre_ + "/lib");
    fs::create_symlink(runtime / "conf", jre_ + "/conf");
    fs::create_directories(jre_ + ".plugin/Contents/MacOS");
    fs::create_symlink(jre_, jre_ + ".plugin/Contents/Home");
    fs::copy_file(QUILLORY_PROBE_JAR, app_ + "/probe.jar");
    writeLaunchFile(launchFile_);
  }

  ChildResult launchReally(const std::string& jre, const std::string& launchClass,
                           const std::string& isSpawned, std::vector<std::string> arguments) {
    std::vector<std::string> command = {
        QUILLORY_LAUNCH_PROBE, "flow",   master_, "Quillory-Demo-3-complete", jre,
        launchClass,           isSpawned};
    command.insert(command.end(), arguments.begin(), arguments.end());
    return runChild(command, withJvm());
  }

  /// What the launcher left in the launch-properties file that Java was given.
  std::string propertiesPathIn(const std::string& out) const {
    const std::size_t at = out.find("arg [" + app_ + "/QYLaunchProperties-");
    if (at == std::string::npos) return "";
    return out.substr(at + 5, out.find(']', at) - at - 5);
  }

  LaunchFileText launchFile_{.mainClass = "Probe",
                             .memory = "64",
                             .classPath = {"probe.jar"},
                             .compatibilityClass = "Compatible"};
};

TEST_F(RealLaunch, RunsTheApplicationInTheProcessOfTheLauncher) {
  const ChildResult result = launchReally("JRE", "0", "false", {"user", "two words"});
  EXPECT_EQ(result.exitStatus, 0) << result.out << result.err;
  const std::string properties = propertiesPathIn(result.out);
  EXPECT_THAT(readFile(properties), HasSubstr(app_));
  EXPECT_THAT(result.out, HasSubstr("PROBE 4 arguments\narg [" + properties + "]"));
  EXPECT_THAT(result.out, HasSubstr("arg [extra] 65 78 74 72 61\narg [user]"));
  EXPECT_THAT(result.out, HasSubstr("class path " + app_ + "/probe.jar\n"));
  EXPECT_THAT(result.out, HasSubstr("Identified JRE path as " + jre_ +
                                    ".plugin/Contents/Home/lib/server/libjvm.so"));
  EXPECT_THAT(result.out, HasSubstr("Return code for JNI launch was 0\n"));
  EXPECT_THAT(result.out, Not(HasSubstr("Attempting spawn launch")));
}

TEST_F(RealLaunch, StartsTheNamedCopyOfJavaWhenTheSpawnIsForced) {
  const ChildResult result = launchReally("JRE", "0", "true", {"--file=" + (dir_ / "done")});
  EXPECT_EQ(result.exitStatus, 0) << result.out << result.err;
  EXPECT_THAT(result.out, Not(HasSubstr("[JNILaunch]")));
  // The launcher does not wait for it.
  ASSERT_TRUE(eventually([&] { return fs::exists(dir_ / "done"); }));
  EXPECT_THAT(readFile(dir_ / "done"), HasSubstr("PROBE 3 arguments\n"));
}

TEST_F(RealLaunch, SpawnsWhenTheMainClassIsNotThere) {
  launchFile_.mainClass = "com.example.Missing";
  writeLaunchFile(launchFile_);
  const ChildResult result = launchReally("JRE", "0", "false", {});
  EXPECT_EQ(result.exitStatus, 0);
  EXPECT_THAT(result.out, HasSubstr("[JNILauncher] Searching for clazz failed!\n"));
  EXPECT_THAT(result.out, HasSubstr("[Extractor] Attempting spawn launch\n"));
}

/// What the probe has made of the try of its start.
std::string onlyTryIn(const std::string& master) {
  std::string content;
  for (const auto& entry : fs::directory_iterator(master + "/QYUpdates"))
    content += readFile(entry.path());
  fs::remove_all(master + "/QYUpdates");
  return content;
}

TEST_F(RealLaunch, NotesHowTheApplicationEnded) {
  static constexpr struct {
    const char* end;
    const char* noted;
  } kCases[] = {{"--exit=5", "folder\nended 5\n"},
                {"--exit=0", "folder\nended 0\n"},
                {"--throw", "folder\nended 1\n"},
                {"--thread", "folder\nended 0\n"},
                {"--terminate", "folder\nended 143\n"}};
  for (const auto& [end, noted] : kCases) {
    SCOPED_TRACE(end);
    fs::create_directory(master_ + "/QYUpdates");
    const ChildResult result = launchReally("JRE", "0", "false", {"--try", end});
    EXPECT_FALSE(result.timedOut) << result.out << result.err;
    EXPECT_EQ(onlyTryIn(master_), noted);
  }
}

TEST_F(RealLaunch, ChecksCompatibilityUnderAJava) {
  const std::string java = jre_ + "/bin/java";
  EXPECT_EQ(launchReally(java, "1", "false", {"72"}).exitStatus, 72);
  EXPECT_EQ(launchReally(java, "1", "false", {"3"}).exitStatus, 3);
  launchFile_.version = "2";
  writeLaunchFile(launchFile_);
  EXPECT_NE(launchReally(java, "1", "false", {"72"}).exitStatus, 72);
}

}  // namespace
}  // namespace quillory
