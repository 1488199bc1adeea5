#include "java/jni_launch.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <thread>

#include "java/for_embedders.h"
#include "java/jvm_library_names.h"
#include "support/log.h"
#include "support/owned.h"
#include "tests/harness/captured_log.h"
#include "tests/harness/child_process.h"
#include "tests/harness/temp_dir.h"
#include "tests/java/launch_fixture.h"

namespace quillory {
namespace {

namespace fs = std::filesystem;
using ::quillory::testing::CapturedLog;
using ::quillory::testing::ChildResult;
using ::quillory::testing::readFile;
using ::quillory::testing::runChild;
using ::quillory::testing::ScopedReplace;
using ::quillory::testing::TempDir;
using ::quillory::testing::withJvm;
using ::quillory::testing::writeFile;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;

using Texts = std::vector<const char*>;

/// A Java home with the stub in place of the JVM.
class StubJvm : public ::testing::Test {
 protected:
  void install(const std::string& place, const char* library = QUILLORY_STUB_JVM) {
    fs::create_directories(fs::path(dir_ / place).parent_path());
    fs::copy_file(library, dir_ / place);
  }

  int launch(const char* mainClass, Texts options, const Texts& classPath, const Texts& arguments) {
    const std::string record = "-Dstub.record=" + (dir_ / "record");
    options.push_back(record.c_str());
    return launchJavaJNI(mainClass, dir_.str().c_str(), static_cast<int>(options.size()),
                         options.data(), static_cast<int>(classPath.size()), classPath.data(),
                         static_cast<int>(arguments.size()), arguments.data());
  }

  std::string recorded() const { return readFile(dir_ / "record"); }
  std::string recordOption() const { return "-Dstub.record=" + (dir_ / "record"); }

  TempDir dir_;
  CapturedLog log_;
};

using LoadJVMLibrary = StubJvm;
using LaunchJavaJNI = StubJvm;

constexpr char kFirstPlace[] = "lib/server/libjvm.dylib";
constexpr char kBundlePlace[] = "Contents/Home/lib/server/libjvm.dylib";
constexpr char kInnerPlace[] = "Contents/Home/jre/lib/server/libjvm.dylib";

TEST_F(LoadJVMLibrary, FindsEachOfTheThreePlacesAndLogsTheOneThatLoaded) {
  for (const char* place : {kInnerPlace, kBundlePlace, kFirstPlace}) {
    install(place);  // From the last place to the first: each goes before those that are there.
    const CapturedLog log;
    EXPECT_NE(loadJVMLibrary(dir_.str().c_str()), nullptr);
    EXPECT_THAT(log.messages(),
                ElementsAre("[JNILaunch] Identified JRE path as " + (dir_ / place) + "\n"));
  }
}

TEST_F(LoadJVMLibrary, GoesOnToTheNextPlaceWhenAFileIsNoLibrary) {
  writeFile(dir_ / kFirstPlace, "no library");
  install(kBundlePlace);
  EXPECT_NE(loadJVMLibrary(dir_.str().c_str()), nullptr);
  EXPECT_TRUE(log_.contains("Identified JRE path as " + (dir_ / kBundlePlace)));
}

TEST_F(LoadJVMLibrary, ReturnsNullWhereThereIsNone) {
  EXPECT_EQ(loadJVMLibrary(dir_.str().c_str()), nullptr);
  EXPECT_THAT(log_.messages(),
              ElementsAre("[JNILaunch] [ERROR] Could not load dynamic library!\n"));
}

TEST_F(LoadJVMLibrary, TriesTheSystemsOwnFileNameWhenAllThreePlacesFailed) {
  if (jvmLibraryNames().size() == 1) GTEST_SKIP() << "has no other name on this system";
  install("lib/server/libjvm.so");
  EXPECT_NE(loadJVMLibrary(dir_.str().c_str()), nullptr);
  install(kInnerPlace);
  EXPECT_NE(loadJVMLibrary(dir_.str().c_str()), nullptr);
  EXPECT_THAT(
      log_.messages(),
      ElementsAre("[JNILaunch] Identified JRE path as " + (dir_ / "lib/server/libjvm.so") + "\n",
                  "[JNILaunch] Identified JRE path as " + (dir_ / kInnerPlace) + "\n"));
}

TEST_F(LoadJVMLibrary, FindsThatOfAJavaEightForLinux) {
  if (jvmLibraryNames().size() == 1) GTEST_SKIP() << "is never that on this system";
  for (const char* place : {"jre/lib/amd64/server/libjvm.so", "lib/amd64/server/libjvm.so"}) {
    install(place);
    const CapturedLog log;
    EXPECT_NE(loadJVMLibrary(dir_.str().c_str()), nullptr);
    EXPECT_THAT(log.messages(),
                ElementsAre("[JNILaunch] Identified JRE path as " + (dir_ / place) + "\n"));
  }
}

TEST(GetClassPathFor, JoinsTheEntriesWithColons) {
  const Texts entries = {"/a.jar", "/b c.jar", ""};
  EXPECT_STREQ(OwnedText(getClassPathFor(2, entries.data())).get(),
               "-Djava.class.path=/a.jar:/b c.jar");
  EXPECT_STREQ(OwnedText(getClassPathFor(1, entries.data())).get(), "-Djava.class.path=/a.jar");
  EXPECT_STREQ(OwnedText(getClassPathFor(3, entries.data())).get(),
               "-Djava.class.path=/a.jar:/b c.jar:");
}

TEST(GetClassPathFor, IsEmptyWithoutEntries) {
  EXPECT_STREQ(OwnedText(getClassPathFor(0, nullptr)).get(), "");
  EXPECT_STREQ(OwnedText(getClassPathFor(-1, nullptr)).get(), "");
}

TEST(GetClassPathFor, GrowsBeyondEveryFixedSize) {
  const std::string entry(900, 'x');
  const Texts entries(1000, entry.c_str());
  EXPECT_EQ(std::string(OwnedText(getClassPathFor(1000, entries.data())).get()).size(),
            std::string("-Djava.class.path=").size() + 1000 * 901 - 1);
}

TEST_F(LaunchJavaJNI, CallsMainWithTheArgumentsAndDestroysTheJvm) {
  install(kFirstPlace);
  EXPECT_EQ(launch("com.example.Main", {"-Xmx256m"}, {"/a.jar", "/b.jar"}, {"one", "two words"}),
            0);
  EXPECT_EQ(recorded(),
            "create version 65540 ignore 1\n"
            "option -Djava.class.path=/a.jar:/b.jar\n"
            "option -Xmx256m\n"
            "option " +
                recordOption() +
                "\n"
                "find com/example/Main\n"
                "method main ([Ljava/lang/String;)V\n"
                "find java/lang/String\n"
                "array 2\n"
                "string one\nset 0\n"
                "string two words\nset 1\n"
                "call\n"
                "destroy\n");
}

TEST_F(LaunchJavaJNI, LogsEveryStep) {
  install(kFirstPlace);
  launch("com.example.Main", {"-Xmx256m"}, {"/a.jar"}, {"one"});
  EXPECT_EQ(log_.text(), "[JNILaunch] [pid=" + std::to_string(getpid()) +
                             "] [mainThread=1]\n"
                             "[JNILaunch] Identified JRE path as " +
                             (dir_ / kFirstPlace) +
                             "\n"
                             "[JNILaunch] ------- JNI Launch call -------\n"
                             "[JNILaunch] JVM Argument 0 = -Xmx256m\n"
                             "[JNILaunch] JVM Argument 1 = " +
                             recordOption() +
                             "\n"
                             "[JNILaunch] CP Argument 0 = /a.jar\n"
                             "[JNILaunch] App Argument 0 = one\n"
                             "[JNILaunch] JNI Option 0=-Djava.class.path=/a.jar\n"
                             "[JNILaunch] JNI Option 1=-Xmx256m\n"
                             "[JNILaunch] JNI Option 2=" +
                             recordOption() +
                             "\n"
                             "[JNILauncher] Searching for clazz com/example/Main\n"
                             "[JNILauncher] Searching for main method main\n"
                             "[JNILauncher] Set argument 0 to one\n"
                             "[JNILauncher] About to execute static void method.\n"
                             "[Utils] Closing logging file.\n"
                             "[JNILauncher] Run complete.\n"
                             "[JNILauncher] Destroying runtime.\n"
                             "[JNILauncher] Done!\n");
}

TEST_F(LaunchJavaJNI, SaysWhenItIsNotOnTheMainThread) {
  std::thread([&] { launch("Main", {}, {}, {}); }).join();
  EXPECT_TRUE(log_.contains("[mainThread=0]\n"));
}

TEST_F(LaunchJavaJNI, ClosesTheLogFileBeforeMain) {
  install(kFirstPlace);
  setFileToLogTo(std::fopen((dir_ / "log").c_str(), "w"));
  launch("Main", {}, {}, {});
  const std::string file = readFile(dir_ / "log");
  EXPECT_THAT(file, HasSubstr("About to execute static void method."));
  EXPECT_THAT(file, Not(HasSubstr("Run complete.")));
}

TEST_F(LaunchJavaJNI, HasOnlyTheJvmOptionsWithoutClassPathEntries) {
  install(kFirstPlace);
  EXPECT_EQ(launch("Main", {"-Xss4m"}, {}, {}), 0);
  EXPECT_THAT(recorded(), HasSubstr("ignore 1\noption -Xss4m\noption -Dstub.record"));
  EXPECT_THAT(recorded(), HasSubstr("array 0\ncall\n"));
}

TEST_F(LaunchJavaJNI, HandsOverArgumentsAsModifiedUtf8AndLogsThemAsTheyCame) {
  install(kFirstPlace);
  EXPECT_EQ(launch("Main", {}, {}, {"\xF0\x9F\x98\x80", "\xFF"}), 0);
  EXPECT_THAT(recorded(), HasSubstr("string \xED\xA0\xBD\xED\xB8\x80\n"));
  EXPECT_THAT(recorded(), HasSubstr("string \xEF\xBF\xBD\n"));
  EXPECT_TRUE(log_.contains("[JNILauncher] Set argument 0 to \xF0\x9F\x98\x80\n"));
  EXPECT_TRUE(log_.contains("[JNILauncher] Set argument 1 to \xFF\n"));
}

TEST_F(LaunchJavaJNI, DescribesAnExceptionOfMainAndStillSucceeds) {
  install(kFirstPlace);
  EXPECT_EQ(launch("Main", {"-Dstub.throw"}, {}, {}), 0);
  EXPECT_THAT(recorded(), HasSubstr("call\ndescribe\ndestroy\n"));
}

TEST_F(LaunchJavaJNI, TakesThousandsOfArguments) {
  install(kFirstPlace);
  const Texts many(900, "x");  // As many as the stub has references for.
  EXPECT_EQ(launch("Main", Texts(2000, "-Da=b"), Texts(2000, "/a.jar"), many), 0);
  EXPECT_THAT(recorded(), HasSubstr("string x\nset 899\ncall\n"));
  EXPECT_THAT(log_.messages(), Contains("[JNILaunch] JNI Option 2000=-Da=b\n"));
}

TEST_F(LaunchJavaJNI, FailsWithoutALibrary) {
  EXPECT_EQ(launch("Main", {}, {}, {}), 1);
  EXPECT_TRUE(
      log_.text().ends_with("[JNILaunch] [ERROR] Could not load dynamic library!\n"
                            "[JNILaunch] [ERROR] Unable to load JRE library!\n"));
}

TEST_F(LaunchJavaJNI, FailsWhenTheLibraryCannotCreateAJvm) {
  install(kFirstPlace, QUILLORY_STUB_NO_JVM);
  EXPECT_EQ(launch("Main", {}, {}, {}), 1);
  EXPECT_TRUE(
      log_.text().ends_with("[JNILaunch] [ERROR] The JRE library has no JNI_CreateJavaVM!\n"));
}

TEST_F(LaunchJavaJNI, FailsWhenTheJvmIsNotCreated) {
  install(kFirstPlace);
  EXPECT_EQ(launch("Main", {"-Dstub.fail=create"}, {}, {}), 1);
  EXPECT_TRUE(log_.text().ends_with("[JNILauncher] Create Java VM Failed!\n"));
}

TEST_F(LaunchJavaJNI, FailsWithoutTheMainClassAndLeavesTheJvmAlive) {
  install(kFirstPlace);
  EXPECT_EQ(launch("Main", {"-Dstub.fail=class"}, {}, {}), 1);
  EXPECT_TRUE(log_.text().ends_with("[JNILauncher] Searching for clazz failed!\n"));
  EXPECT_THAT(recorded(), Not(HasSubstr("destroy")));
}

TEST_F(LaunchJavaJNI, FailsWithoutAMainMethod) {
  install(kFirstPlace);
  EXPECT_EQ(launch("Main", {"-Dstub.fail=method"}, {}, {}), 1);
  EXPECT_TRUE(log_.text().ends_with("[JNILauncher] Searching for main method failed!\n"));
  EXPECT_THAT(recorded(), Not(HasSubstr("call")));
}

TEST_F(LaunchJavaJNI, FailsWhenTheArgumentsCannotBeMade) {
  install(kFirstPlace);
  EXPECT_EQ(launch("Main", {"-Dstub.fail=array"}, {}, {"a"}), 1);
  EXPECT_THAT(recorded(), Not(HasSubstr("call")));
  fs::remove(dir_ / kFirstPlace);
  install(kBundlePlace);
  EXPECT_EQ(launch("Main", {"-Dstub.fail=string"}, {}, {"a"}), 1);
  EXPECT_THAT(recorded(), Not(HasSubstr("call")));
}

// With a real JVM, of which a process can have one.

ChildResult launchReally(const std::string& mainClass, std::vector<std::string> rest) {
  std::vector<std::string> command = {QUILLORY_LAUNCH_PROBE, "jni", mainClass,
                                      QUILLORY_TEST_RUNTIME, QUILLORY_PROBE_JAR};
  command.insert(command.end(), rest.begin(), rest.end());
  return runChild(command, withJvm());
}

TEST(RealJvm, RunsMainInThisProcess) {
  const ChildResult result = launchReally("Probe", {"-Dprobe.option=set", "--", "a", "b c", ""});
  EXPECT_EQ(result.exitStatus, 0) << result.err;
  EXPECT_THAT(result.out, HasSubstr("PROBE 3 arguments\narg [a] 61\narg [b c] 62 20 63\narg []\n"));
  EXPECT_THAT(result.out, HasSubstr("class path " QUILLORY_PROBE_JAR "\noption set\n"));
  EXPECT_THAT(result.out, HasSubstr("[mainThread=0]"));
  EXPECT_THAT(result.out, HasSubstr("[JNILauncher] Done!\nRESULT 0\n"));
  const std::size_t at = result.out.find("[pid=") + 5;
  const std::string pid = result.out.substr(at, result.out.find(']', at) - at);
  EXPECT_THAT(result.out, HasSubstr("\npid " + pid + "\n"));
}

TEST(RealJvm, GetsEveryCharacterOfTheArguments) {
  const ChildResult result =
      launchReally("Probe", {"--", "\xC3\xBC", "\xE2\x82\xAC", "\xF0\x9F\x98\x80", "a\xFFz"});
  EXPECT_THAT(result.out, HasSubstr("] fc\n"));
  EXPECT_THAT(result.out, HasSubstr("] 20ac\n"));
  EXPECT_THAT(result.out, HasSubstr("] d83d de00\n"));
  EXPECT_THAT(result.out, HasSubstr("] 61 fffd 7a\n"));
}

TEST(RealJvm, PrintsAnExceptionOfMainAndSucceeds) {
  const ChildResult result = launchReally("Probe", {"--", "--throw"});
  EXPECT_EQ(result.exitStatus, 0);
  EXPECT_THAT(result.err, HasSubstr("java.lang.IllegalStateException: thrown on purpose"));
  EXPECT_THAT(result.out, HasSubstr("RESULT 0\n"));
}

TEST(RealJvm, WaitsForTheOtherThreadsOfTheApplication) {
  const ChildResult result = launchReally("Probe", {"--", "--thread"});
  const std::size_t complete = result.out.find("[JNILauncher] Run complete.");
  const std::size_t ended = result.out.find("PROBE thread has ended");
  const std::size_t done = result.out.find("[JNILauncher] Done!");
  EXPECT_LT(complete, ended);
  EXPECT_LT(ended, done);
  EXPECT_NE(done, std::string::npos);
}

TEST(RealJvm, EndsTheProcessWhenTheApplicationExits) {
  const ChildResult result = launchReally("Probe", {"--", "--exit=5"});
  EXPECT_EQ(result.exitStatus, 5);
  EXPECT_THAT(result.out, Not(HasSubstr("RESULT")));
}

TEST(RealJvm, IgnoresOptionsThatItDoesNotKnow) {
  EXPECT_EQ(launchReally("Probe", {"-XX:+NoSuchOption", "-Xnosuchoption", "--"}).exitStatus, 0);
}

TEST(RealJvm, IsNotCreatedWithAnOptionThatMakesNoSense) {
  const ChildResult result = launchReally("Probe", {"-Xmxmuch", "--"});
  EXPECT_EQ(result.exitStatus, 1);
  EXPECT_THAT(result.out, HasSubstr("[JNILauncher] Create Java VM Failed!\n"));
}

TEST(RealJvm, FailsForAClassThatIsNotThereOrHasNoMain) {
  ChildResult result = launchReally("com.example.Missing", {"--"});
  EXPECT_EQ(result.exitStatus, 1);
  EXPECT_THAT(result.out, HasSubstr("Searching for clazz com/example/Missing\n"));
  EXPECT_THAT(result.out, HasSubstr("[JNILauncher] Searching for clazz failed!\n"));
  EXPECT_EQ(launchReally("", {"--"}).exitStatus, 1);
  EXPECT_EQ(launchReally("\xFF[", {"--"}).exitStatus, 1);
  result = launchReally("NoMain", {"--"});
  EXPECT_EQ(result.exitStatus, 1);
  EXPECT_THAT(result.out, HasSubstr("[JNILauncher] Searching for main method failed!\n"));
}

}  // namespace
}  // namespace quillory
