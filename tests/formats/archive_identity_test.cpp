#include "formats/archive_identity.h"

#include <gtest/gtest.h>

#include "tests/harness/page_example.h"
#include "tests/harness/records.h"

namespace quillory {
namespace {

using testing::pageExample;
using testing::records;

TEST(IdentityPath, IsThatOfThePage) {
  const std::string path = identityPath({"JRE", "17", "linux"});
  EXPECT_EQ(path, "qyArcSpBlock_Component1;JRE;17;linux");
  EXPECT_EQ(records({"0", path, "0"}), pageExample("formats/archive.md", 4));
}

TEST(IdentityPath, EscapesWhatSeparates) {
  static const struct {
    ArchiveIdentity identity;
    const char* path;
  } kCases[] = {
      {{"My App", "1.8.0_202", "any"}, "qyArcSpBlock_Component1;My App;1.8.0_202;any"},
      {{"JR\xC3\x89", "3", "macos"}, "qyArcSpBlock_Component1;JR\xC3\x89;3;macos"},
      {{"a;b/c\\d%e", "1", "x"}, "qyArcSpBlock_Component1;a%3bb%2fc%5cd%25e;1;x"},
      {{"..", "\n\x7F\x1F", "~"}, "qyArcSpBlock_Component1;..;%0a%7f%1f;~"},
      {{"%3b", "1", "x"}, "qyArcSpBlock_Component1;%253b;1;x"},
  };
  for (const auto& [identity, path] : kCases) {
    EXPECT_EQ(identityPath(identity), path);
    const auto parsed = parseIdentityPath(path);
    ASSERT_TRUE(parsed) << path;
    EXPECT_EQ(*parsed, identity) << path;
  }
}

TEST(ParseIdentityPath, TakesOneSpellingOnly) {
  for (const char* path : {
           "",
           "qyArcSpBlock_Component1",
           "qyArcSpBlock_Component1;",
           "qyArcSpBlock_Component1;a;b",
           "qyArcSpBlock_Component1;a;b;",
           "qyArcSpBlock_Component1;;b;c",
           "qyArcSpBlock_Component1;a;;c",
           "qyArcSpBlock_Component1;a;b;c;",
           "qyArcSpBlock_Component1;a;b;c;d",
           "qyArcSpBlock_Component2;a;b;c",
           "qyarcspblock_component1;a;b;c",
           "x/qyArcSpBlock_Component1;a;b;c",
           "qyArcSpBlock_Component1;a/x;b;c",
           "qyArcSpBlock_Component1;a%;b;c",
           "qyArcSpBlock_Component1;a%2;b;c",
           "qyArcSpBlock_Component1;a%zz;b;c",
           "qyArcSpBlock_Component1;a%2F;b;c",
           "qyArcSpBlock_Component1;%61;b;c",
           "qyArcSpBlock_Component1;a;b;c\n",
       }) {
    EXPECT_FALSE(parseIdentityPath(path)) << path;
  }
}

TEST(ArchiveIdentityAsText, IsOneLine) {
  EXPECT_EQ(asText(ArchiveIdentity{"JRE", "17", "linux"}), "JRE 17 (linux)");
  EXPECT_EQ(asText(ArchiveIdentity{"a\nb", "1", "any"}), "a%0ab 1 (any)");
}

TEST(RunsOn, TakesEveryPlatformTheSameAndItsSystem) {
  EXPECT_TRUE(runsOn("any", "linux-x86_64"));
  EXPECT_TRUE(runsOn("linux-x86_64", "linux-x86_64"));
  EXPECT_TRUE(runsOn("linux", "linux-x86_64"));
  EXPECT_TRUE(runsOn("macos", "macos"));
  EXPECT_FALSE(runsOn("macos", "linux-x86_64"));
  EXPECT_FALSE(runsOn("linux-aarch64", "linux-x86_64"));
  EXPECT_FALSE(runsOn("linux-x86_64", "linux"));
  EXPECT_FALSE(runsOn("lin", "linux-x86_64"));
  EXPECT_FALSE(runsOn("", "linux-x86_64"));
}

TEST(ThisPlatform, NamesASystem) {
  EXPECT_TRUE(runsOn("linux", thisPlatform()) || runsOn("macos", thisPlatform())) << thisPlatform();
}

}  // namespace
}  // namespace quillory
