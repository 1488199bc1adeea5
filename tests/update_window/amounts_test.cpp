#include "update_window/amounts.h"

#include <gtest/gtest.h>

namespace quillory::window {
namespace {

TEST(AmountOf, IsInTheUnitThatPeopleWouldTake) {
  static constexpr struct {
    std::int64_t bytes;
    const char* text;
  } kCases[] = {{0, "0 bytes"},           {999, "999 bytes"},      {1000, "1 KB"},
                {36'400, "36 KB"},        {999'400, "999 KB"},     {999'600, "1.0 MB"},
                {4'240'000, "4.2 MB"},    {38'000'000, "38.0 MB"}, {999'960'000, "1.0 GB"},
                {1'300'000'000, "1.3 GB"}};
  for (const auto& [bytes, text] : kCases) EXPECT_EQ(amountOf(bytes), text);
}

TEST(PartOf, HasTheUnitOfTheWholeOnBothSides) {
  EXPECT_EQ(partOf(400'000, 38'000'000), "0.4 MB of 38.0 MB");
  EXPECT_EQ(partOf(0, 36'000), "0 KB of 36 KB");
  EXPECT_EQ(partOf(0, 0), "0 bytes of 0 bytes");
}

TEST(TimeLeft, IsRoundedSoThatItCanBeRead) {
  static constexpr struct {
    std::int64_t seconds;
    const char* text;
  } kCases[] = {
      {0, "a few seconds left"},     {4, "a few seconds left"},     {5, "about 5 seconds left"},
      {22, "about 20 seconds left"}, {57, "about 55 seconds left"}, {58, "about 1 minute left"},
      {89, "about 1 minute left"},   {150, "about 3 minutes left"}, {3539, "about 59 minutes left"},
      {3540, "about 1 hour left"},   {9000, "about 3 hours left"}};
  for (const auto& [seconds, text] : kCases) EXPECT_EQ(timeLeft(seconds), text);
}

}  // namespace
}  // namespace quillory::window
