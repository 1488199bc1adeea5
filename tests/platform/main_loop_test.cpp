#include "platform/gnustep/main_loop.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <string>
#include <thread>

namespace quillory::platform {
namespace {

TEST(MainLoop, PerformsWhatAnotherThreadWaitsFor) {
  MainLoop loop;
  std::thread::id performer;
  std::atomic<bool> isOver = false;
  std::thread other([&] {
    loop.perform(
        [](void* context) { *static_cast<std::thread::id*>(context) = std::this_thread::get_id(); },
        &performer);
    isOver = true;
    loop.post([] {});
  });
  while (!isOver) loop.waitAndHandle();
  other.join();
  EXPECT_EQ(performer, std::this_thread::get_id());
}

TEST(MainLoop, DoesWhatWasPostedInItsOrder) {
  MainLoop loop;
  std::string order;
  loop.post([&] {
    order += "a";
    loop.post([&] { order += "c"; });
  });
  loop.post([&] { order += "b"; });
  loop.waitAndHandle();
  EXPECT_EQ(order, "abc");
}

// As a window's own loop does, in which the thread goes on being of use.
TEST(MainLoop, MayBeTurnedByItsOwnWork) {
  MainLoop loop;
  std::string order;
  loop.post([&] {
    order += "(";
    loop.handleWaiting();
    order += ")";
  });
  loop.post([&] { order += "inner"; });
  loop.handleWaiting();
  EXPECT_EQ(order, "(inner)");
}

TEST(MainLoop, LooksAfterDescriptorsUntilTheyAreTakenBack) {
  MainLoop loop;
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  int calls = 0;
  loop.watch(ends[0], [&] {
    if (++calls == 2) loop.unwatch(ends[0]);
  });
  loop.handleWaiting();
  EXPECT_EQ(calls, 0);
  ASSERT_EQ(write(ends[1], "x", 1), 1);
  loop.waitAndHandle();
  loop.waitAndHandle();
  loop.handleWaiting();
  EXPECT_EQ(calls, 2);
  close(ends[0]);
  close(ends[1]);
}

}  // namespace
}  // namespace quillory::platform
