// The notice of a long wait, on a screen.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>

#include "tests/harness/eventually.h"
#include "tests/ui/demo_process.h"
#include "tests/ui/x_server.h"

namespace quillory::testing {
namespace {

using ::testing::HasSubstr;

constexpr WindowAt kNotice = {(1024 - 640) / 2, (768 - 170) / 2, 640, 170};

class NoticeWindow : public ::testing::Test {
 protected:
  NoticeWindow() : screen_(server_), demo_({.display = server_.display()}) {}

  bool isShown() const {
    return eventually([&] { return screen_.shownWindows() == std::vector<WindowAt>{kNotice}; });
  }
  int colours() const {
    const Picture picture = screen_.grab(kNotice);
    std::set<std::uint32_t> seen;
    for (int y = 0; y < picture.height(); ++y)
      for (int x = 0; x < picture.width(); ++x) seen.insert(picture.at(x, y));
    return static_cast<int>(seen.size());
  }

  XServer server_;
  Screen screen_;
  DemoProcess demo_;
};

TEST_F(NoticeWindow, ShowsWordsAndAButtonInTheMiddleUntilItIsTakenDown) {
  demo_.command("notice It waits.");
  EXPECT_TRUE(isShown());
  EXPECT_TRUE(eventually([&] { return colours() > 2; })) << "more than a white area";
  demo_.command("notice It waits for something else.");
  EXPECT_TRUE(isShown());
  demo_.command("notice-down");
  EXPECT_TRUE(eventually([&] { return screen_.shownWindows().empty(); }));
  EXPECT_EQ(demo_.finish().exitStatus, 0);
}

TEST_F(NoticeWindow, EndsTheProcessWhenItsButtonIsPressed) {
  demo_.command("notice It waits.");
  ASSERT_TRUE(isShown());
  demo_.startCommand("press");
  const ChildResult result = demo_.process().finish();
  EXPECT_EQ(result.exitStatus, 1);
  EXPECT_THAT(result.out, HasSubstr("[Extractor] The user did not want to wait any longer.\n"));
}

TEST(NoticeWithoutADisplay, ShowsNothingAndGoesOn) {
  DemoProcess demo({});
  demo.commands({"notice It waits.", "notice-down", "notice-down"});
  EXPECT_EQ(demo.finish().exitStatus, 0);
}

}  // namespace
}  // namespace quillory::testing
