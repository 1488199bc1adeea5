#include "packager/config/name_rules.h"

#include <gtest/gtest.h>

namespace quillory::pack {
namespace {

using namespace std::string_literals;

const Subject kSubject = {"some.key", {"quillory.toml", 4}};

// The rule that a name breaks; "" when it breaks none.
std::string ruleOf(const std::optional<Finding>& flaw) {
  if (flaw) {
    EXPECT_EQ(flaw->severity, Severity::kError);
    EXPECT_EQ(asText(flaw->place), "quillory.toml:4");
    EXPECT_EQ(flaw->what.find("some.key "), 0u) << flaw->what;
    EXPECT_NE(flaw->advice, "");
  }
  return flaw ? flaw->rule : "";
}

TEST(FlawOfFolderName, IsNoneOfOrdinaryNames) {
  for (const char* name :
       {"Hello", "Hello World", "a", "...", ".a", "a.", "H\xc3\xa4llo", "a\"b"}) {
    EXPECT_EQ(ruleOf(flawOfFolderName(kSubject, name)), "") << name;
  }
}

TEST(FlawOfFolderName, NamesTheRule) {
  const std::pair<std::string, const char*> cases[] = {
      {"a-b", "name-dash"},   {"-", "name-dash"}, {"a:b", "name-colon"}, {"", "name"},
      {".", "name"},          {"..", "name"},     {"a/b", "name"},       {"/", "name"},
      {"a\nb", "name"},       {"a\x7f", "name"},  {"\x1f", "name"},      {"a\0b"s, "name"},
      {" a", "name"},         {"a ", "name"},     {" ", "name"},         {"a-b:c/d", "name-dash"},
      {"a:b/c", "name-colon"}};
  for (const auto& [name, rule] : cases) {
    EXPECT_EQ(ruleOf(flawOfFolderName(kSubject, name)), rule) << ::testing::PrintToString(name);
  }
}

TEST(FlawOfFolderName, SaysItOfItsSubject) {
  EXPECT_EQ(flawOfFolderName(kSubject, "")->what, "some.key is empty");
  EXPECT_EQ(flawOfFolderName(kSubject, "..")->what,
            "some.key is \"..\", which stands for a folder that is there already");
  EXPECT_EQ(flawOfFolderName(kSubject, " a")->what,
            "some.key begins or ends with a blank, which nobody sees");
}

TEST(FlawOfExecutableName, TakesDashesAndColons) {
  EXPECT_EQ(ruleOf(flawOfExecutableName(kSubject, "my-app:1")), "");
  for (const char* name : {"", ".", "..", "a/b", "a\tb", " a", "a "}) {
    EXPECT_EQ(ruleOf(flawOfExecutableName(kSubject, name)), "name") << name;
  }
}

TEST(FlawOfExecutableName, LeavesRoomForTheEndingOfItsIcon) {
  EXPECT_EQ(ruleOf(flawOfExecutableName(kSubject, std::string(250, 'x'))), "");
  EXPECT_EQ(flawOfExecutableName(kSubject, std::string(251, 'x'))->what,
            "some.key has 251 bytes; with the ending of its icon, 250 fit into a file's name");
}

TEST(ExecutableNameFor, KeepsLettersDigitsDotsAndUnderscores) {
  EXPECT_EQ(executableNameFor("My App 2.0_b!"), "MyApp2.0_b");
  for (const char* name : {"", "---", ".hidden", "\xc3\xa4"}) {
    EXPECT_EQ(executableNameFor(name), "launcher") << name;
  }
}

TEST(IsSameOnDisk, ComparesAsciiLettersWithoutTheirCase) {
  EXPECT_TRUE(isSameOnDisk("Quillory", "qUILLORY"));
  EXPECT_TRUE(isSameOnDisk("", ""));
  EXPECT_FALSE(isSameOnDisk("Quillory", "Quillor"));
  EXPECT_FALSE(isSameOnDisk("\xc3\xa4", "\xc3\x84"));
  EXPECT_FALSE(isSameOnDisk("a@", "a`"));
}

}  // namespace
}  // namespace quillory::pack
