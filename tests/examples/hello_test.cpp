// The sample application, as a user or a launcher starts it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "tests/harness/child_process.h"
#include "tests/harness/temp_dir.h"

namespace quillory {
namespace {

using namespace std::string_literals;
using ::quillory::testing::ChildOptions;
using ::quillory::testing::ChildResult;
using ::quillory::testing::readFile;
using ::quillory::testing::runChild;
using ::quillory::testing::TempDir;
using ::quillory::testing::writeFile;
using ::testing::HasSubstr;
using ::testing::Not;

constexpr char kRuntimeWithoutWindows[] = QUILLORY_TEST_RUNTIME "/bin/java";

class Hello : public ::testing::Test {
 protected:
  /// With `display` as the display; "" for none.
  static ChildResult runUnder(const std::string& java, const std::string& display,
                              const std::vector<std::string>& arguments) {
    std::vector<std::string> command = {java, "-cp", QUILLORY_HELLO_JAR, "com.example.hello.Hello"};
    command.insert(command.end(), arguments.begin(), arguments.end());
    ChildOptions options;
    options.environment = {{"DISPLAY", display}};
    return runChild(command, options);
  }
  static ChildResult run(const std::vector<std::string>& arguments) {
    return runUnder(kRuntimeWithoutWindows, "", arguments);
  }

  std::string properties(const std::string& content) const {
    writeFile(dir_ / "properties", content);
    return dir_ / "properties";
  }

  TempDir dir_;
};

TEST_F(Hello, SaysWhatItWasGiven) {
  const std::string path = properties(
      "qystat_app_name\0Hello\0qystat_silent_parameter\0\x04\0qydyna_url_req\0demo://\xC3\xBC"s);
  const ChildResult result = run({path, "one", "two words"});
  EXPECT_EQ(result.exitStatus, 0);
  EXPECT_THAT(result.out, HasSubstr("class path: " QUILLORY_HELLO_JAR "\n"
                                    "arguments: 2\n"
                                    "  1: one\n"
                                    "  2: two words\n"
                                    "launch properties: " +
                                    path +
                                    "\n"
                                    "  qystat_app_name = Hello\n"
                                    "  qystat_silent_parameter = \n"
                                    "  qydyna_url_req = demo://\xC3\xBC\n"
                                    "url request: demo://\xC3\xBC\n"));
  EXPECT_EQ(result.err, "");
}

TEST_F(Hello, SaysThatThereIsNoUrlRequest) {
  EXPECT_THAT(run({properties("qystat_app_name\0Hello"s)}).out, HasSubstr("url request: none\n"));
}

TEST_F(Hello, RunsWithoutALauncherAndWithoutProperties) {
  ChildResult result = run({});
  EXPECT_EQ(result.exitStatus, 0);
  EXPECT_THAT(result.out, HasSubstr("arguments: 0\nlaunch properties: null\n"
                                    "  none (not started by a launcher)\nurl request: none\n"));
  result = run({dir_ / "none", "one"});
  EXPECT_EQ(result.exitStatus, 0);
  EXPECT_THAT(result.out, HasSubstr("  none (" + (dir_ / "none") + " (No such file or directory)"));
  EXPECT_THAT(run({properties("")}).out, HasSubstr("url request: none\n"));
}

TEST_F(Hello, RunsInARuntimeWithoutAWindowingToolkit) {
  const ChildResult result = runUnder(kRuntimeWithoutWindows, ":0", {properties("")});
  EXPECT_EQ(result.exitStatus, 0);
  EXPECT_EQ(result.err, "No window: this Java runtime has no windowing toolkit.\n");
}

TEST_F(Hello, AsksForNoWindowWithTheArgumentConsole) {
  const ChildResult result = runUnder(kRuntimeWithoutWindows, ":0", {properties(""), "--console"});
  EXPECT_EQ(result.err, "");
}

TEST_F(Hello, SaysThatAVersionIsReady) {
  for (const char* version : {"1", "2"})
    std::filesystem::create_directories(dir_ /
                                        ("Quillory-Hello-" + std::string(version) + "-complete"));
  std::filesystem::create_directory(dir_ / "QYUpdates");
  const std::vector<std::string> command = {
      kRuntimeWithoutWindows,
      "-Dquillory.update.folder=" + (dir_ / "QYUpdates"),
      "-Dquillory.version.folder=" + (dir_ / "Quillory-Hello-1-complete"),
      "-Dquillory.try.file=" + (dir_ / "try"),
      "-cp",
      QUILLORY_HELLO_JAR,
      "com.example.hello.Hello",
      properties(""),
      "--console"};
  writeFile(dir_ / "try", "");
  EXPECT_THAT(runChild(command).out, HasSubstr("Version 2 is ready \xE2\x80\x93 restart\n"));
  EXPECT_EQ(readFile(dir_ / "try"), "") << "it has not shown that it is well";
  std::vector<std::string> staying = command;
  staying.push_back("--stay=1");
  runChild(staying);
  EXPECT_EQ(readFile(dir_ / "try"), "healthy\n");
}

bool canRun(const std::string& command) {
  return runChild({"sh", "-c", command + " >/dev/null 2>&1"}).exitStatus == 0;
}

class HelloWindow : public Hello {
 protected:
  void SetUp() override {
    if (!canRun(QUILLORY_JAVA " --list-modules | grep -q java.desktop"))
      GTEST_SKIP() << "needs a Java with java.desktop";
    if (!canRun("command -v xvfb-run && command -v xwininfo"))
      GTEST_SKIP() << "needs xvfb-run and xwininfo";
  }
};

TEST_F(HelloWindow, SaysThatTheDisplayCannotBeReached) {
  const ChildResult result = runUnder(QUILLORY_JAVA, ":9876", {properties("")});
  EXPECT_EQ(result.exitStatus, 0);
  EXPECT_THAT(result.err, HasSubstr("No window: "));
}

TEST_F(HelloWindow, IsShownAndClosesByItself) {
  const std::string path = properties("qystat_app_name\0Hello"s);
  writeFile(dir_ / "watch.sh",
            "\"$@\" &\n"
            "for i in $(seq 100); do\n"
            "  xwininfo -root -tree | grep -q '\"Hello Quillory\"' && echo SHOWN && break\n"
            "  sleep 0.1\n"
            "done\n"
            "wait $! && echo CLOSED\n");
  const ChildResult result =
      runChild({"xvfb-run", "-a", "sh", dir_ / "watch.sh", QUILLORY_JAVA, "-cp", QUILLORY_HELLO_JAR,
                "com.example.hello.Hello", path, "--close-after=2000"});
  EXPECT_EQ(result.exitStatus, 0) << result.err;
  EXPECT_THAT(result.out, HasSubstr("SHOWN\n"));
  EXPECT_THAT(result.out, HasSubstr("CLOSED\n"));
}

}  // namespace
}  // namespace quillory
