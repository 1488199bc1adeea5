#include "java/jre_inspection.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <string>

#include "support/folder_listing.h"
#include "tests/harness/captured_log.h"
#include "tests/harness/file_size_limit.h"
#include "tests/harness/temp_dir.h"
#include "tests/java/jre_fixture.h"

namespace quillory {
namespace {

using namespace quillory::testing;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

// The version found where `java -version` runs `script`.
std::string versionFrom(const std::string& script) {
  TempDir dir;
  writeScript(dir / "java", script);
  return javaVersionOf(dir / "java");
}

TEST(JavaOf, MakesTheToolExecutableForEveryone) {
  TempDir dir;
  const std::string java = dir / "Contents/Home/bin/java";
  writeFile(java, "java");
  std::filesystem::permissions(java, std::filesystem::perms(0600));
  EXPECT_EQ(javaOf(dir.str()), java);
  EXPECT_EQ(modeOf(java), 0777U);
}

TEST(JavaOf, ReturnsThePathOfAMissingToolWithAnError) {
  CapturedLog log;
  const std::string found = javaOf("/nonexistent");
  EXPECT_EQ(found, "/nonexistent/Contents/Home/bin/java");
  EXPECT_TRUE(log.contains("Error setting java to executable!\n"));
}

TEST(Unpack200Of, PrintsItsWayToStandardOutputOnly) {
  TempDir dir;
  const std::string tool = dir / "Contents/Home/bin/unpack200";
  writeFile(tool, "tool");
  CapturedLog log;
  ::testing::internal::CaptureStdout();
  const std::string found = unpack200Of(dir.str());
  EXPECT_EQ(::testing::internal::GetCapturedStdout(),
            "[Locating UP200] " + dir.str() + "\n[Locating UP200] " + dir.str() +
                "/Contents/Home/bin\n[Locating UP200] Result is " + tool + "\n");
  EXPECT_EQ(found, tool);
  EXPECT_EQ(modeOf(tool), 0777U);
  EXPECT_EQ(log.text(), "");
}

TEST(Unpack200Of, ReturnsThePathOfAMissingToolWithAnError) {
  CapturedLog log;
  const std::string found = unpack200Of("/nonexistent");
  EXPECT_EQ(found, "/nonexistent/Contents/Home/bin/unpack200");
  EXPECT_TRUE(log.contains("Error setting unpack200 to executable!\n"));
}

TEST(JavaVersionOf, TakesTheSecondComponent) {
  static constexpr struct {
    const char* printed;
    const char* expected;
  } kCases[] = {{"1.8.0_202", "8"}, {"1.6.0_65", "6"}, {"1.7.0_80", "7"},
                {"11.0.2", "0"},    {"1.10.0", "10"},  {"1..3", ""}};
  for (const auto& [printed, expected] : kCases) {
    EXPECT_EQ(versionFrom("echo 'java version \"" + std::string(printed) + "\"'"), expected)
        << printed;
  }
}

TEST(JavaVersionOf, LogsEveryStep) {
  TempDir dir;
  writeScript(dir / "java", "echo 'java version \"1.8.0_202\"'");
  CapturedLog log;
  EXPECT_EQ(javaVersionOf(dir / "java"), "8");
  EXPECT_THAT(
      log.messages(),
      ElementsAre("[JavaCheck] Version command result for JRE is java version \"1.8.0_202\"\n",
                  "[JavaCheck] Version command result for JRE, first ver is 8.0_202\"\n",
                  "[JavaCheck] Version command result for JRE, second ver is \n"));
}

TEST(JavaVersionOf, IsZeroForAJavaThatAnswersOnStandardErrorOnly) {
  EXPECT_EQ(versionFrom("echo 'java version \"1.8.0_202\"' 1>&2"), "0");
}

TEST(JavaVersionOf, IsZeroWithoutWhatItLooksFor) {
  static constexpr struct {
    const char* printed;
    const char* message;
  } kCases[] = {{"java 1.8.0", "first quote is null\n"},
                {"java \"18", "first dot is null\n"},
                {"java \"1.8", "second dot is null\n"},
                {"", "first quote is null\n"}};
  for (const auto& [printed, message] : kCases) {
    CapturedLog log;
    EXPECT_EQ(versionFrom("echo '" + std::string(printed) + "'"), "0") << printed;
    EXPECT_TRUE(log.contains("[JavaCheck] Version command result for JRE, " + std::string(message)))
        << printed;
  }
}

TEST(JavaVersionOf, LooksForTheDotsBehindTheFirstQuote) {
  EXPECT_EQ(versionFrom("echo 'v9.9.9 \"1.8.0\"'"), "8");
}

TEST(JavaVersionOf, RunsAPathThatAShellWouldExpand) {
  TempDir dir;
  for (const char* const name : {"$HOME `touch bad`", "a\"b", "a\\b", "with space"}) {
    const std::string java = dir.str() + '/' + name + "/java";
    writeScript(java, "echo 'java version \"1.7.0\"'");
    EXPECT_EQ(javaVersionOf(java), "7") << java;
  }
  EXPECT_FALSE(std::filesystem::exists("bad"));
}

TEST(JavaVersionOf, IsZeroWhenTheCommandCannotBeRun) {
  CapturedLog log;
  EXPECT_EQ(javaVersionOf("/nonexistent/$java"), "0");
  EXPECT_EQ(
      log.text(),
      "[JavaCheck] Version command result for JRE is empty, problem running version check?\n");
}

TEST(MeetsVersionRequirement, ComparesAsNumbers) {
  TempDir dir;
  writeScript(dir / "java8", "echo 'java version \"1.8.0\"'");
  writeScript(dir / "java7", "echo 'java version \"1.7.0_80\"'");
  writeScript(dir / "java10", "echo 'java version \"1.10.0\"'");
  writeScript(dir / "none", "exit 1");
  static constexpr struct {
    const char* java;
    const char* required;
    bool expected;
  } kCases[] = {{"java8", "8", true},  {"java7", "8", false}, {"java8", "7", true},
                {"java10", "9", true}, {"none", "0", true},   {"none", "", true},
                {"none", "-1", true},  {"none", "1", false},  {"java8", "99999999999", false}};
  for (const auto& [java, required, expected] : kCases) {
    EXPECT_EQ(meetsVersionRequirement(dir / java, required), expected)
        << java << " required " << required;
  }
}

TEST(MeetsVersionRequirement, LogsBothSides) {
  TempDir dir;
  writeScript(dir / "java", "echo 'java version \"1.8.0\"'");
  CapturedLog log;
  meetsVersionRequirement(dir / "java", "7");
  EXPECT_EQ(log.messages().back(),
            "[Extractor] Checking JRE version requirements: 8 vs required 7\n");
}

TEST(IsHealthyJre, WantsJavaAndTheClassLibrary) {
  TempDir dir;
  writeJavaHome(dir.str());
  EXPECT_TRUE(isHealthyJre(dir.str()));
  std::filesystem::remove(dir / "lib/rt.jar");
  EXPECT_FALSE(isHealthyJre(dir.str()));
  writeFile(dir / "lib/rt.jar", "x");
  std::filesystem::remove(dir / "bin/java");
  EXPECT_FALSE(isHealthyJre(dir.str()));
}

TEST(HoldsJava, KnowsTheThreePlaces) {
  for (const char* const java :
       {"Contents/Home/bin/java", "Contents/Home/jre/bin/java", "bin/java"}) {
    TempDir dir;
    EXPECT_FALSE(holdsJava(dir.str()));
    writeFile(dir / java, "java");
    EXPECT_TRUE(holdsJava(dir.str())) << java;
  }
}

TEST(HoldsJava, AsksWithoutALogLine) {
  TempDir dir;
  writeFile(dir / "bin/java", "java");
  const CapturedLog log;
  EXPECT_TRUE(holdsJava(dir.str()));
  EXPECT_THAT(log.messages(), IsEmpty());
}

TEST(RegenerateSharedArchive, RunsJavaWithOneArgument) {
  TempDir dir;
  writeScript(dir / "Contents/Home/bin/java", "echo \"$# $1\" > \"$0.said\"; exit 1");
  regenerateSharedArchive(dir.str());
  EXPECT_EQ(readFile(dir / "Contents/Home/bin/java.said"), "1 -Xshare:dump\n");
}

TEST(ReplaceTrustStore, LeavesTheStoreAloneWithoutASource) {
  TempDir dir;
  writeJavaHome(dir / "jre");
  CapturedLog log;
  EXPECT_EQ(replaceTrustStore(dir / "cacerts", dir / "jre"), 0);
  EXPECT_EQ(log.text(), "[Extractor] Override CACerts does not exist.\n");
  EXPECT_EQ(readFile(dir / "jre/lib/security/cacerts"), "the JRE's own");
}

TEST(ReplaceTrustStore, ReplacesTheStore) {
  TempDir dir;
  writeJavaHome(dir / "jre");
  writeFile(dir / "cacerts", "override");
  CapturedLog log;
  EXPECT_EQ(replaceTrustStore(dir / "cacerts", dir / "jre"), 0);
  const std::string target = dir / "jre/lib/security/cacerts";
  EXPECT_EQ(readFile(target), "override");
  EXPECT_THAT(log.text(), HasSubstr("[Extractor] CACerts path " + (dir / "cacerts") +
                                    " exists\n[Extractor] TargetCACerts path is " + target +
                                    "\nFile exists: " + target +
                                    "\n[Extractor] Removing old cacerts file\n"
                                    "[Extractor] Result = 0\n"));
}

TEST(ReplaceTrustStore, MakesAStoreWhereThereIsNone) {
  TempDir dir;
  std::filesystem::create_directories(dir / "jre/lib/security");
  writeFile(dir / "cacerts", "override");
  CapturedLog log;
  EXPECT_EQ(replaceTrustStore(dir / "cacerts", dir / "jre"), 0);
  EXPECT_EQ(readFile(dir / "jre/lib/security/cacerts"), "override");
  EXPECT_FALSE(log.contains("Removing old"));
}

TEST(ReplaceTrustStore, ReportsACopyThatFails) {
  TempDir dir;
  writeFile(dir / "cacerts", "override");
  EXPECT_NE(replaceTrustStore(dir / "cacerts", dir / "no such jre"), 0);
}

TEST(ReplaceTrustStore, KeepsTheOldOneOnAFullDisk) {
  const TempDir dir;
  writeFile(dir / "cacerts", std::string(300'000, 'x'));
  writeFile(dir / "jre/lib/security/cacerts", "the JRE's own");
  {
    const FileSizeLimit limit(200'000);
    EXPECT_EQ(replaceTrustStore(dir / "cacerts", dir / "jre"), 1);
  }
  EXPECT_EQ(readFile(dir / "jre/lib/security/cacerts"), "the JRE's own");
  EXPECT_THAT(namesIn(dir / "jre/lib/security"), ElementsAre("cacerts"));
}

TEST(ReplaceTrustStore, RemovesWhatAKilledStartHasLeft) {
  const TempDir dir;
  writeFile(dir / "cacerts", "override");
  writeFile(dir / "jre/lib/security/.unfinished-Ab12Cd", "hal");
  writeFile(dir / "precious", "kept");
  std::filesystem::create_symlink(dir / "precious", dir / "jre/lib/security/.unfinished-Link00");
  EXPECT_EQ(replaceTrustStore(dir / "cacerts", dir / "jre"), 0);
  EXPECT_EQ(readFile(dir / "jre/lib/security/cacerts"), "override");
  EXPECT_THAT(namesIn(dir / "jre/lib/security"), ElementsAre(".unfinished-Link00", "cacerts"));
  EXPECT_EQ(readFile(dir / "precious"), "kept");
}

TEST(ReplaceTrustStore, SaysWhereTheHomeWillBeWhileItIsOnItsWay) {
  const TempDir dir;
  writeFile(dir / "cacerts", "override");
  writeFile(dir / "staged/lib/security/cacerts", "the JRE's own");
  const CapturedLog log;
  EXPECT_EQ(replaceTrustStore(dir / "cacerts", dir / "jre", dir / "staged"), 0);
  EXPECT_EQ(readFile(dir / "staged/lib/security/cacerts"), "override");
  const std::string target = dir / "jre/lib/security/cacerts";
  EXPECT_EQ(log.text(), "File exists: " + (dir / "cacerts") + "\n[Extractor] CACerts path " +
                            (dir / "cacerts") + " exists\n[Extractor] TargetCACerts path is " +
                            target + "\nFile exists: " + target +
                            "\n[Extractor] Removing old cacerts file\n[Extractor] Result = 0\n"
                            "[Extractor] Copying FILE " +
                            target + "\n");
}

TEST(ReplaceTrustStore, NeverWritesThroughALink) {
  TempDir dir;
  writeFile(dir / "cacerts", "override");
  writeFile(dir / "outside", "mine");
  std::filesystem::create_directories(dir / "jre/lib/security");
  const std::string target = dir / "jre/lib/security/cacerts";
  for (const char* const pointed : {"outside", "not there"}) {
    std::filesystem::remove(target);
    std::filesystem::create_symlink(dir / pointed, target);
    replaceTrustStore(dir / "cacerts", dir / "jre");
    EXPECT_FALSE(std::filesystem::is_symlink(target));
    EXPECT_EQ(readFile(target), "override");
  }
  EXPECT_EQ(readFile(dir / "outside"), "mine");
  EXPECT_FALSE(std::filesystem::exists(dir / "not there"));
}

}  // namespace
}  // namespace quillory
