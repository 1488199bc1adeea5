#include "packager/content/info_plist.h"

#include <gtest/gtest.h>

#include <sstream>

#include "tests/harness/child_process.h"
#include "tests/harness/temp_dir.h"

namespace quillory::pack {
namespace {

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

Config configFor(const std::string& url, UpdateUrlKind kind) {
  Config config;
  config.update.url = url;
  config.update.urlKind = kind;
  return config;
}

TEST(ApplicationInfoPlist, LetsAMacAskAServerWithoutEncryptionThatIsNamedSo) {
  const MacPlist mac =
      macPlistOf(configFor("http://updates.example.com:8080/u/", UpdateUrlKind::kStatic));
  EXPECT_NE(readBack(applicationInfoPlist(sample(), "", mac))
                .find("NSAppTransportSecurity={'NSExceptionDomains': {'updates.example.com': "
                      "{'NSExceptionAllowsInsecureHTTPLoads': True}}}\n"),
            std::string::npos);
  for (const char* url : {"https://example.com/", ""}) {
    const MacPlist none = macPlistOf(configFor(url, UpdateUrlKind::kStatic));
    EXPECT_EQ(readBack(applicationInfoPlist(sample(), "", none)).find("NSAppTransportSecurity"),
              std::string::npos);
  }
}

TEST(ApplicationInfoPlist, LetsAMacAskEveryServerWhereItIsNotKnownYet) {
  for (const char* url : {"", "http://example.com/"}) {
    const MacPlist mac = macPlistOf(configFor(url, UpdateUrlKind::kDynamic));
    EXPECT_NE(readBack(applicationInfoPlist(sample(), "", mac))
                  .find("NSAppTransportSecurity={'NSAllowsArbitraryLoads': True}\n"),
              std::string::npos);
  }
  EXPECT_FALSE(
      macPlistOf(configFor("https://example.com/", UpdateUrlKind::kDynamic)).mayAskAnyHost);
  EXPECT_FALSE(macPlistOf(configFor("", UpdateUrlKind::kOff)).mayAskAnyHost);
}

TEST(ApplicationInfoPlist, StaysLightOnAMacUnlessItFollowsTheSystem) {
  Config config;
  EXPECT_NE(readBack(applicationInfoPlist(sample(), "", macPlistOf(config)))
                .find("NSRequiresAquaSystemAppearance=True\n"),
            std::string::npos);
  config.macos.followsAppearance = true;
  EXPECT_EQ(readBack(applicationInfoPlist(sample(), "", macPlistOf(config)))
                .find("NSRequiresAquaSystemAppearance"),
            std::string::npos);
}

TEST(ApplicationInfoPlist, HasTheKeysThatTheConfigurationAdds) {
  Config config;
  config.macos.plist = {{"NSMicrophoneUsageDescription", "To hear <you>."},
                        {"LSUIElement", "true"}};
  const std::string lines = readBack(applicationInfoPlist(sample(), "", macPlistOf(config)));
  EXPECT_NE(lines.find("NSMicrophoneUsageDescription=To hear <you>.\n"), std::string::npos)
      << lines;
  EXPECT_NE(lines.find("LSUIElement=True\n"), std::string::npos) << lines;
}

TEST(IsKeyOfOurs, IsEveryKeyThatIsWritten) {
  ApplicationConfig app = sample();
  app.urlSchemes = {"hello"};
  app.category = "public.app-category.utilities";
  app.copyright = "Example";
  const MacPlist mac{.isLightOnly = true, .mayAskAnyHost = true};
  const std::string lines = readBack(applicationInfoPlist(app, "a.icns", mac));
  int keys = 0;
  std::istringstream each(lines);
  for (std::string line; std::getline(each, line); ++keys) {
    EXPECT_TRUE(isKeyOfOurs(line.substr(0, line.find('=')))) << line;
  }
  EXPECT_EQ(keys, 17);
  EXPECT_FALSE(isKeyOfOurs("NSMicrophoneUsageDescription"));
}

TEST(RuntimeInfoPlist, IsThatOfABundleWithAnExecutable) {
  const std::string lines = readBack(runtimeInfoPlist("My JRE", "170000900", "libjli.dylib"));
  EXPECT_NE(lines.find("CFBundleExecutable=libjli.dylib\n"), std::string::npos) << lines;
  EXPECT_NE(lines.find("CFBundleIdentifier=local.runtime.MyJRE\n"), std::string::npos);
  EXPECT_NE(lines.find("CFBundlePackageType=BNDL\n"), std::string::npos);
}

TEST(ApplicationInfoPlist, IsAllowedToHaveTextsOfEveryKind) {
  ApplicationConfig app = sample();
  app.urlSchemes = {"a<b>&c"};
  app.copyright = "\xc2\xa9 1\t2\n3\x01\x1f\x7f <4> \"5\" '6'";
  const std::string plist = applicationInfoPlist(app, "");
  EXPECT_NE(plist.find("<string>\xc2\xa9 1\t2\n3\x7f &lt;4&gt; \"5\" '6'</string>"),
            std::string::npos)
      << plist;
  const std::string lines = readBack(plist);
  EXPECT_NE(lines.find("NSHumanReadableCopyright=\xc2\xa9 1\t2\n3\x7f <4> \"5\" '6'\n"),
            std::string::npos)
      << lines;
  EXPECT_NE(lines.find("['a<b>&c']"), std::string::npos) << lines;
}

TEST(RuntimeInfoPlist, HasAllKeysAndNoExecutableWhereThereIsNone) {
  EXPECT_EQ(readBack(runtimeInfoPlist("My <JRE>", "170000900", "")),
            "CFBundleDevelopmentRegion=en\n"
            "CFBundleIdentifier=local.runtime.MyJRE\n"
            "CFBundleInfoDictionaryVersion=6.0\n"
            "CFBundleName=My <JRE>\n"
            "CFBundlePackageType=BNDL\n"
            "CFBundleShortVersionString=170000900\n"
            "CFBundleVersion=170000900\n");
}

TEST(RuntimeInfoPlist, IsAPropertyListInXml) {
  const std::string plist = runtimeInfoPlist("JRE", "1", "");
  EXPECT_EQ(plist.find("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!DOCTYPE plist PUBLIC "), 0u);
  EXPECT_NE(plist.find("<dict>\n\t<key>CFBundleDevelopmentRegion</key>\n\t<string>en</string>\n"),
            std::string::npos);
}

TEST(IsApplicationInfoPlist, TakesWhatIsWrittenForAnyConfiguration) {
  ApplicationConfig application;
  application.name = "A & B <c>";
  application.executable = "AB";
  application.identifier = "com.example.ab";
  application.displayVersion = "1.0 \"one\"";
  application.version = 12;
  EXPECT_TRUE(isApplicationInfoPlist(applicationInfoPlist(application, "")));
  application.category = "public.app-category.games";
  application.copyright = "(c) & others";
  application.urlSchemes = {"a", "b-c"};
  const std::string plist = applicationInfoPlist(application, "AB.icns");
  EXPECT_TRUE(isApplicationInfoPlist(plist));
  for (const MacPlist& mac : {MacPlist{.isLightOnly = true, .insecureHost = "example.com"},
                              MacPlist{.mayAskAnyHost = true}}) {
    EXPECT_TRUE(isApplicationInfoPlist(applicationInfoPlist(application, "AB.icns", mac)));
  }
  EXPECT_FALSE(isApplicationInfoPlist(""));
  EXPECT_FALSE(isApplicationInfoPlist(applicationInfoPlist({}, "")));
  for (std::size_t length = 0; length < plist.size(); length += 13) {
    EXPECT_FALSE(isApplicationInfoPlist(plist.substr(0, length))) << length;
  }
  for (std::size_t at = 0; at <= plist.size(); at += 7) {
    EXPECT_FALSE(isApplicationInfoPlist(plist.substr(0, at) + '<' + plist.substr(at))) << at;
  }
  EXPECT_FALSE(isApplicationInfoPlist(plist + ' '));
}

const std::vector<DocumentConfig> kDocuments = {
    {.name = "A <letter>", .extensions = {"letter", "ltr"}, .icon = "Hello-letter.icns"},
    {.name = "Card", .extensions = {"card"}, .role = DocumentRole::kViewer}};

TEST(ApplicationInfoPlist, ClaimsTheApplicationsOwnKindsOfFiles) {
  const std::string lines = readBack(applicationInfoPlist(sample(), "", {.documents = kDocuments}));
  EXPECT_NE(lines.find("CFBundleDocumentTypes=["
                       "{'CFBundleTypeIconFile': 'Hello-letter.icns', "
                       "'CFBundleTypeName': 'A <letter>', 'CFBundleTypeRole': 'Editor', "
                       "'LSHandlerRank': 'Owner', "
                       "'LSItemContentTypes': ['com.example.hello.letter']}, "
                       "{'CFBundleTypeName': 'Card', 'CFBundleTypeRole': 'Viewer', "
                       "'LSHandlerRank': 'Owner', "
                       "'LSItemContentTypes': ['com.example.hello.card']}]\n"),
            std::string::npos)
      << lines;
  EXPECT_NE(lines.find("UTExportedTypeDeclarations=["
                       "{'UTTypeConformsTo': ['public.data', 'public.content'], "
                       "'UTTypeDescription': 'A <letter>', 'UTTypeIconFile': 'Hello-letter.icns', "
                       "'UTTypeIdentifier': 'com.example.hello.letter', 'UTTypeTagSpecification': "
                       "{'public.filename-extension': ['letter', 'ltr']}}, "),
            std::string::npos)
      << lines;
}

TEST(ApplicationInfoPlist, PrefersWhatTheRuntimeIsFor) {
  EXPECT_NE(readBack(applicationInfoPlist(sample(), "", {.architectures = {"arm64", "x86_64"}}))
                .find("LSArchitecturePriority=['arm64', 'x86_64']\n"),
            std::string::npos);
  EXPECT_EQ(readBack(applicationInfoPlist(sample(), "")).find("LSArchitecturePriority"),
            std::string::npos);
}

TEST(ApplicationInfoPlist, IsKnownAgainWithDocumentsAndArchitectures) {
  ApplicationConfig application = sample();
  application.urlSchemes = {"a"};
  const MacPlist mac = {.documents = kDocuments, .architectures = {"arm64"}};
  const std::string plist = applicationInfoPlist(application, "AB.icns", mac);
  EXPECT_TRUE(isApplicationInfoPlist(plist));
  for (std::size_t at = 0; at < plist.size(); ++at)
    EXPECT_FALSE(isApplicationInfoPlist(plist.substr(0, at) + '<' + plist.substr(at))) << at;
  EXPECT_EQ(documentIconsIn(plist), (std::vector<std::string>{"Hello-letter.icns", ""}));
}

}  // namespace
}  // namespace quillory::pack
