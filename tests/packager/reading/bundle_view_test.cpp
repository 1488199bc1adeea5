#include "packager/reading/bundle_view.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "formats/markers.h"
#include "tests/harness/page_example.h"
#include "tests/harness/records.h"
#include "tests/harness/temp_dir.h"
#include "tests/packager/rules_of.h"

namespace quillory::pack {
namespace {

namespace fs = std::filesystem;
using testing::findingOf;
using testing::pageExample;
using testing::records;
using testing::rulesOf;
using testing::TempDir;
using testing::writeFile;

using Rules = std::vector<std::string>;

TEST(PlistText, FindsTextsAndUndoesEscapes) {
  const std::string plist =
      "<dict>\n<key>A</key>\n\t<string>x &amp; &lt;y&gt; &quot;&apos;</string><key>B</key><true/>";
  EXPECT_EQ(plistText(plist, "A"), "x & <y> \"'");
  EXPECT_EQ(plistText(plist, "C"), "");
  EXPECT_EQ(plistText("<key>A</key><string>open", "A"), "");
}

TEST(PlistText, UndoesEachEscapeOnce) {
  EXPECT_EQ(plistText("<key>A</key><string>&amp;lt;&amp;amp;&lt;&lt;</string>", "A"),
            "&lt;&amp;<<");
  EXPECT_EQ(plistText("<key>A</key><string></string>", "A"), "");
  EXPECT_EQ(plistText("<key>AB</key><string>no</string><key>A</key><string>yes</string>", "A"),
            "yes");
}

class ReadBundle : public ::testing::Test {
 protected:
  ReadBundle() {
    writeFile(contents_ + "Info.plist", "<key>CFBundleExecutable</key>\n<string>Hello</string>");
    writeFile(contents_ + "MacOS/Hello", "code");
    writeFile(contents_ + "Resources/AppParams.excludefromsigning", params("first"));
    writeFile(contents_ + "Resources/Tail", pageExample("formats/wrapper-tail.md"));
  }

  static std::string params(const std::string& value) {
    return paramsMarker() + records({"1", "which", value});
  }
  BundleView read() {
    findings_.clear();
    return readBundle(dir_ / "Hello.app", findings_);
  }

  TempDir dir_;
  const std::string contents_ = dir_ / "Hello.app/Contents/";
  Findings findings_;
};

TEST_F(ReadBundle, FindsEverythingInItsPlace) {
  const BundleView bundle = read();
  EXPECT_EQ(rulesOf(findings_), Rules{});
  EXPECT_EQ(bundle.folder, dir_ / "Hello.app");
  EXPECT_EQ(bundle.executable, contents_ + "MacOS/Hello");
  EXPECT_EQ(bundle.infoPlist.find("<key>"), 0u);
  ASSERT_TRUE(bundle.params && bundle.tail);
  EXPECT_EQ(*bundle.params->find("which"), "first");
  EXPECT_EQ(bundle.tail->records.appName, "Demo");
  EXPECT_EQ(bundle.tail->file, contents_ + "Resources/Tail");
  EXPECT_FALSE(bundle.tail->inExecutable);
  EXPECT_EQ(bundle.inside("a/b"), contents_ + "a/b");
}

TEST_F(ReadBundle, TakesNoSlashAtTheEndForPartOfTheName) {
  Findings findings;
  EXPECT_EQ(readBundle(dir_ / "Hello.app//", findings).folder, dir_ / "Hello.app");
  EXPECT_EQ(readBundle("/", findings).folder, "/");
}

TEST_F(ReadBundle, TakesTheOnlyFileInMacOSWhereNoneIsNamed) {
  writeFile(contents_ + "Info.plist", "<dict/>");
  EXPECT_EQ(read().executable, contents_ + "MacOS/Hello");
  writeFile(contents_ + "MacOS/Other", "x");
  EXPECT_EQ(read().executable, "");
  EXPECT_EQ(findingOf(findings_, "missing-file").place.file, contents_ + "MacOS");
}

TEST_F(ReadBundle, NamesAnExecutableThatIsMissing) {
  fs::remove(contents_ + "MacOS/Hello");
  EXPECT_TRUE(read().tail) << "the one that is a file";
  ASSERT_EQ(rulesOf(findings_), Rules{"missing-file"});
  EXPECT_EQ(asText(findings_[0]), contents_ +
                                      "MacOS/Hello: error: there is no executable [missing-file]\n"
                                      "  -> make the bundle again");
}

TEST_F(ReadBundle, ReadsTheParametersThatTheLauncherReads) {
  writeFile(contents_ + "Resources/params.lproj/locversion.plist", params("second"));
  EXPECT_EQ(*read().params->find("which"), "first");
  fs::remove(contents_ + "Resources/AppParams.excludefromsigning");
  EXPECT_EQ(*read().params->find("which"), "second");
  fs::remove_all(contents_ + "Resources/params.lproj");
  EXPECT_FALSE(read().params);
  ASSERT_EQ(rulesOf(findings_), Rules{"missing-file"});
  EXPECT_EQ(findings_[0].place.file, contents_ + "Resources/AppParams.excludefromsigning");
}

TEST_F(ReadBundle, SaysThatTheParametersHaveNoMarker) {
  writeFile(contents_ + "Resources/params.lproj/locversion.plist", params("second"));
  writeFile(contents_ + "Resources/AppParams.excludefromsigning", "nothing");
  EXPECT_FALSE(read().params) << "the launcher does not go on to the second";
  EXPECT_EQ(rulesOf(findings_), Rules{"no-marker"});
}

TEST_F(ReadBundle, PrefersTheTailInTheExecutable) {
  writeFile(contents_ + "MacOS/Hello",
            "code" + tailMarker() + records({"Inside", "1", "", "", "", "", "", "", "", "", "D"}));
  const BundleView bundle = read();
  EXPECT_EQ(bundle.tail->records.appName, "Inside");
  EXPECT_TRUE(bundle.tail->inExecutable);
  EXPECT_EQ(bundle.tail->file, contents_ + "MacOS/Hello");
}

TEST_F(ReadBundle, SaysWhatElseIsMissing) {
  fs::remove(contents_ + "Info.plist");
  fs::remove(contents_ + "Resources/Tail");
  const BundleView bundle = read();
  EXPECT_EQ(bundle.infoPlist, "");
  EXPECT_FALSE(bundle.tail);
  ASSERT_EQ(rulesOf(findings_), (Rules{"missing-file", "missing-file"}));
  EXPECT_EQ(findings_[0].place.file, contents_ + "Info.plist");
  EXPECT_EQ(findings_[1].place.file, contents_ + "Resources/Tail");
}

TEST(IsBundle, IsAFolderWithContents) {
  TempDir dir;
  EXPECT_FALSE(isBundle(dir.str()));
  EXPECT_FALSE(isBundle(dir / "missing"));
  writeFile(dir / "file.app/Contents", "a file");
  EXPECT_FALSE(isBundle(dir / "file.app"));
  fs::create_directories(dir / "Hello.app/Contents");
  EXPECT_TRUE(isBundle(dir / "Hello.app"));
}

}  // namespace
}  // namespace quillory::pack
