// What a person sees of a hardened bundle that waits for minutes, and how it is told to give up.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "tests/e2e/launcher_run.h"
#include "tests/harness/eventually.h"
#include "tests/ui/x_server.h"

namespace quillory::testing {
namespace {

namespace fs = std::filesystem;
using ::testing::HasSubstr;
using ::testing::Not;

constexpr WindowAt kNotice = {(1024 - 640) / 2, (768 - 170) / 2, 640, 170};
constexpr WindowAt kWords = {kNotice.x + 20, kNotice.y + 16, 600, 98};
constexpr WindowAt kQuit = {kNotice.x + 520, kNotice.y + 126, 100, 28};

class LongWait : public ::testing::Test {
 protected:
  LongWait() {
    installRuntime(user_.master());
    const std::string updater = user_.master() + "/Quillory-Quillory-1-complete";
    fs::create_directories(updater);
    fs::copy_file(QUILLORY_REPORT_JAR, updater + "/report.jar");
    writeFile(updater + "/QuilloryLaunch", launchFileBytes());
    const std::string application = user_.master() + "/Quillory-Demo-3-complete";
    fs::create_directories(application);
    writeFile(application + "/hello.txt", "hello");
  }

  /// A file that is there and that nobody can open, also not root: each retry waits 500 seconds.
  void blockRememberedOptions() const {
    const std::string folder = user_.master() + "/QYApps";
    fs::create_directories(folder);
    const std::string file = folder + "/JRE-LastSuccessfulOptions-Quillory-JRE-17-complete";
    ASSERT_EQ(mknod(file.c_str(), S_IFSOCK | 0644, 0), 0);
  }

  TempDir folder_;
  XServer server_;
  Screen screen_{server_};
  TestUser user_;
};

TEST_F(LongWait, IsToldInAWindowWhoseButtonEndsIt) {
  blockRememberedOptions();
  Tail tail;
  tail.appVersion = "3";
  tail.jreVersion = "17";
  const HandMadeBundle bundle(folder_ / "bundle", tail,
                              {{"jre_name", "JRE"}, {"hardened", "true"}});
  ChildOptions options = user_.options();
  options.environment["DISPLAY"] = server_.display();
  BackgroundChild start({bundle.executable()}, options);

  ASSERT_TRUE(eventually([&] { return screen_.shownWindows() == std::vector{kNotice}; }))
      << start.out() << start.err();
  EXPECT_EQ(server_.windowsNamed("launcher"), 1);
  EXPECT_TRUE(eventually([&] { return screen_.hasInk(kWords) && screen_.hasInk(kQuit); }));
  EXPECT_TRUE(actUntil([&] { server_.click(kQuit.x + 50, kQuit.y + 14); },
                       [&] { return screen_.shownWindows().empty(); }));

  const ChildResult result = start.finish();
  EXPECT_EQ(result.exitStatus, 1);
  EXPECT_THAT(result.out, HasSubstr("[Extractor] The user did not want to wait any longer.\n"));
  EXPECT_THAT(result.out, HasSubstr("Retrying (0)..."));
  EXPECT_THAT(result.out, Not(HasSubstr("Retrying (1)..."))) << "it did not wait to the end";
}

}  // namespace
}  // namespace quillory::testing
