// The window of a failed start, on a screen.
#include <gtest/gtest.h>

#include <chrono>

#include "tests/harness/eventually.h"
#include "tests/ui/demo_process.h"
#include "tests/ui/x_server.h"

namespace quillory::testing {
namespace {

constexpr WindowAt kFailure = {(1024 - 640) / 2, (768 - 300) / 2, 640, 300};

class ShownFailure : public ::testing::Test {
 protected:
  ShownFailure() : screen_(server_), demo_({.display = server_.display()}) {}

  bool isShown() const {
    return eventually([&] { return screen_.shownWindows() == std::vector<WindowAt>{kFailure}; });
  }
  void moveMouse(int x) const {
    ChildOptions options;
    options.environment["DISPLAY"] = server_.display();
    EXPECT_EQ(runChild({"xdotool", "mousemove", std::to_string(x), "20"}, options).exitStatus, 0);
  }
  bool goesAway() const {
    return eventually([&] { return screen_.shownWindows().empty(); });
  }

  XServer server_;
  Screen screen_;
  DemoProcess demo_;
};

TEST_F(ShownFailure, GoesAwayByItselfWhereNobodyIsThere) {
  moveMouse(10);
  demo_.startCommand("failure 1 It did not work.");
  EXPECT_TRUE(isShown());
  EXPECT_TRUE(goesAway());
  EXPECT_EQ(demo_.finish().exitStatus, 0);
}

TEST_F(ShownFailure, StaysForWhoMovesTheMouseUntilItIsClosed) {
  moveMouse(10);
  demo_.startCommand("failure 3 It did not work.");
  ASSERT_TRUE(isShown());
  moveMouse(40);
  const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(3500);
  while (std::chrono::steady_clock::now() < end) ASSERT_FALSE(screen_.shownWindows().empty());
  ChildOptions options;
  options.environment["DISPLAY"] = server_.display();
  runChild({"xdotool", "mousemove", std::to_string(kFailure.x + 570),
            std::to_string(kFailure.y + 270), "click", "1"},
           options);
  EXPECT_TRUE(goesAway());
  EXPECT_EQ(demo_.finish().exitStatus, 0);
}

TEST(FailureWithoutADisplay, ShowsNothingAndGoesOn) {
  DemoProcess demo({});
  demo.commands({"failure 60 It did not work."});
  EXPECT_EQ(demo.finish().exitStatus, 0);
}

}  // namespace
}  // namespace quillory::testing
