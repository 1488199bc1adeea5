#include "packager/commands/launcher_log.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/harness/captured_log.h"
#include "tests/harness/captured_output.h"

namespace quillory::pack {
namespace {

using testing::CapturedLog;
using testing::CapturedOutput;
using ::testing::EndsWith;
using ::testing::HasSubstr;

// What a message does to standard output and to standard error.
std::pair<std::string, std::string> shownBy(bool shown) {
  CapturedOutput out;
  ::testing::internal::CaptureStderr();
  {
    const LauncherLog log(shown);
    logMessage("[Part] a step\n");
  }
  const std::string err = ::testing::internal::GetCapturedStderr();
  return {out.take(), err};
}

TEST(LauncherLog, GoesToStandardErrorOnce) {
  const auto [out, err] = shownBy(true);
  EXPECT_EQ(out, "");
  EXPECT_THAT(err, EndsWith(" [Part] a step\n"));
  EXPECT_EQ(err.find("[Part]"), err.rfind("[Part]"));
}

TEST(LauncherLog, GoesNowhereWhenItIsNotShown) {
  EXPECT_EQ(shownBy(false), (std::pair<std::string, std::string>()));
}

TEST(LauncherLog, LeavesTheLogAsItWas) {
  const CapturedLog system;
  { const LauncherLog log(false); }
  CapturedOutput out;
  logMessage("a step\n");
  EXPECT_THAT(out.take(), HasSubstr("a step\n"));
  EXPECT_EQ(system.text(), "a step\n");
}

}  // namespace
}  // namespace quillory::pack
