// The window of a failed start, on a screen.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>

#include "tests/harness/eventually.h"
#include "tests/ui/demo_process.h"
#include "tests/ui/x_server.h"

namespace quillory::testing {
namespace {

using ::testing::IsEmpty;

constexpr WindowAt kFailure = {(1024 - 640) / 2, (768 - 300) / 2, 640, 300};

class ShownFailure : public ::testing::Test {
 protected:
  ShownFailure() : screen_(server_), demo_({.display = server_.display()}) {}

  bool isShown() const {
    return eventually([&] { return screen_.shownWindows() == std::vector<WindowAt>{kFailure}; });
  }
  bool goesAway() const {
    return eventually([&] { return screen_.shownWindows().empty(); });
  }

  XServer server_;
  Screen screen_;
  DemoProcess demo_;
};

TEST_F(ShownFailure, GoesAwayByItselfWhereNobodyIsThere) {
  server_.moveMouse(10, 20);
  demo_.startCommand("failure 1 It did not work.");
  EXPECT_TRUE(isShown());
  EXPECT_TRUE(goesAway());
  EXPECT_EQ(demo_.finish().exitStatus, 0);
}

TEST_F(ShownFailure, StaysForWhoMovesTheMouseUntilItIsClosed) {
  server_.moveMouse(10, 20);
  demo_.startCommand("failure 3 It did not work.");
  ASSERT_TRUE(isShown());
  server_.moveMouse(40, 20);
  const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(3500);
  while (std::chrono::steady_clock::now() < end) ASSERT_FALSE(screen_.shownWindows().empty());
  server_.click(kFailure.x + 570, kFailure.y + 270);
  EXPECT_TRUE(goesAway());
  EXPECT_EQ(demo_.finish().exitStatus, 0);
  EXPECT_THAT(demo_.leftBehind(), IsEmpty());
}

TEST(FailureWithoutADisplay, ShowsNothingAndGoesOn) {
  DemoProcess demo({});
  demo.commands({"failure 60 It did not work."});
  EXPECT_EQ(demo.finish().exitStatus, 0);
}

}  // namespace
}  // namespace quillory::testing
