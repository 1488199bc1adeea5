#include "packager/bytes/piece_slots.h"

#include <gtest/gtest.h>

#include <future>
#include <mutex>
#include <thread>
#include <vector>

namespace quillory::pack {
namespace {

TEST(PieceSlots, AreGivenBackByTheirTokens) {
  PieceSlots slots(2);
  for (int i = 0; i < 5; ++i) {
    const auto one = slots.take(7);
    const auto other = slots.take(9);
    const auto held = slots.hold();
  }
}

TEST(PieceSlots, AreForNoMoreThanThereAre) {
  PieceSlots slots(1);
  auto taken = slots.take(1);
  bool isFree = false;
  auto next = std::async(std::launch::async, [&] {
    const auto slot = slots.take(2);
    EXPECT_TRUE(isFree);
  });
  std::vector<PieceSlots::Token> held;
  for (int i = 0; i < 3; ++i) held.push_back(slots.hold());  // while nothing is free
  auto last = std::async(std::launch::async, [&] {
    const auto more = slots.hold();
    EXPECT_TRUE(held.empty());
  });
  isFree = true;
  taken.reset();
  next.get();
  std::vector<PieceSlots::Token> back;
  back.swap(held);
  back.clear();
  last.get();
}

TEST(PieceSlots, AreForTheLongestThatWaits) {
  PieceSlots slots(1);
  auto taken = slots.take(1);
  std::mutex mutex;
  std::vector<std::size_t> order;
  std::vector<std::future<void>> waiting;
  for (const std::size_t length : {30, 10, 40, 20}) {
    waiting.push_back(std::async(std::launch::async, [&, length] {
      const auto slot = slots.take(length);
      const std::lock_guard lock(mutex);
      order.push_back(length);
    }));
  }
  while (slots.waiting() < waiting.size()) std::this_thread::yield();
  taken.reset();
  for (auto& one : waiting) one.get();
  EXPECT_EQ(order, (std::vector<std::size_t>{40, 30, 20, 10}));
}

TEST(PieceSlots, AreAFewAtLeastAndNotTooMany) {
  EXPECT_GE(usualPieceSlots(), 2u);
  EXPECT_LE(usualPieceSlots(), 8u);
}

}  // namespace
}  // namespace quillory::pack
