#include "packager/report/value_lines.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

namespace quillory::pack {
namespace {

using OrderedJson = nlohmann::ordered_json;

TEST(AsLines, HasANameAndAValueALineInTheirOrder) {
  EXPECT_EQ(asLines({{"second", 2}, {"first", "text"}, {"yes", true}, {"no", false}}),
            "second: 2\n"
            "first: text\n"
            "yes: yes\n"
            "no: no\n");
  EXPECT_EQ(asLines(OrderedJson::object()), "");
}

TEST(AsLines, ShowsAnEmptyTextAsADash) { EXPECT_EQ(asLines({{"url", ""}}), "url: -\n"); }

TEST(AsLines, IndentsWhatIsInside) {
  EXPECT_EQ(asLines({{"outer", {{"inner", {{"name", "x"}}}, {"more", 1}}}}),
            "outer:\n"
            "  inner:\n"
            "    name: x\n"
            "  more: 1\n");
}

TEST(AsLines, HasAnItemOfAListOnALine) {
  EXPECT_EQ(asLines({{"words", {"one", "", "three"}}, {"nothing", OrderedJson::array()}}),
            "words:\n"
            "  one\n"
            "  -\n"
            "  three\n"
            "nothing: none\n");
}

TEST(AsLines, PutsTheValuesOfAnItemIntoColumns) {
  const OrderedJson entries = {{{"type", "file"}, {"path", "lib/a.jar"}, {"length", 1234}},
                               {{"type", "folder"}, {"path", "lib"}},
                               {{"type", "pack200 file"}, {"path", "b"}, {"inside", {1, 2}}}};
  EXPECT_EQ(asLines({{"entries", entries}}),
            "entries:\n"
            "  file     lib/a.jar  1234\n"
            "  folder   lib\n"
            "  pack200 file  b\n");
}

TEST(AsLines, ShowsPairsAsAssignments) {
  const OrderedJson pairs = {{{"name", "a"}, {"value", "1"}},
                             {{"name", "b"}, {"value", ""}},
                             {{"kind", "static"}, {"name", "c"}, {"value", "2"}}};
  EXPECT_EQ(asLines({{"parameters", pairs}}),
            "parameters:\n"
            "  a = 1\n"
            "  b = \n"
            "  static c = 2\n");
}

TEST(AsLines, ShowsTheArchiveInsideAnEntryBelowIt) {
  const OrderedJson entry = {{"path", "app.p2"}, {"archive", {{"signed", true}, {"files", {"x"}}}}};
  EXPECT_EQ(asLines({{"entries", OrderedJson::array({entry})}}),
            "entries:\n"
            "  app.p2\n"
            "      signed: yes\n"
            "      files:\n"
            "        x\n");
}

TEST(AsLines, CutsAValueOfMoreThan120BytesAndSaysHowManyThereAre) {
  EXPECT_EQ(asLines({{"a", std::string(120, 'x')}}), "a: " + std::string(120, 'x') + '\n');
  EXPECT_EQ(asLines({{"a", std::string(121, 'x')}}),
            "a: " + std::string(120, 'x') + "... (121 bytes)\n");
}

TEST(AsLines, ShowsWhatCannotBePrintedAsInC) {
  static constexpr struct {
    const char* text;
    const char* shown;
  } kCases[] = {{"a\nb", "a\\nb"},   {"a\tb", "a\\tb"},         {"\x01", "\\x01"},
                {"\x1f|", "\\x1f|"}, {"\x1b[31m", "\\x1b[31m"}, {"\x7f", "\\x7f"},
                {" ~", " ~"},        {"\r", "\\x0d"},           {"\xc3\xa4", "\xc3\xa4"}};
  for (const auto& [text, shown] : kCases) {
    EXPECT_EQ(asLines({{"a", text}}), "a: " + std::string(shown) + '\n');
  }
}

}  // namespace
}  // namespace quillory::pack
