#include "platform/launch_gate.h"

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

namespace quillory::platform {
namespace {

using namespace std::chrono_literals;

TEST(LaunchGate, LetsNobodyWaitLongerThanTheirPatience) {
  LaunchGate gate;
  EXPECT_FALSE(gate.waitFor(1ms));
}

TEST(LaunchGate, LetsThroughWhoeverWaitsAndWhoeverComesLater) {
  LaunchGate gate;
  std::thread opener([&] { gate.open(); });
  EXPECT_TRUE(gate.waitFor(1min));
  opener.join();
  EXPECT_TRUE(gate.waitFor(0ms));
}

TEST(LaunchGate, IsOneForTheApplication) { EXPECT_EQ(&endOfLaunch(), &endOfLaunch()); }

}  // namespace
}  // namespace quillory::platform
