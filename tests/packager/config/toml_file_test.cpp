#include "packager/config/toml_file.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "packager/report/findings.h"
#include "tests/harness/temp_dir.h"

namespace quillory::pack {
namespace {

using ::testing::ElementsAre;
using testing::TempDir;
using testing::writeFile;

TomlValue::Table read(const std::string& text) {
  const TempDir dir;
  writeFile(dir / "file.toml", text);
  return readTomlFile(dir / "file.toml");
}

TEST(ReadTomlFile, SaysSomethingOfEveryMistake) {
  TempDir dir;
  for (const char* text :
       {"[parameters]\na = t= 1\n", "a\n", "a = \n", "= 1\n", "a = 'b\n", "[a\n"}) {
    writeFile(dir / "file.toml", text);
    try {
      readTomlFile(dir / "file.toml");
      ADD_FAILURE() << text;
    } catch (const RejectedInput& e) {
      const std::string& what = e.findings().at(0).what;
      EXPECT_NE(what.find_first_not_of(' '), std::string::npos) << text;
      EXPECT_EQ(e.findings().at(0).rule, "toml") << text;
    }
  }
}

TEST(ReadTomlFile, HasEveryKindOfValueWithItsLine) {
  const TomlValue::Table root = read(
      "text = \"a\"\n"
      "number = -12\n"
      "flag = true\n"
      "part = 1.5\n"
      "day = 1979-05-27\n"
      "list = [\"x\",\n"
      "        2]\n"
      "[table]\n"
      "key = 'v'\n");
  EXPECT_EQ(*find(root, "text")->as<std::string>(), "a");
  EXPECT_EQ(*find(root, "number")->as<std::int64_t>(), -12);
  EXPECT_EQ(*find(root, "flag")->as<bool>(), true);
  EXPECT_EQ(find(root, "day")->line, 5u);
  const auto& list = *find(root, "list")->as<TomlValue::List>();
  ASSERT_EQ(list.size(), 2u);
  EXPECT_EQ(*list[0].as<std::string>(), "x");
  EXPECT_EQ(list[1].line, 7u);
  const auto& table = *find(root, "table")->as<TomlValue::Table>();
  EXPECT_EQ(*find(table, "key")->as<std::string>(), "v");
  EXPECT_EQ(find(table, "key")->line, 9u);
  EXPECT_EQ(find(table, "text"), nullptr);
  EXPECT_EQ(find(root, "flag")->as<std::string>(), nullptr);
  std::vector<std::string> kinds;
  for (const TomlEntry& entry : root) {
    kinds.push_back(kindOf(entry.value));
  }
  EXPECT_THAT(kinds,
              ElementsAre("a text", "a whole number", "true or false", "a number with a fraction",
                          "a date or time", "a list", "a table"));
}

TEST(ReadTomlFile, KeepsTheOrderOfTheFileAndOfKeysOnOneLine) {
  std::vector<std::string> keys;
  for (const TomlEntry& entry : read("z = 1\ny = 2\nb = 3\na = { d = 1, c = 2 }\n")) {
    keys.push_back(entry.key);
    if (const auto* table = entry.value.as<TomlValue::Table>()) {
      for (const TomlEntry& inner : *table) {
        keys.push_back(inner.key);
      }
    }
  }
  EXPECT_THAT(keys, ElementsAre("z", "y", "b", "a", "c", "d"));
}

TEST(ReadTomlFile, NamesTheLineOfAMistake) {
  try {
    read("a = 1\nb = = 2\n");
    FAIL() << "it was read";
  } catch (const RejectedInput& e) {
    ASSERT_EQ(e.findings().size(), 1u);
    EXPECT_EQ(e.findings()[0].rule, "toml");
    EXPECT_EQ(e.findings()[0].place.line, 2u);
  }
  EXPECT_THROW(readTomlFile("/nonexistent/file.toml"), PackError);
}

}  // namespace
}  // namespace quillory::pack
