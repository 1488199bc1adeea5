#include "packager/bytes/piece_slots.h"

#include <gtest/gtest.h>

#include <future>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace quillory::pack {
namespace {

constexpr std::size_t kMega = std::size_t{1} << 20;

// Who has had a turn, in their order.
class Order {
 public:
  void note(const std::string& what) {
    const std::lock_guard lock(mutex_);
    all_.push_back(what);
  }
  const std::vector<std::string>& all() const { return all_; }

 private:
  std::mutex mutex_;
  std::vector<std::string> all_;
};

void untilWaiting(const PieceSlots& slots, std::size_t count) {
  while (slots.waiting() < count) std::this_thread::yield();
}

TEST(PieceSlots, AreGivenBack) {
  PieceSlots slots(2);
  for (int i = 0; i < 5; ++i) {
    const PieceSlots::Turn one(slots, 7);
    PieceSlots::Turn other(slots, 9);
    other.pass(1);
    const auto held = slots.hold();
  }
}

TEST(PieceSlots, AreForNoMoreThanThereAre) {
  PieceSlots slots(1);
  auto taken = std::make_unique<PieceSlots::Turn>(slots, 1);
  Order order;
  auto next = std::async(std::launch::async, [&] {
    const PieceSlots::Turn turn(slots, 2);
    order.note("second");
  });
  untilWaiting(slots, 1);
  std::vector<PieceSlots::Token> held;
  for (int i = 0; i < 3; ++i) held.push_back(slots.hold());  // while nothing is free
  auto last = std::async(std::launch::async, [&] {
    const auto more = slots.hold();
    order.note("held");
  });
  order.note("first");
  taken.reset();
  next.get();
  order.note("given back");
  held.clear();
  last.get();
  EXPECT_EQ(order.all(), (std::vector<std::string>{"first", "second", "given back", "held"}));
}

TEST(PieceSlots, AreForThoseOfWhichMostIsLeft) {
  PieceSlots slots(1);
  auto taken = std::make_unique<PieceSlots::Turn>(slots, 1);
  Order order;
  std::vector<std::future<void>> waiting;
  for (const std::size_t length : {30, 10, 40, 20}) {
    waiting.push_back(std::async(std::launch::async, [&, length] {
      const PieceSlots::Turn turn(slots, length);
      order.note(std::to_string(length));
    }));
  }
  untilWaiting(slots, 4);
  taken.reset();
  for (auto& one : waiting) one.get();
  EXPECT_EQ(order.all(), (std::vector<std::string>{"40", "30", "20", "10"}));
}

TEST(PieceSlots, PassToThoseOfWhichClearlyMoreIsLeft) {
  PieceSlots slots(1);
  Order order;
  auto longer = std::make_unique<PieceSlots::Turn>(slots, 30 * kMega);
  auto shorter = std::async(std::launch::async, [&] {
    PieceSlots::Turn turn(slots, 20 * kMega);
    order.note("20 left");
    turn.pass(10 * kMega);
    order.note("10 left");
  });
  untilWaiting(slots, 1);
  longer->pass(18 * kMega);
  order.note("18 left");
  longer->pass(15 * kMega);
  order.note("15 left");
  longer.reset();
  shorter.get();
  EXPECT_EQ(order.all(), (std::vector<std::string>{"18 left", "20 left", "15 left", "10 left"}));
}

TEST(PieceSlots, LetOnePieceMoreBeginThanThereAre) {
  PieceSlots slots(1);
  Order order;
  auto first = std::make_unique<PieceSlots::Turn>(slots, 50 * kMega);
  std::vector<std::future<void>> others;
  for (const std::size_t length : {40, 30}) {
    others.push_back(std::async(std::launch::async, [&, length] {
      PieceSlots::Turn turn(slots, length * kMega);
      order.note("begun " + std::to_string(length));
      turn.pass(5 * kMega);
      order.note("ended " + std::to_string(length));
    }));
  }
  untilWaiting(slots, 2);
  first->pass(10 * kMega);  // to the one of 40, which passes back: the one of 30 has to wait
  order.note("10 left");
  first.reset();
  for (auto& one : others) one.get();
  EXPECT_EQ(order.all(),
            (std::vector<std::string>{"begun 40", "10 left", "begun 30", "ended 30", "ended 40"}));
}

TEST(PieceSlots, AreAFewAtLeastAndNotTooMany) {
  EXPECT_GE(usualPieceSlots(), 2u);
  EXPECT_LE(usualPieceSlots(), 8u);
}

}  // namespace
}  // namespace quillory::pack
