#include "java/for_embedders.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "support/owned.h"
#include "tests/harness/captured_log.h"
#include "tests/harness/temp_dir.h"
#include "tests/java/jre_fixture.h"

// What these functions do is tested with those behind them, and here that they lead there; the
// launches are tested with the flow, in launch_flow_test.cpp and jni_launch_test.cpp.
namespace quillory {
namespace {

using namespace quillory::testing;

TEST(GetJavaExecutable, IsThePathOfJavaUnderBothNames) {
  TempDir dir;
  const std::string java = dir / "Contents/Home/bin/java";
  writeFile(java, "java");
  for (const auto locate : {getJavaExecutable, getJavaCmdlineExecutable}) {
    std::filesystem::permissions(java, std::filesystem::perms(0600));
    const OwnedText found(locate(dir.str().c_str()));
    EXPECT_EQ(found.get(), java);
    EXPECT_EQ(modeOf(java), 0777U);
  }
}

TEST(GetUnpack200Executable, IsThePathOfUnpack200) {
  TempDir dir;
  const std::string tool = dir / "Contents/Home/bin/unpack200";
  writeFile(tool, "tool");
  const OwnedText found(getUnpack200Executable(dir.str().c_str()));
  EXPECT_EQ(found.get(), tool);
  EXPECT_EQ(modeOf(tool), 0777U);
}

TEST(GetJavaVersion, IsTheSecondComponentOrZero) {
  TempDir dir;
  writeScript(dir / "java", "echo 'java version \"1.8.0_202\"'");
  EXPECT_STREQ(OwnedText(getJavaVersion((dir / "java").c_str())).get(), "8");
  EXPECT_STREQ(OwnedText(getJavaVersion("/nonexistent/$java")).get(), "0");
}

TEST(JreMatchesVersionRequirement, ComparesTheVersionOfTheJava) {
  TempDir dir;
  writeScript(dir / "java", "echo 'java version \"1.8.0\"'");
  EXPECT_TRUE(jreMatchesVersionRequirement((dir / "java").c_str(), "8"));
  EXPECT_FALSE(jreMatchesVersionRequirement((dir / "java").c_str(), "9"));
}

TEST(OverrideCACerts, ReplacesTheStoreAndReturnsWhatTheCopyDoes) {
  TempDir dir;
  writeFile(dir / "cacerts", "new");
  writeFile(dir / "jre/lib/security/cacerts", "old");
  EXPECT_EQ(overrideCACerts((dir / "cacerts").c_str(), (dir / "jre").c_str()), 0);
  EXPECT_EQ(readFile(dir / "jre/lib/security/cacerts"), "new");
  EXPECT_NE(overrideCACerts((dir / "cacerts").c_str(), (dir / "no such jre").c_str()), 0);
}

TEST(InitOSXJRE, PreparesTheBundleAndReturnsItsAlias) {
  TempDir dir;
  writeJavaHome(dir / "JRE.plugin/Contents/Home");
  const OwnedText alias(initOSXJRE((dir / "JRE.plugin").c_str()));
  EXPECT_EQ(alias.get(), dir / "JRE");
  EXPECT_TRUE(std::filesystem::exists(dir / "JRE/bin/java"));
  EXPECT_TRUE(std::filesystem::is_symlink(dir / "JRE.plugin/Contents/Home"));
}

TEST(GetJavaExecutable, HandsOutARoomyBlockThatFitsAnyPath) {
  const OwnedText shortPath(getJavaExecutable("/x"));
  for (int i = 30; i < 5000; ++i) ASSERT_EQ(shortPath.get()[i], '\0');
  const std::string folder(6000, 'x');
  const OwnedText longPath(getJavaExecutable(folder.c_str()));
  EXPECT_EQ(longPath.get(), folder + "/Contents/Home/bin/java");
}

TEST(JreMatchesVersionRequirement, IsNeverMetByNull) {
  TempDir dir;
  writeScript(dir / "java", "echo 'java version \"1.8.0\"'");
  CapturedLog log;
  EXPECT_FALSE(jreMatchesVersionRequirement((dir / "java").c_str(), nullptr));
  EXPECT_EQ(log.messages().back(), "[Extractor] Versions for JREs could not be detected (0,1)\n");
}

TEST(CallVerPatchOn, HandsOverAllArgumentsAndLogsTheStatus) {
  TempDir dir;
  writeScript(dir / "verpatch", "printf '%s|' \"$@\" > \"$0.arguments\"; exit 3");
  CapturedLog log;
  callVerPatchOn((dir / "verpatch").c_str(), "/some/App.exe", "My App");
  EXPECT_EQ(readFile(dir / "verpatch.arguments"),
            "/some/App.exe|4.0.0.0|/s|description|My App|/s|ProductName|My App|/pv|4.0.0.0|/s|"
            "LegalCopyright| |/s|Company| |/s|FullVersion|4.0.0.0|");
  EXPECT_EQ(log.messages().back(), "[VerPath] Returned 3\n");
}

TEST(CallVerPatchOn, LogsAToolThatCannotBeStarted) {
  CapturedLog log;
  callVerPatchOn("/nonexistent/verpatch", "file", "name");
  EXPECT_EQ(log.messages().back(), "[VerPath] Returned -1\n");
}

}  // namespace
}  // namespace quillory
