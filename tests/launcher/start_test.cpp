#include "launcher/start.h"

#include <gtest/gtest.h>
#include <unistd.h>

namespace quillory::testing {
namespace {

TEST(StartIsClosedToOthers, WithTheAdministratorsRightsInASetUpOrAHardenedInstallationForAll) {
  static constexpr struct {
    bool isSetUp, isHardened;
    const char* installType;
    bool expected;
  } kCases[] = {{true, false, "perm_user", true},
                {true, true, "perm_all", true},
                {false, true, "perm_all", true},
                {false, true, "perm_user", false},
                {false, false, "perm_all", false}};
  for (const auto& [isSetUp, isHardened, installType, expected] : kCases) {
    SCOPED_TRACE(::testing::Message() << isSetUp << isHardened << installType);
    Start start;
    start.line.prepareOnly = isSetUp;
    start.params.isHardened = isHardened;
    start.tail.installType = installType;
    EXPECT_EQ(start.isClosedToOthers(), geteuid() == 0 && expected);
  }
}

TEST(StartShowsUi, UnlessItIsSilentOrASetUp) {
  Start start;
  EXPECT_TRUE(start.showsUi());
  start.isSilent = true;
  EXPECT_FALSE(start.showsUi());
  start.isSilent = false;
  start.line.prepareOnly = true;
  EXPECT_FALSE(start.showsUi());
}

}  // namespace
}  // namespace quillory::testing
