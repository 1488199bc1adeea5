// What check() says of the paths themselves.
#include <gtest/gtest.h>

#include "packager/content/content_tree.h"
#include "tests/packager/rules_of.h"

namespace quillory::pack {
namespace {

using testing::findingOf;
using testing::hasRule;
using testing::rulesOf;

Findings findingsFor(const std::string& path, const std::string& bytes = "x") {
  ContentTree tree("application");
  tree.addBytes(bytes, path);
  return tree.check();
}

TEST(CheckPaths, AcceptsOrdinaryOnes) {
  for (const char* path : {"a", "lib/a.jar", "a b/c\xC3\xA4", "..a", "a..", "x/qyArcSpBlock_y"}) {
    EXPECT_TRUE(findingsFor(path).empty()) << path;
  }
}

TEST(CheckPaths, RefusesThoseThatTheLauncherRefusesOrMisunderstands) {
  const std::pair<std::string, const char*> cases[] = {
      {"../up", "path"},
      {"a/../b", "path"},
      {"/absolute", "path"},
      {"a//b", "path"},
      {"./a", "path"},
      {"a/", "path"},
      {"qyArcSpBlock_Mine", "special-prefix"},
      {std::string(256, 'n'), "name-length"},
      {"\xff", "file-name"},
      {"\xed\xa0\x80", "file-name"},      // half of a pair
      {"\xe0\x80\x80", "file-name"},      // longer than needed
      {"\xf4\x90\x80\x80", "file-name"},  // beyond the last character
  };
  for (const auto& [path, rule] : cases) {
    EXPECT_TRUE(hasRule(findingsFor(path), rule)) << path;
  }
}

TEST(CheckPaths, KeepsToTheLimitOfTheRecord) {
  std::string path;
  while (path.size() < 1000) {
    path += std::string(99, 'd') + '/';
  }
  const std::string longest = path + std::string(1022 - path.size(), 'f');
  EXPECT_TRUE(findingsFor(longest).empty());
  EXPECT_EQ(rulesOf(findingsFor(longest + 'f')), std::vector<std::string>{"path-length"});
}

TEST(CheckPaths, AcceptsANameOf255Bytes) {
  EXPECT_TRUE(findingsFor("lib/" + std::string(255, 'n') + "/a").empty());
  EXPECT_EQ(rulesOf(findingsFor("lib/" + std::string(256, 'n') + "/a")),
            std::vector<std::string>{"name-length"});
}

TEST(CheckPaths, WarnsOfEmptyFiles) {
  const Finding finding = findingOf(findingsFor("lib/empty", ""), "empty-file");
  EXPECT_EQ(finding.severity, Severity::kWarning);
  EXPECT_EQ(finding.what,
            "\"lib/empty\" of the application is empty: the launcher does not create empty files");
}

TEST(CheckPaths, SaysNothingOfAnEmptyFolder) {
  ContentTree tree("application");
  tree.addFolder("lib");
  EXPECT_EQ(rulesOf(tree.check()), std::vector<std::string>{});
}

TEST(CheckPaths, WarnsOfNamesThatDifferInCaseOnly) {
  ContentTree tree("application");
  tree.addBytes("1", "lib/Readme");
  tree.addBytes("2", "lib/readme");
  EXPECT_EQ(rulesOf(tree.check()), std::vector<std::string>{"case"});
}

TEST(CheckPaths, KnowsThePairsOfEveryLetter) {
  for (char c = 'A'; c <= 'Z'; ++c) {
    ContentTree tree("application");
    tree.addBytes("1", std::string("lib/") + c);
    tree.addBytes("2", std::string("Lib/") + static_cast<char>(c - 'A' + 'a'));
    EXPECT_EQ(rulesOf(tree.check()), std::vector<std::string>{"case"}) << c;
  }
  ContentTree others("application");
  others.addBytes("1", "a@");
  others.addBytes("2", "a`");
  others.addBytes("3", "a[");
  others.addBytes("4", "a{");
  EXPECT_EQ(rulesOf(others.check()), std::vector<std::string>{});
}

}  // namespace
}  // namespace quillory::pack
