// Elevation that fails: one prompt, a log that tells why, and an end.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>

#include "tests/e2e/elevation_fixture.h"

namespace quillory::testing {
namespace {

using ::testing::EndsWith;
using ::testing::HasSubstr;

class DeniedElevation : public Elevation {
 protected:
  /// What holds however elevation failed.
  void expectNoSecondTry(const ChildResult& result) {
    EXPECT_EQ(result.exitStatus, 0) << result.out;
    EXPECT_EQ(countLine(result, kRefusal), 1) << result.out;
    EXPECT_EQ(countLine(result, "[SUDO] Elevation required."), 1);
    EXPECT_EQ(countOf(result.err, "main(0)="), 2) << "the first copy and the relaunched one";
    EXPECT_EQ(countLine(result, "[SUDO] Relaunch complete"), 1);
    EXPECT_FALSE(fs::exists(at("/Library")));
  }
};

TEST_F(DeniedElevation, IsLoggedAndNotTriedAgain) {
  useRecorder("exit 1");
  const ChildResult result = start({"argument"});
  EXPECT_EQ(prompts(), 1);
  linesInOrder(result,
               {"[SUDO] elev_mac ended with status 1: elevation was denied, or set-up failed",
                "[SUDO] Elevated setup complete", "[SUDO] Elevated setup complete", kRefusal,
                "[SUDO] Relaunch complete"});
  expectNoSecondTry(result);
}

TEST_F(DeniedElevation, EndsTheRelaunchedCopyWithStatusOne) {
  useRecorder("exit 1");
  const ChildResult result = start();
  const std::size_t relaunch = result.out.find("Relaunching post setup");
  // The raw status of the wait, which the spawner logs: 1 * 256.
  const std::size_t done = result.out.find("Spawn call done ", relaunch);
  ASSERT_NE(done, result.out.npos) << result.out;
  EXPECT_THAT(result.out.substr(done, result.out.find('\n', done) - done), EndsWith(" 256."));
}

TEST_F(DeniedElevation, BySudoSaysSo) {
  if (!hasSudo()) GTEST_SKIP() << "needs sudo";
  useRealTool();
  const ChildResult result = start();
  EXPECT_EQ(prompts(), 1);
  EXPECT_EQ(
      countLine(result,
                "[SUDO] elev_mac ended with status 77: elevation was denied, or set-up failed"),
      1);
  EXPECT_THAT(result.err, HasSubstr("elev_mac: the administrator's rights were not given\n"));
  expectNoSecondTry(result);
}

TEST_F(DeniedElevation, WithoutTheToolSaysSo) {
  const ChildResult result = start();
  linesInOrder(result, {std::string("[SUDO] Elev_mac path is ") + kTool, "Launch Error 2.",
                        "[SUDO] elev_mac could not be started: nothing has been installed"});
  expectNoSecondTry(result);
}

TEST_F(DeniedElevation, WithAToolThatCannotBeExecutedSaysSo) {
  useRecorder();
  chmod(bundle_->resource("elev_mac").c_str(), 0644);
  const ChildResult result = start();
  linesInOrder(result, {std::string("[SUDO] Elev_mac path is ") + kTool, "Launch Error 13.",
                        "[SUDO] elev_mac could not be started: nothing has been installed"});
  EXPECT_EQ(prompts(), 0);
  expectNoSecondTry(result);
}

}  // namespace
}  // namespace quillory::testing
