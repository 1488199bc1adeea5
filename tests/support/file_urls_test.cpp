#include "support/file_urls.h"

#include <gtest/gtest.h>

#include <string>

namespace quillory {
namespace {

TEST(FileUrls, NamePathsOfThisMachine) {
  EXPECT_EQ(pathOfFileUrl("file:///a/b"), "/a/b");
  EXPECT_EQ(pathOfFileUrl("file:/a/b"), "/a/b");
  EXPECT_EQ(pathOfFileUrl("FILE://LocalHost/a"), "/a");
  EXPECT_EQ(pathOfFileUrl("file:///a%20b%c3%A4%2F?x#y"), "/a b\xc3\xa4/");
}

TEST(FileUrls, AreNotTakenFromOtherTexts) {
  for (const char* text :
       {"", "file", "file:", "file:a", "file://other/a", "file://", "http:///a", "demo:/a", "/a",
        "file:///a%", "file:///a%2", "file:///a%zz", "file:///a%00b"})
    EXPECT_EQ(pathOfFileUrl(text), std::nullopt) << text;
}

TEST(FileUrls, HoldEveryPath) {
  EXPECT_EQ(fileUrlOf("/a b/\xc3\xa4%?#.txt"), "file:///a%20b/%C3%A4%25%3F%23.txt");
  std::string all = "/";
  for (int byte = 1; byte < 256; ++byte) all += static_cast<char>(byte);
  EXPECT_EQ(pathOfFileUrl(fileUrlOf(all)), all);
}

}  // namespace
}  // namespace quillory
