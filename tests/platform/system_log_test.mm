// The system log beside NSLog itself.
#import <Foundation/Foundation.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <time.h>

#include <algorithm>
#include <cctype>
#include <ctime>
#include <string>
#include <thread>

#include "platform/autorelease_pool.h"
#include "platform/support_cocoa.h"

namespace quillory {
namespace {

template <typename Work>
std::string standardErrorOf(Work work) {
  ::testing::internal::CaptureStderr();
  work();
  return ::testing::internal::GetCapturedStderr();
}

std::string byNSLog(const char* message) {
  return standardErrorOf([message] {
    const AutoreleasePool pool;
    NSLog(@"%@", [NSString stringWithUTF8String:message]);
  });
}

std::string byUs(const char* message) {
  return standardErrorOf([message] { logThroughCocoa(message); });
}

// The time stamp's form without its time: "####-##-## ##:##:##.### ".
std::string masked(std::string line) {
  constexpr std::ptrdiff_t kStampLength = 24;
  const auto end = line.begin() + std::min(kStampLength, std::ptrdiff_t(line.size()));
  std::replace_if(
      line.begin(), end, [](unsigned char c) { return std::isdigit(c) != 0; }, '#');
  return line;
}

TEST(SystemLog, IsByteForByteThatOfNSLog) {
  for (const char* message : {"a message\n", "no line end", "", "two\nlines\n", "100%@ %s %d%%",
                              "Gr\xc3\xb6\xc3\x9f\xc3\xa9", "\xe2\x82\xac \xf0\x9f\x98\x80"}) {
    SCOPED_TRACE(message);
    const std::string expected = masked(byNSLog(message));
    ASSERT_EQ(expected.find("####-##-## ##:##:##.### "), 0U) << expected;
    EXPECT_EQ(masked(byUs(message)), expected);
  }
}

TEST(SystemLog, NamesTheThreadAsNSLogDoes) {
  std::string expected;
  std::string actual;
  std::thread([&] {
    expected = masked(byNSLog("from a thread"));
    actual = masked(byUs("from a thread"));
  }).join();
  EXPECT_EQ(actual, expected);
}

// "2026-11-21 15:20" at a place that is ahead of UTC by so many seconds.
std::string minuteNow(std::time_t secondsAhead) {
  const std::time_t now = std::time(nullptr) + secondsAhead;
  tm there = {};
  gmtime_r(&now, &there);
  char text[32];
  std::strftime(text, sizeof text, "%Y-%m-%d %H:%M", &there);
  return text;
}

// NSLog knows the zone of the machine only.
TEST(SystemLog, HasTheTimeOfTheUsersZone) {
  setenv("TZ", "XST-05:30", 1);
  tzset();
  constexpr std::time_t kAhead = (5 * 60 + 30) * 60;
  const std::string before = minuteNow(kAhead);
  const std::string line = byUs("x");
  EXPECT_TRUE(line.starts_with(before) || line.starts_with(minuteNow(kAhead))) << line;
}

}  // namespace
}  // namespace quillory
