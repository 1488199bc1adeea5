#include "formats/marker_search.h"

#include <gtest/gtest.h>

#include "formats/markers.h"

namespace quillory {
namespace {

TEST(MarkerSearch, TakesBytesUpToTheEndOfTheMarkerAndThenNone) {
  MarkerSearch search("abc");
  EXPECT_EQ(search.take("..abc.."), 5U);
  EXPECT_TRUE(search.isFound());
  EXPECT_EQ(search.take("abc"), 0U);
  EXPECT_TRUE(search.isFound());
}

TEST(MarkerSearch, TakesAllWhereThereIsNone) {
  MarkerSearch search("abc");
  EXPECT_EQ(search.take("ab.bc"), 5U);
  EXPECT_EQ(search.take(""), 0U);
  EXPECT_FALSE(search.isFound());
}

TEST(MarkerSearch, FindsAnEmptyMarkerBeforeTheFirstByte) {
  MarkerSearch search("");
  EXPECT_TRUE(search.isFound());
  EXPECT_EQ(search.take("abc"), 0U);
}

TEST(MarkerSearch, FindsAMarkerCutAtAnyPlaceIntoAnyTwoBlocks) {
  const std::string bytes = "." + paramsMarker() + ".";
  for (std::size_t cut = 0; cut <= bytes.size(); ++cut) {
    SCOPED_TRACE(cut);
    MarkerSearch search(paramsMarker());
    const std::size_t taken = search.take(bytes.substr(0, cut));
    EXPECT_EQ(search.isFound(), cut + 1 >= bytes.size());
    EXPECT_EQ(taken + search.take(bytes.substr(cut)), bytes.size() - 1);
    EXPECT_TRUE(search.isFound());
  }
}

TEST(MarkerSearch, FindsAMarkerThatComesByteByByte) {
  MarkerSearch search("aab");
  for (const char byte : std::string("xaaxaab")) {
    EXPECT_FALSE(search.isFound());
    EXPECT_EQ(search.take({&byte, 1}), 1U);
  }
  EXPECT_TRUE(search.isFound());
}

// No back-tracking, by intent, wherever the block ends.
TEST(MarkerSearch, MissesAMarkerBehindItsOwnFirstByteWhereverTheBlockEnds) {
  const std::string marker = paramsMarker();
  const std::string bytes = marker.substr(0, 1) + marker;
  for (std::size_t cut = 0; cut <= bytes.size(); ++cut) {
    MarkerSearch search(marker);
    search.take(bytes.substr(0, cut));
    search.take(bytes.substr(cut));
    EXPECT_FALSE(search.isFound()) << cut;
  }
}

TEST(MarkerSearch, SaysWhetherAMarkerThatFollowsWouldBeMissed) {
  static constexpr struct {
    const char* before;
    bool missed;
  } kCases[] = {{"", false},   {".", false},   {"a", true},     {"aa", true},  {"aaa", false},
                {"aab", true}, {"aa.", false}, {".aaa", false}, {"..aa", true}};
  for (const auto& [before, missed] : kCases) {
    SCOPED_TRACE(before);
    MarkerSearch search("aabb");
    search.take(before);
    EXPECT_EQ(search.isInsideMatch(), missed);
    search.take("aabb");
    EXPECT_EQ(search.isFound(), !missed);
    EXPECT_FALSE(search.isFound() && search.isInsideMatch());
  }
}

}  // namespace
}  // namespace quillory
