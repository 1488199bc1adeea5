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

}  // namespace
}  // namespace quillory::pack
