// The places, beside the search path, where an online installer looks for a Java of the system.
// They have fixed names, so that each test has a root folder of its own.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <optional>

#include "tests/e2e/online_machine.h"
#include "tests/harness/private_root.h"

namespace quillory::testing {
namespace {

namespace fs = std::filesystem;
using ::testing::HasSubstr;

constexpr char kSupport[] = "/home/user/Library/Application Support/Quillory-Demo";
constexpr char kApplet[] = "/Library/Internet Plug-Ins/JavaAppletPlugin.plugin";
constexpr char kAutoTest[] = "/opt/JRE_QYAutoTest";

class SystemJrePlace : public ::testing::Test {
 protected:
  void SetUp() override {
    if (!PrivateRoot::whyImpossible().empty()) GTEST_SKIP() << PrivateRoot::whyImpossible();
    root_.emplace();
    makeToolFolder(*root_ / "/case/tools");
  }

  /// A start of an installer that cannot download a runtime.
  ChildResult start(const Parameters& parameters = {}) {
    Parameters all = {{"jre_name", "JRE"}};
    all.insert(all.end(), parameters.begin(), parameters.end());
    Tail tail = onlineTail("");
    tail.requiredJava = "8";
    const HandMadeBundle bundle(*root_ / "/case", tail, all);
    ChildOptions options = TestUser().options();
    for (const char* name : {"HOME", "LD_PRELOAD", "NSS_WRAPPER_PASSWD", "NSS_WRAPPER_GROUP"})
      options.environment.erase(name);
    options.environment["PATH"] = "/case/tools:/usr/sbin:/usr/bin:/sbin:/bin";
    return root_->runAsUser({"/case/App.app/Contents/MacOS/launcher", "argument"}, options);
  }

  void expectCopyOf(const ChildResult& result, const std::string& folder) {
    EXPECT_EQ(result.exitStatus, 0) << result.out << result.err;
    EXPECT_THAT(result.out, HasSubstr("[JRESearch] Running cp -LRf \"" + folder + "\" \""));
    const std::string alias = std::string(kSupport) + "/Quillory-JRE-00000000000-complete";
    EXPECT_TRUE(fs::is_regular_file(*root_ / alias + "/bin/java"));
    EXPECT_EQ(fs::read_symlink(*root_ / alias + ".plugin/Contents/Home").string(), alias);
    EXPECT_EQ(countLine(result, "[Extractor] Using private JRE Quillory-JRE-00000000000-complete"),
              1);
  }

  std::optional<PrivateRoot> root_;
};

TEST_F(SystemJrePlace, OfTheAppletPluginIsTakenWhenThePathHasNoJavaThatWouldDo) {
  makeScriptJre(*root_ / kApplet + "/Contents/Home");
  makeScriptJre(*root_ / "/old", "1.7.0_80");
  fs::create_symlink("/old/bin/java", *root_ / "/case/tools/java");
  const ChildResult result = start();
  linesInOrder(result,
               {"[JRESearch] A JRE does not seem to exist here.",
                std::string("[JRESearch] Looking at JRE ") + kApplet + "/Contents/Home/bin/java",
                std::string("[JRESearch] JRE unpack200 exists ") + kApplet +
                    "/Contents/Home/bin/unpack200"});
  expectCopyOf(result, kApplet);
}

TEST_F(SystemJrePlace, OfAnAutomaticTestIsTakenInsteadOfThePath) {
  const std::string home = std::string(kAutoTest) + "/Contents/Home";
  makeScriptJre(*root_ / home);
  makeScriptJre(*root_ / "/in-the-path");
  fs::create_symlink("/in-the-path/bin/java", *root_ / "/case/tools/java");
  const ChildResult result = start({{"wrapper_autotest", ""}});
  EXPECT_EQ(
      countLine(result, "AutoTesting - will fake possible jave exe to '" + home + "/bin/java'"), 1);
  expectCopyOf(result, home);
}

TEST_F(SystemJrePlace, ThatIsEmptyEndsAStartWithoutAnUpdateUrl) {
  makeScriptJre(*root_ / "/old", "1.7.0_80");
  fs::create_symlink("/old/bin/java", *root_ / "/case/tools/java");
  const ChildResult result = start();
  EXPECT_EQ(result.exitStatus, 1);
  linesInOrder(result, {"[JRESearch] JRE does not exist or does not have unpack200",
                        "[JREDownload] Failed to download JRE version file"});
}

}  // namespace
}  // namespace quillory::testing
