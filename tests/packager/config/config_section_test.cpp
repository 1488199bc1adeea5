#include "packager/config/config_section.h"

#include <gtest/gtest.h>

#include "tests/packager/rules_of.h"

namespace quillory::pack {
namespace {

using testing::rulesOf;

using List = TomlValue::List;
using Names = std::vector<std::string>;
using Table = TomlValue::Table;

TomlValue value(unsigned line, decltype(TomlValue::content) content) {
  return {std::move(content), line};
}
TomlValue text(unsigned line, const char* content) { return value(line, std::string(content)); }

// The table [some] of a file, read by `read`, which gets the section.
class ConfigSectionTest : public ::testing::Test {
 protected:
  ConfigSectionTest() { config_.file = "quillory.toml"; }

  template <typename Read>
  void read(const Table& table, Read use) {
    findings_.clear();
    config_.places.clear();
    const Table root = {{"some", value(3, table)}};
    ConfigSection section(root, "some", config_, findings_);
    use(section);
  }
  // What was found, one line each, without advice.
  Names said() const {
    Names lines;
    for (const Finding& finding : findings_) {
      lines.push_back(asText(finding.place) + ": " + finding.what + " [" + finding.rule + ']');
    }
    return lines;
  }

  Config config_;
  Findings findings_;
};

TEST_F(ConfigSectionTest, ReadsEachKindOfValueAndWhereItStands) {
  std::string name;
  bool isOn = false;
  std::int64_t wide = 0;
  int narrow = 0;
  Names list = {"what was there"};
  read({{"name", text(4, "Hello")},
        {"on", value(5, true)},
        {"wide", value(6, std::int64_t{5'000'000'000})},
        {"narrow", value(7, std::int64_t{-3})},
        {"list", value(8, List{text(8, "a"), text(9, "b")})}},
       [&](ConfigSection& section) {
         section.text("name", name);
         section.flag("on", isOn);
         section.number("wide", wide, std::int64_t{0}, std::int64_t{5'000'000'000});
         section.number("narrow", narrow, -3, 3);
         section.texts("list", list);
         section.rejectUnknown();
         EXPECT_TRUE(section.has("name"));
         EXPECT_FALSE(section.has("other"));
       });
  EXPECT_EQ(said(), Names{});
  EXPECT_EQ(name, "Hello");
  EXPECT_TRUE(isOn);
  EXPECT_EQ(wide, 5'000'000'000);
  EXPECT_EQ(narrow, -3);
  EXPECT_EQ(list, (Names{"a", "b"}));
  EXPECT_EQ(asText(config_.placeOf("some.narrow")), "quillory.toml:7");
  EXPECT_EQ(asText(config_.placeOf("some")), "quillory.toml:3");
  EXPECT_EQ(asText(config_.placeOf("some.other")), "quillory.toml");
}

TEST_F(ConfigSectionTest, LeavesWhatIsMissingOrOfTheWrongKind) {
  std::string name = "before";
  bool isOn = true;
  int number = 7;
  std::int64_t version = 8;
  Names list = {"before"};
  const auto readAll = [&](ConfigSection& section) {
    section.text("name", name);
    section.flag("on", isOn);
    section.number("number", number, 0, 9);
    section.version("version", version);
    section.texts("list", list);
    section.choice("choice", {"a", "b"}, number);
  };
  read({}, readAll);
  EXPECT_EQ(said(), Names{});
  read({{"name", value(4, true)},
        {"on", text(5, "true")},
        {"number", text(6, "7")},
        {"version", value(7, TomlValue::Fraction{})},
        {"list", text(8, "a")},
        {"choice", text(9, "c")}},
       readAll);
  EXPECT_EQ(rulesOf(findings_),
            (Names{"wrong-kind", "wrong-kind", "wrong-kind", "version", "wrong-kind", "choice"}));
  EXPECT_EQ(findings_[0].place.line, 4u);
  EXPECT_EQ(findings_[0].what.find("some.name is "), 0u);
  EXPECT_EQ(findings_[0].advice, "write it as in name = \"...\"");
  EXPECT_EQ(findings_[5].what, "some.choice is none of \"a\", \"b\"");
  EXPECT_EQ(name, "before");
  EXPECT_TRUE(isOn);
  EXPECT_EQ(number, 7);
  EXPECT_EQ(version, 8);
  EXPECT_EQ(list, Names{"before"});
}

TEST_F(ConfigSectionTest, TakesNumbersFromTheLeastToTheMost) {
  for (const auto& [given, isTaken] : {std::pair{0, false}, std::pair{1, true}, std::pair{9, true},
                                       std::pair{10, false}, std::pair{-1, false}}) {
    int number = 5;
    read({{"n", value(4, std::int64_t{given})}},
         [&](ConfigSection& section) { section.number("n", number, 1, 9); });
    EXPECT_EQ(number, isTaken ? given : 5);
    EXPECT_EQ(rulesOf(findings_), isTaken ? Names{} : Names{"range"}) << given;
  }
}

TEST_F(ConfigSectionTest, LeavesRoomForLaterVersions) {
  const std::int64_t largest = 1'000'000'000'000'000'000;
  for (const auto& [given, isTaken] :
       {std::pair{std::int64_t{0}, true}, std::pair{largest, true}, std::pair{largest + 1, false},
        std::pair{std::int64_t{-1}, false}}) {
    std::int64_t version = 5;
    read({{"version", value(4, given)}},
         [&](ConfigSection& section) { section.version("version", version); });
    EXPECT_EQ(version, isTaken ? given : 5);
    EXPECT_EQ(rulesOf(findings_), isTaken ? Names{} : Names{"version"}) << given;
  }
}

TEST_F(ConfigSectionTest, NamesTheItemOfAListThatIsNoText) {
  Names list;
  read({{"list", value(4, List{text(4, "a"), value(5, true), text(6, "c")})}},
       [&](ConfigSection& section) { section.texts("list", list); });
  EXPECT_EQ(list, (Names{"a", "c"}));
  ASSERT_EQ(rulesOf(findings_), Names{"wrong-kind"});
  EXPECT_EQ(findings_[0].place.line, 5u);
}

TEST_F(ConfigSectionTest, ReadsFilesWithTheirPlaces) {
  std::vector<ExtraFile> files;
  read({{"files", value(4, List{text(4, "data"),
                                value(5, Table{{"from", text(5, "a")}, {"to", text(5, "b")}}),
                                value(6, Table{{"to", text(6, "c")}}),
                                value(7, Table{{"from", text(7, "d")}, {"too", text(7, "e")}}),
                                value(8, true)})}},
       [&](ConfigSection& section) { section.files("files", files); });
  ASSERT_GE(files.size(), 2u);
  EXPECT_EQ(files[0].from, "data");
  EXPECT_EQ(files[0].to, "");
  EXPECT_EQ(files[1].from, "a");
  EXPECT_EQ(files[1].to, "b");
  ASSERT_EQ(rulesOf(findings_), (Names{"missing-key", "unknown-key", "wrong-kind"}));
  EXPECT_EQ(findings_[0].place.line, 6u);
  EXPECT_EQ(findings_[1].what, "there is no too in an entry of some.files");
  EXPECT_EQ(findings_[1].advice, "did you mean \"to\"?");
  EXPECT_EQ(findings_[2].place.line, 8u);
}

TEST_F(ConfigSectionTest, TakesPairsOfEveryNameAsTexts) {
  Parameters pairs;
  read({{"z", text(4, "text")},
        {"a", value(5, std::int64_t{-12})},
        {"b", value(6, true)},
        {"c", value(7, false)},
        {"d", value(8, INT64_MAX)},
        {"e", value(9, INT64_MIN)},
        {"f", value(10, List{})}},
       [&](ConfigSection& section) {
         section.pairs(pairs);
         section.rejectUnknown();
       });
  EXPECT_EQ(pairs, (Parameters{{"z", "text"}, {"a", "-12"}, {"b", "true"}, {"c", "false"}}));
  EXPECT_EQ(rulesOf(findings_), (Names{"range", "range", "wrong-kind"}));
}

TEST_F(ConfigSectionTest, ReadsPairsThatAreAValue) {
  Parameters pairs;
  const TomlValue::Table inner = {
      {"a.b", text(5, "text")}, {"c", value(6, true)}, {"d", value(7, List{})}};
  read({{"properties", value(4, inner)}, {"other", text(8, "no table")}},
       [&](ConfigSection& section) {
         section.pairs("properties", pairs);
         section.pairs("missing", pairs);
         section.pairs("other", pairs);
         section.rejectUnknown();
       });
  EXPECT_EQ(pairs, (Parameters{{"a.b", "text"}, {"c", "true"}}));
  EXPECT_EQ(rulesOf(findings_), (Names{"wrong-kind", "wrong-kind"}));
  EXPECT_EQ(findings_.at(0).place.line, 7u);
  EXPECT_EQ(findings_.at(1).place.line, 8u);
}

TEST_F(ConfigSectionTest, FindsAChoiceByItsName) {
  int chosen = -1;
  read({{"type", text(4, "b")}}, [&](ConfigSection& section) {
    section.choice("type", {"a", "b"}, chosen);
  });
  EXPECT_EQ(chosen, 1);
  read({{"type", text(4, "perm-usr")}}, [&](ConfigSection& section) {
    section.choice("type", {"perm-user", "all"}, chosen);
  });
  EXPECT_EQ(findings_.at(0).advice, "did you mean \"perm-user\"?");
  EXPECT_EQ(chosen, 1);
}

TEST_F(ConfigSectionTest, ReportsWhatIsMissingAtTheTable) {
  read({{"name", text(4, "")}}, [&](ConfigSection& section) {
    section.require("name", "write one");
    section.require("version", "count releases");
  });
  ASSERT_EQ(said(), Names{"quillory.toml:3: some.version is missing [missing-key]"});
  EXPECT_EQ(findings_[0].advice, "count releases");
}

TEST_F(ConfigSectionTest, ReportsKeysThatNobodyAskedFor) {
  std::string name;
  read({{"name", text(4, "")}, {"nmae", text(5, "")}, {"colour", text(6, "")}},
       [&](ConfigSection& section) {
         section.text("name", name);
         section.rejectUnknown();
       });
  ASSERT_EQ(said(), (Names{"quillory.toml:5: there is no some.nmae [unknown-key]",
                           "quillory.toml:6: there is no some.colour [unknown-key]"}));
  EXPECT_EQ(findings_[0].advice, "did you mean \"name\"?");
  EXPECT_EQ(findings_[1].advice, "known here: name");
}

TEST_F(ConfigSectionTest, TakesAMissingTableForAnEmptyOneAndNothingElseForATable) {
  std::string name = "before";
  for (const Table& root : {Table{}, Table{{"some", text(2, "text")}}}) {
    findings_.clear();
    ConfigSection section(root, "some", config_, findings_);
    section.text("name", name);
    section.rejectUnknown();
    EXPECT_EQ(rulesOf(findings_), root.empty() ? Names{} : Names{"wrong-kind"});
  }
  EXPECT_EQ(findings_[0].what.find("\"some\" is "), 0u);
  EXPECT_EQ(name, "before");
}

TEST(RejectUnknownSections, NamesTablesAndKeysOutsideOfThem) {
  Findings findings;
  rejectUnknownSections({{"application", value(1, Table{})},
                         {"aplication", value(2, Table{})},
                         {"name", text(3, "x")}},
                        {"application", "runtime"}, "quillory.toml", findings);
  ASSERT_EQ(rulesOf(findings), (Names{"unknown-key", "unknown-key"}));
  EXPECT_EQ(asText(findings[0]),
            "quillory.toml:2: error: there is no table [aplication] [unknown-key]\n"
            "  -> did you mean \"application\"?");
  EXPECT_EQ(findings[1].what, "\"name\" stands outside of every table");
}

}  // namespace
}  // namespace quillory::pack
