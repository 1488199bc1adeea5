#include "packager/report/nearest_name.h"

#include <gtest/gtest.h>

namespace quillory::pack {
namespace {

const std::vector<std::string> kKnown = {"main-class", "name", "version", "jars", "url-schemes"};

TEST(NearestName, ForgivesTypingMistakes) {
  static constexpr struct {
    const char* typed;
    const char* meant;
  } kCases[] = {{"main-clas", "main-class"},
                {"mian-class", "main-class"},
                {"nmae", "name"},
                {"versoin", "version"},
                {"jar", "jars"},
                {"versions", "version"},
                {"url-scheme", "url-schemes"}};
  for (const auto& [typed, meant] : kCases) {
    EXPECT_EQ(nearestName(typed, kKnown), meant) << typed;
  }
}

TEST(NearestName, TakesOtherWaysToWriteItForTheSame) {
  for (const char* typed : {"mainClass", "main_class", "MAIN-CLASS", "MainClass"}) {
    EXPECT_EQ(nearestName(typed, kKnown), "main-class") << typed;
  }
}

TEST(NearestName, IsEmptyWhenNothingIsNear) {
  EXPECT_EQ(nearestName("colour", kKnown), "");
  EXPECT_EQ(nearestName("x", kKnown), "");
  EXPECT_EQ(nearestName("name", {}), "");
}

TEST(NearestName, ForgivesTwoMistakesAndInLongNamesAThird) {
  EXPECT_EQ(nearestName("vrsin", kKnown), "version");
  EXPECT_EQ(nearestName("vrsn", kKnown), "");
  EXPECT_EQ(nearestName("xxlschemes", kKnown), "url-schemes") << "two of ten";
  EXPECT_EQ(nearestName("xxxschemes", kKnown), "url-schemes") << "three of ten";
  EXPECT_EQ(nearestName("xxxxchemes", kKnown), "") << "four of ten";
}

TEST(NearestName, TakesTheNearestOfSeveralAndTheFirstOfEquals) {
  EXPECT_EQ(nearestName("jar", {"jam", "jars", "jar"}), "jar");
  EXPECT_EQ(nearestName("bat", {"cat", "hat"}), "cat");
}

TEST(NearestName, CountsAnExchangeOfNeighboursAsOneMistake) {
  // Two exchanges; as four wrong letters they would be too many.
  EXPECT_EQ(nearestName("evsrion", kKnown), "version");
}

TEST(NearestName, DoesNotTakeANameOfWhichNothingIsLeft) {
  EXPECT_EQ(nearestName("ab", {"xy"}), "");
  EXPECT_EQ(nearestName("ab", {"ay"}), "ay");
  EXPECT_EQ(nearestName("", {"xy"}), "");
}

}  // namespace
}  // namespace quillory::pack
