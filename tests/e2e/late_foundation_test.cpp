// Starts in which everything is current, on whose way to Java there is nothing to be shown: the
// libraries of Cocoa take longer to load than the launcher takes for all the rest.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>

#include "tests/e2e/launcher_run.h"
#include "tests/e2e/session_bus.h"
#include "tests/harness/eventually.h"

namespace quillory::testing {
namespace {

namespace fs = std::filesystem;
using ::testing::HasSubstr;
using ::testing::Not;

constexpr char kIdentifier[] = "io.quillory.tests.Late";

class LateFoundation : public ::testing::Test {
 protected:
  LateFoundation() {
    writeFile(bundle_.contents() + "/Info.plist",
              "<plist><dict><key>CFBundleIdentifier</key><string>" + std::string(kIdentifier) +
                  "</string></dict></plist>");
    installRuntime(user_.master());
    EXPECT_EQ(start(bundle_, user_).exitStatus, 0);
  }

  static Tail tail() {
    Tail tail = quickTail();
    tail.entries = updaterEntries() + applicationEntries(fileEntry("hello.txt", "hello\n"));
    return tail;
  }

  TempDir folder_;
  TestUser user_;
  HandMadeBundle bundle_{folder_.str(), tail(), {{"jre_name", "JRE"}}};
};

// What the dynamic linker tells of a start's own process, and of those that it makes.
std::string loadedBy(const std::string& executable, ChildOptions options) {
  const TempDir lists;
  options.environment["LD_DEBUG"] = "files";
  options.environment["LD_DEBUG_OUTPUT"] = lists / "list";
  EXPECT_EQ(runChild({executable}, options).exitStatus, 0);
  std::string text;
  for (const auto& entry : fs::directory_iterator(lists.path())) text += readFile(entry.path());
  return text;
}

TEST_F(LateFoundation, IsNotLoadedByAStartThatShowsNothing) {
  const std::string loaded = loadedBy(bundle_.executable(), user_.options());
  EXPECT_THAT(loaded, HasSubstr("libobjc"));
  EXPECT_THAT(loaded, HasSubstr("libjvm"));
  EXPECT_THAT(loaded, Not(HasSubstr("libgnustep-base")));
  EXPECT_THAT(loaded, Not(HasSubstr("libsystemd"))) << "there is no bus";
}

TEST_F(LateFoundation, IsNotLoadedForABusThatHasNothingToSay) {
  const SessionBus bus;
  ChildOptions options = user_.options();
  options.environment["DBUS_SESSION_BUS_ADDRESS"] = bus.address();
  const std::string loaded = loadedBy(bundle_.executable(), options);
  EXPECT_THAT(loaded, HasSubstr("libsystemd"));
  EXPECT_THAT(loaded, Not(HasSubstr("libgnustep-base")));
}

TEST_F(LateFoundation, ComesWithTheFirstUrlWhileJavaRuns) {
  const SessionBus bus;
  ChildOptions options = user_.options();
  options.environment["DBUS_SESSION_BUS_ADDRESS"] = bus.address();
  BackgroundChild running({bundle_.executable(), "--sleep=20000"}, options);
  ASSERT_TRUE(eventually([&] { return running.out().find("REPORT END") != std::string::npos; }))
      << running.err();
  EXPECT_EQ(bus.open("late:first", kIdentifier, "/io/quillory/tests/Late").out, "()\n");
  EXPECT_EQ(bus.open("late:second", kIdentifier, "/io/quillory/tests/Late").out, "()\n");
  running.sendSignal(SIGTERM);
  const ChildResult result = running.finish();
  EXPECT_EQ(result.exitStatus, 128 + SIGTERM) << "Java has its handlers still";
  EXPECT_THAT(result.err, HasSubstr("[Quillory] [URL] Converted URL to 'late:first'"));
  EXPECT_THAT(result.err, HasSubstr("[Quillory] [URL] Converted URL to 'late:second'"));
}

}  // namespace
}  // namespace quillory::testing
