#include "packager/report/rest_time.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

namespace quillory::pack {
namespace {

// A machine with `processors` that share one part more than they are, each with the speed that it
// has, the rest waiting; by a clock of its own.
class Machine {
 public:
  Machine(unsigned processors, const std::vector<std::uint64_t>& lengths,
          std::vector<double> speeds)
      : processors_(processors), speeds_(std::move(speeds)) {
    for (const std::uint64_t length : lengths) parts_.emplace_back(length);
  }

  bool isDone() const {
    for (const WorkPart& part : parts_) {
      if (!part.isSkipped && part.done < part.total) return false;
    }
    return true;
  }

  void work(double seconds) {
    now_ += seconds;
    std::vector<std::size_t> active;
    for (std::size_t i = 0; i < parts_.size() && active.size() <= processors_; ++i) {
      const WorkPart& part = parts_[i];
      if (!part.isSkipped && part.done < part.total) active.push_back(i);
    }
    const double share =
        std::min(1.0, static_cast<double>(processors_) / static_cast<double>(active.size()));
    for (const std::size_t i : active) {
      const auto more = std::llround(speeds_[i] * share * seconds);
      parts_[i].done = std::min(parts_[i].total, parts_[i].done + static_cast<std::uint64_t>(more));
    }
  }

  std::deque<WorkPart>& parts() { return parts_; }
  double now() const { return now_; }

 private:
  unsigned processors_;
  std::vector<double> speeds_;
  std::deque<WorkPart> parts_;
  double now_ = 0;
};

// What was promised at each look, and when.
struct Promise {
  double at;
  double rest;
};

std::vector<Promise> promisesOf(Machine& machine, unsigned atATime) {
  RestTime rest(atATime);
  std::vector<Promise> promises;
  rest.look(0, machine.parts());
  while (!machine.isDone()) {
    machine.work(0.1);
    rest.look(machine.now(), machine.parts());
    if (const auto seconds = rest.rest()) promises.push_back({machine.now(), *seconds});
  }
  return promises;
}

void expectRightInSecondHalf(Machine& machine, unsigned atATime) {
  const std::vector<Promise> promises = promisesOf(machine, atATime);
  ASSERT_FALSE(promises.empty());
  for (const Promise& promise : promises) {
    if (promise.at < machine.now() / 2) continue;
    const double actual = machine.now() - promise.at;
    EXPECT_NEAR(promise.rest, actual, actual * 0.2 + 0.2) << "at " << promise.at;
  }
}

constexpr std::uint64_t kMega = 1'000'000;

TEST(RestTime, IsRightWhereOnePartIsLeftAtTheEnd) {
  Machine machine(2, {40 * kMega, 10 * kMega, 5 * kMega}, {1e6, 1e6, 1e6});
  expectRightInSecondHalf(machine, 2);
}

TEST(RestTime, IsRightWhereMorePartsWaitThanThereAreProcessors) {
  Machine machine(2, {33 * kMega, 38 * kMega, 13 * kMega, 20 * kMega}, {1e6, 1e6, 1e6, 1e6});
  expectRightInSecondHalf(machine, 2);
}

TEST(RestTime, IsRightWherePartsDifferInSpeed) {
  Machine machine(2, {33 * kMega, 38 * kMega, 13 * kMega, 20 * kMega}, {1e6, 1.1e6, 1.3e6, 1.1e6});
  expectRightInSecondHalf(machine, 2);
}

TEST(RestTime, IsRightWithOneProcessor) {
  Machine machine(1, {3 * kMega, 20 * kMega, 9 * kMega}, {1e6, 1e6, 1.1e6});
  expectRightInSecondHalf(machine, 1);
}

TEST(RestTime, LeavesOutWhatWasPackedBefore) {
  Machine machine(2, {80 * kMega, 20 * kMega}, {1e6, 1e6});
  machine.parts()[0].isSkipped = true;
  expectRightInSecondHalf(machine, 2);
}

TEST(RestTime, PromisesNothingAtFirst) {
  Machine machine(2, {10 * kMega}, {1e6});
  RestTime rest(2);
  rest.look(0, machine.parts());
  machine.work(1);
  rest.look(1, machine.parts());
  EXPECT_FALSE(rest.rest());
  rest.look(3, std::deque<WorkPart>());
  EXPECT_FALSE(rest.rest());
}

TEST(RestTime, IsReadable) {
  EXPECT_EQ(readableRest(std::nullopt), "");
  EXPECT_EQ(readableRest(0.2), "0 s left");
  EXPECT_EQ(readableRest(12.4), "12 s left");
  EXPECT_EQ(readableRest(99), "99 s left");
  EXPECT_EQ(readableRest(170), "3 min left");
}

}  // namespace
}  // namespace quillory::pack
