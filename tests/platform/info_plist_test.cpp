#include "platform/gnustep/info_plist.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "tests/harness/temp_dir.h"

namespace quillory::platform {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Pair;
using testing::TempDir;
using testing::writeFile;

constexpr char kUsual[] =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
    "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
    "<plist version=\"1.0\">\n<dict>\n"
    "  <key>CFBundleName</key>\n  <string>Hello</string>\n"
    "  <!-- <key>CFBundleName</key><string>not this</string> -->\n"
    "  <key>CFBundleIdentifier</key>\n  <string>com.example.Hello</string>\n"
    "</dict>\n</plist>\n";

TEST(TextsOfInfoPlist, AreThoseOfTheUsualForm) {
  EXPECT_THAT(textsOfInfoPlist(kUsual), ElementsAre(Pair("CFBundleIdentifier", "com.example.Hello"),
                                                    Pair("CFBundleName", "Hello")));
}

TEST(TextsOfInfoPlist, HaveTheirCharactersBack) {
  EXPECT_THAT(textsOfInfoPlist("<plist><dict><key>a&amp;b</key>"
                               "<string>&lt;Tom &amp; J&apos;&quot;&gt; &amp;lt; &x</string>"
                               "</dict></plist>"),
              ElementsAre(Pair("a&b", "<Tom & J'\"> &lt; &x")));
}

TEST(TextsOfInfoPlist, HaveTheCharactersOfTheirNumbers) {
  EXPECT_THAT(textsOfInfoPlist("<dict><key>a</key>"
                               "<string>&#65;&#xe4;&#228;&#x20AC;&#128512;</string></dict>"),
              ElementsAre(Pair("a", "A\xc3\xa4\xc3\xa4\xe2\x82\xac\xf0\x9f\x98\x80")));
  for (const std::string text : {"&#;", "&#x;", "&#0;", "&#xD800;", "&#1114112;", "&#-1;", "&#6 5;",
                                 "&#99999999999;", "&#65"}) {
    EXPECT_THAT(textsOfInfoPlist("<dict><key>a</key><string>" + text + "</string></dict>"),
                ElementsAre(Pair("a", text)));
  }
}

TEST(TextsOfInfoPlist, HoldWhatStandsAsItIs) {
  EXPECT_THAT(textsOfInfoPlist("<dict><key>a</key>"
                               "<string>x<![CDATA[<b> &amp; ]>]]>y<!-- no -->z</string></dict>"),
              ElementsAre(Pair("a", "x<b> &amp; ]>yz")));
}

TEST(TextsOfInfoPlist, AreNotThoseOfInnerDictionaries) {
  EXPECT_THAT(textsOfInfoPlist("<plist><dict>"
                               "<key>Types</key><array><dict><key>CFBundleName</key>"
                               "<string>inner</string></dict></array>"
                               "<key>Empty</key><dict/>"
                               "<key>Flag</key><true/><key>N</key><integer>3</integer>"
                               "<key>CFBundleName</key><string>outer</string>"
                               "</dict></plist>"),
              ElementsAre(Pair("CFBundleName", "outer")));
}

TEST(TextsOfInfoPlist, AreNoneForAnotherForm) {
  EXPECT_THAT(textsOfInfoPlist(""), IsEmpty());
  EXPECT_THAT(textsOfInfoPlist("bplist00\xd1\x01\x02"), IsEmpty());
  EXPECT_THAT(textsOfInfoPlist("{ CFBundleName = Hello; }"), IsEmpty());
  EXPECT_THAT(textsOfInfoPlist("</dict></dict><key>a</key><string>b</string>"), IsEmpty());
}

TEST(TextsOfInfoPlist, AreWhatIsWholeInAFileThatWasCut) {
  const std::string whole = kUsual;
  for (std::size_t length = 0; length < whole.size(); ++length) {
    const auto texts = textsOfInfoPlist(whole.substr(0, length));
    for (const auto& [key, text] : texts)
      EXPECT_TRUE(text == "Hello" || text == "com.example.Hello") << length;
  }
}

TEST(InfoPlistBeside, IsFoundAboveTheExecutablesFolder) {
  const TempDir folder;
  writeFile(folder.path() / "X.app/Contents/Info.plist", "<plist/>");
  EXPECT_EQ(infoPlistBeside(folder / "X.app/Contents/MacOS/x"), "<plist/>");
}

TEST(InfoPlistBeside, IsEmptyWhereThereIsNone) {
  const TempDir folder;
  EXPECT_EQ(infoPlistBeside(folder / "bin/x"), "");
  EXPECT_EQ(infoPlistBeside(""), "");
  std::filesystem::create_directories(folder.path() / "Info.plist");
  EXPECT_EQ(infoPlistBeside(folder / "MacOS/x"), "");
}

TEST(InfoPlistBeside, IsReadWholeWhateverItsLength) {
  const TempDir folder;
  for (const std::size_t length : {1U, 4095U, 4096U, 4097U, 1U << 20}) {
    const std::string text(length, 'x');
    writeFile(folder.path() / "Info.plist", text);
    EXPECT_EQ(infoPlistBeside(folder / "MacOS/x"), text) << length;
  }
}

TEST(InfoPlistBeside, IsEmptyForAFileThatCannotBeOne) {
  const TempDir folder;
  writeFile(folder.path() / "Info.plist", std::string((1 << 20) + 1, ' '));
  EXPECT_EQ(infoPlistBeside(folder / "MacOS/x"), "");
}

}  // namespace
}  // namespace quillory::platform
