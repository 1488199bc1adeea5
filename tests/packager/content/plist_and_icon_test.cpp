#include <gtest/gtest.h>

#include "packager/content/icns.h"
#include "packager/content/info_plist.h"
#include "packager/content/stub_jar.h"
#include "packager/report/findings.h"
#include "tests/harness/child_process.h"
#include "tests/harness/temp_dir.h"

namespace quillory::pack {
namespace {

using namespace std::string_literals;
using testing::ChildResult;
using testing::runChild;
using testing::TempDir;
using testing::writeFile;

// What another reader of property lists makes of it, as sorted "key=value" lines.
std::string readBack(const std::string& plist) {
  TempDir dir;
  writeFile(dir / "Info.plist", plist);
  const ChildResult result =
      runChild({"/usr/bin/python3", "-c",
                "import plistlib, sys\n"
                "for key, value in sorted(plistlib.load(open(sys.argv[1], 'rb')).items()):\n"
                "  print('%s=%s' % (key, value))",
                dir / "Info.plist"});
  EXPECT_EQ(result.exitStatus, 0) << result.err;
  return result.out;
}

ApplicationConfig sample() {
  ApplicationConfig app;
  app.name = "Hello & <You>";
  app.version = 12;
  app.displayVersion = "1.2";
  app.identifier = "com.example.hello";
  app.executable = "Hello";
  return app;
}

TEST(ApplicationInfoPlist, IsAPropertyListWithTheKeysThatBundlesNeed) {
  EXPECT_EQ(readBack(applicationInfoPlist(sample(), "Hello.icns")),
            "CFBundleDevelopmentRegion=en\n"
            "CFBundleExecutable=Hello\n"
            "CFBundleIconFile=Hello.icns\n"
            "CFBundleIdentifier=com.example.hello\n"
            "CFBundleInfoDictionaryVersion=6.0\n"
            "CFBundleName=Hello & <You>\n"
            "CFBundlePackageType=APPL\n"
            "CFBundleShortVersionString=1.2\n"
            "CFBundleVersion=12\n"
            "LSMinimumSystemVersion=11.0\n"
            "NSHighResolutionCapable=True\n"
            "NSPrincipalClass=NSApplication\n");
}

TEST(ApplicationInfoPlist, HasUrlTypesCategoryAndCopyrightWhereTheyAreGiven) {
  ApplicationConfig app = sample();
  app.urlSchemes = {"hello", "hello+more"};
  app.category = "public.app-category.utilities";
  app.copyright = "Example";
  const std::string lines = readBack(applicationInfoPlist(app, ""));
  EXPECT_NE(lines.find("CFBundleURLTypes=[{'CFBundleURLName': 'com.example.hello', "
                       "'CFBundleURLSchemes': ['hello', 'hello+more']}]\n"),
            std::string::npos)
      << lines;
  EXPECT_NE(lines.find("LSApplicationCategoryType=public.app-category.utilities\n"),
            std::string::npos);
  EXPECT_NE(lines.find("NSHumanReadableCopyright=Example\n"), std::string::npos);
  EXPECT_EQ(lines.find("CFBundleIconFile"), std::string::npos);
}

TEST(RuntimeInfoPlist, IsThatOfABundleWithAnExecutable) {
  const std::string lines = readBack(runtimeInfoPlist("My JRE", "170000900", "libjli.dylib"));
  EXPECT_NE(lines.find("CFBundleExecutable=libjli.dylib\n"), std::string::npos) << lines;
  EXPECT_NE(lines.find("CFBundleIdentifier=local.runtime.MyJRE\n"), std::string::npos);
  EXPECT_NE(lines.find("CFBundlePackageType=BNDL\n"), std::string::npos);
}

std::string png(char width, char height) {
  return "\x89PNG\r\n\x1a\n\0\0\0\x0dIHDR\0\0"s + width + '\0' + "\0\0"s + height + '\0' + "rest";
}

TEST(IcnsFrom, KeepsAnIcon) {
  TempDir dir;
  const std::string icon = "icns\0\0\0\x0cmore"s;
  writeFile(dir / "a.icns", icon);
  EXPECT_EQ(icnsFrom(dir / "a.icns"), icon);
}

TEST(IcnsFrom, PutsAPictureIntoAContainer) {
  TempDir dir;
  const std::string picture = png('\2', '\2');  // 512 pixels
  ASSERT_EQ(picture.size(), 28u);
  writeFile(dir / "a.png", picture);
  EXPECT_EQ(icnsFrom(dir / "a.png"),
            "icns\0\0\0\x2c"s
            "ic09\0\0\0\x24"s +
                picture);
}

TEST(IcnsFrom, RefusesOtherSizes) {
  TempDir dir;
  for (const std::string& picture : {png('\2', '\1'), png('\3', '\3'), std::string("\x89PNG")}) {
    writeFile(dir / "a.png", picture);
    EXPECT_THROW(icnsFrom(dir / "a.png"), PackError);
  }
}

TEST(FlawOfIcon, IsAnIconFileThatIsShorterThanItSays) {
  const std::string flaw = "is an icns file that is cut short or damaged";
  EXPECT_EQ(flawOfIcon("icns\0\0\0\x0cmore"s), "");
  EXPECT_EQ(flawOfIcon("icns\0\0\0\x0cmor"s), flaw);
  EXPECT_EQ(flawOfIcon("icns\0\0\0\x08more"s), flaw);
  for (std::size_t length = 4; length < 9; ++length) {
    EXPECT_EQ(flawOfIcon("icns\0\0\0\x0c"s.substr(0, length)), flaw) << length;
  }
  EXPECT_EQ(flawOfIcon("icn"), "is neither an icns nor a PNG picture");
  EXPECT_EQ(flawOfIcon(""), "is neither an icns nor a PNG picture");
}

TEST(FlawOfIcon, IsASizeThatIconsDoNotHave) {
  EXPECT_EQ(flawOfIcon(png('\1', '\1')), "");
  EXPECT_EQ(flawOfIcon(png('\2', '\1')),
            "is a picture of 512 by 256 pixels: those of icons are square, of 64, 128, 256, 512 or "
            "1024");
}

TEST(FlawOfPicture, IsADamagedHeader) {
  const std::string whole = png('\3', '\1').substr(0, 24);
  EXPECT_EQ(flawOfPicture(whole), "");
  for (std::size_t length = 0; length < whole.size(); ++length) {
    EXPECT_EQ(flawOfPicture(whole.substr(0, length)),
              length < 8 ? "is no PNG picture" : "is a PNG picture that is cut short or damaged")
        << length;
  }
  for (std::size_t at = 0; at < 16; ++at) {
    std::string changed = whole;
    changed[at] = static_cast<char>(changed[at] ^ 1);
    EXPECT_NE(flawOfPicture(changed), "") << at;
  }
  EXPECT_EQ(flawOfPicture(png('\0', '\1')), "is a PNG picture without a single pixel");
  EXPECT_EQ(flawOfPicture(png('\1', '\0')), "is a PNG picture without a single pixel");
}

TEST(StubRuntimeJar, IsAJarForOthersAndAlwaysTheSame) {
  TempDir dir;
  writeFile(dir / "rt.jar", stubRuntimeJar());
  const ChildResult listing = runChild({"jar", "--list", "--file", dir / "rt.jar"});
  EXPECT_EQ(listing.exitStatus, 0) << listing.err;
  EXPECT_EQ(listing.out, "META-INF/MANIFEST.MF\n");
  const ChildResult test = runChild({"/usr/bin/python3", "-m", "zipfile", "-t", dir / "rt.jar"});
  EXPECT_EQ(test.out, "Done testing\n") << test.err;
  EXPECT_EQ(stubRuntimeJar(), stubRuntimeJar());
  EXPECT_LT(stubRuntimeJar().size(), 400u);
}

}  // namespace
}  // namespace quillory::pack
