#include "launcher/wrapper_tail.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/harness/captured_log.h"
#include "tests/harness/page_example.h"
#include "tests/harness/records.h"
#include "tests/harness/stream_of.h"
#include "tests/launcher/test_bundle.h"

namespace quillory::testing {
namespace {

using namespace std::string_literals;
using ::testing::ElementsAre;
using ::testing::MatchesRegex;

/// Public half of an RSA key of 1536 bits, in DER, as openssl wrote it.
constexpr char kPublicKeyHex[] =
    "3081df300d06092a864886f70d01010105000381cd003081c90281c100f587bf3510e1de6e8f9370"
    "a810b11b8c3a1007b30f31b36a53dee5a8a8989bc965a1ce33958da62b9cb8edcd24e9227fa8149c"
    "12f345c80b52823b287aa1bc5f68e2d3c9084b0aef9f09554ece87c4a4eae82cee9dddf8e92fbb9f"
    "69708dc560dc85130386764122a150a407a13627f1bb5585ff7ba6f1afb907eb2d875458b221cbb2"
    "cc24fd028fa1a3f5b6fc9d76463f78161191288cab01d1e82e19ead026396fc07f39e5ee955170a7"
    "7f9536a658dee83dcc3876eed2198f3fecb396195b0203010001";

std::string rest(std::FILE* stream) {
  std::string bytes;
  for (int c = std::fgetc(stream); c != EOF; c = std::fgetc(stream))
    bytes.push_back(static_cast<char>(c));
  return bytes;
}

TEST(OpenWrapperTail, PrefersTheTailInsideTheExecutable) {
  const TestBundle bundle("machine code" + tailMarker() + "inside");
  bundle.writeResource("Tail", "beside");
  const CapturedLog log;
  EXPECT_EQ(rest(openWrapperTail(bundle.executable()).get()), "inside");
  EXPECT_EQ(log.messages().front(), "\n");
  EXPECT_TRUE(log.contains("+++ Start: Extracting wrapper tail\n"));
  EXPECT_EQ(log.messages().back(), "[Extractor] Found tail marker\n");
}

TEST(OpenWrapperTail, FallsBackToTheFileBesideItWithoutLookingForAMarker) {
  const TestBundle bundle;
  bundle.writeResource("Tail", "beside" + tailMarker() + "behind");
  const Executable exe = bundle.executable();
  const CapturedLog log;
  EXPECT_EQ(rest(openWrapperTail(exe).get()), "beside" + tailMarker() + "behind");
  EXPECT_TRUE(log.contains("Could not find marker: Tail\n[Extractor] The executable dir is " +
                           exe.folder + "\n[Extractor] No tail found. Trying " + exe.folder +
                           "/../Resources/Tail\n"));
}

TEST(OpenWrapperTail, OpensNothingWithoutAnExecutable) {
  Executable exe;
  exe.pathAsPassed = "/nonexistent/launcher";
  const CapturedLog log;
  EXPECT_EQ(openWrapperTail(exe), nullptr);
  EXPECT_EQ(log.messages().back(),
            "[Extractor] ************************* Failed to extract wrapper tail - couldn't open "
            "file /nonexistent/launcher\n");
}

TEST(OpenWrapperTail, OpensNothingWithoutAnyTail) {
  const TestBundle bundle;
  const CapturedLog log;
  EXPECT_EQ(openWrapperTail(bundle.executable()), nullptr);
  EXPECT_EQ(log.messages().back(),
            "[Extractor] ************************* Failed to extract wrapper tail - couldn't open "
            "file " +
                bundle.executable().folder + "/../Resources/Tail\n");
}

TEST(ReadTailRecords, TakesElevenRecordsInTheirOrder) {
  const StreamOf stream(
      records({"app", "3", "17", "7", "1500", "abcd", "1", "perm_all", "-s", "8", "http://u"}) +
      "entries");
  const CapturedLog log;
  const TailRecords tail = readTailRecords(stream.get());
  EXPECT_EQ(tail.appName, "app");
  EXPECT_EQ(tail.appVersion, "3");
  EXPECT_EQ(tail.jreVersion, "17");
  EXPECT_EQ(tail.guVersion, "7");
  EXPECT_EQ(tail.minSplashMs, "1500");
  EXPECT_EQ(tail.signaturePublicKey, "abcd");
  EXPECT_EQ(tail.canOverrideSplash, "1");
  EXPECT_EQ(tail.installType, "perm_all");
  EXPECT_EQ(tail.silentParameter, "-s");
  EXPECT_EQ(tail.requiredJavaVersion, "8");
  EXPECT_EQ(tail.updateUrl, "http://u");
  EXPECT_EQ(rest(stream.get()), "entries");
  EXPECT_THAT(log.messages(), ElementsAre("[Extractor] Required Java version 8\n"));
}

TEST(ReadTailRecords, SaysNothingWithoutARequiredVersion) {
  const StreamOf stream(TailText{}.bytes());
  const CapturedLog log;
  readTailRecords(stream.get());
  EXPECT_TRUE(log.messages().empty());
}

TEST(ReadTailRecords, TakesLongKeysAndUrls) {
  TailText text;
  text.publicKey = std::string(8190, 'a');
  text.updateUrl = std::string(4998, 'u');
  const StreamOf stream(text.bytes());
  const TailRecords tail = readTailRecords(stream.get());
  EXPECT_EQ(tail.signaturePublicKey, text.publicKey);
  EXPECT_EQ(tail.updateUrl, text.updateUrl);
}

// A value that fills its record is cut there, and the rest of the tail is read from a wrong place.
TEST(ReadTailRecords, TakesSoManyCharactersOfEachRecordAndNoMore) {
  constexpr std::size_t kLongest[] = {1022, 1022, 1022, 1022, 1022, 8190,
                                      1022, 1022, 1022, 1022, 4998};
  for (std::size_t at = 0; at < 10; ++at) {
    SCOPED_TRACE(at);
    for (const bool isTooLong : {false, true}) {
      std::string bytes;
      for (std::size_t i = 0; i < at; ++i) bytes += '\0';
      const std::string value(kLongest[at] + (isTooLong ? 1 : 0), 'v');
      const StreamOf stream(bytes + value + '\0' + "next" + '\0');
      ::testing::internal::CaptureStdout();
      const TailRecords tail = readTailRecords(stream.get());
      const std::string printed = ::testing::internal::GetCapturedStdout();
      EXPECT_EQ(tail.*kTailRecords[at].text, value);
      EXPECT_EQ(tail.*kTailRecords[at + 1].text, isTooLong ? "" : "next");
      EXPECT_EQ(printed.find("STRING TOO LONG") != std::string::npos, isTooLong);
    }
  }
  for (const bool isTooLong : {false, true}) {
    const std::string url(kLongest[10] + (isTooLong ? 1 : 0), 'u');
    const StreamOf stream(std::string(10, '\0') + url + '\0' + "entries");
    ::testing::internal::CaptureStdout();
    EXPECT_EQ(readTailRecords(stream.get()).updateUrl, url);
    ::testing::internal::GetCapturedStdout();
    EXPECT_EQ(std::fgetc(stream.get()), isTooLong ? '\0' : 'e');
  }
}

TEST(ReadTailRecords, TakesMissingRecordsForEmpty) {
  const std::string whole =
      records({"app", "3", "17", "7", "1500", "abcd", "1", "perm_all", "-s", "8", "http://u"});
  for (std::size_t length = 0; length <= whole.size(); ++length) {
    SCOPED_TRACE(length);
    const StreamOf stream(whole.substr(0, length));
    const TailRecords tail = readTailRecords(stream.get());
    EXPECT_TRUE("app"s.starts_with(tail.appName));
    EXPECT_TRUE("http://u"s.starts_with(tail.updateUrl));
    EXPECT_EQ(tail.hasSignaturePublicKey, length > 16);
  }
}

TEST(ReadTailRecords, ReadsTheExampleOfTheFormatPage) {
  const StreamOf stream(pageExample("formats/wrapper-tail.md"));
  const TailRecords tail = readTailRecords(stream.get());
  EXPECT_EQ(tail.appName, "Demo");
  EXPECT_EQ(tail.appVersion, "3");
  EXPECT_EQ(tail.jreVersion, "");
  EXPECT_EQ(tail.guVersion, "7");
  EXPECT_EQ(tail.minSplashMs, "1500");
  EXPECT_EQ(tail.signaturePublicKey, "");
  EXPECT_EQ(tail.canOverrideSplash, "1");
  EXPECT_EQ(tail.installType, "perm_user");
  EXPECT_EQ(tail.silentParameter, "-quiet");
  EXPECT_EQ(tail.requiredJavaVersion, "8");
  EXPECT_EQ(tail.updateUrl, "D");
  EXPECT_EQ(rest(stream.get()), fileEntry("lzma64", "#!"));
}

TEST(HasUsableNames, IsTrueForOrdinaryNames) {
  TailRecords tail;
  tail.appName = "My App";
  tail.appVersion = "3";
  tail.guVersion = "7";
  const CapturedLog log;
  EXPECT_TRUE(hasUsableNames(tail));
  EXPECT_EQ(log.text(), "");
}

TEST(HasUsableNames, IsFalseForANameThatLeadsElsewhereAndSaysWhich) {
  TailRecords name, version, updater;
  name.appName = "../../x";
  version.appVersion = "1/../2";
  updater.guVersion = "/7";
  const std::pair<TailRecords, std::string> kCases[] = {
      {name, "The App Name '../../x' with version ''"},
      {version, "The App Name '' with version '1/../2'"},
      {updater, "The updater 'Quillory' with version '/7'"}};
  for (const auto& [tail, what] : kCases) {
    const CapturedLog log;
    EXPECT_FALSE(hasUsableNames(tail));
    EXPECT_TRUE(log.contains("[Extractor] " + what + " cannot be part of a folder name\n"));
  }
}

/// What a start logs of its URL, from choice to final slash.
std::vector<std::string> logged(const UpdateUrl& url) {
  const CapturedLog log;
  logUpdateUrlChoice(url);
  logUpdateUrlInForce(url);
  return log.messages();
}

TEST(LogUpdateUrl, ShowsAStaticUrlBeforeAndWithItsSlash) {
  EXPECT_THAT(logged({"http://host/x", "http://other"}),
              ElementsAre("[Extractor] Will use Static Update URL: http://host/x\n",
                          "[Extractor] Update URL is currently 'http://host/x'\n",
                          "[Extractor] Update URL is now 'http://host/x/'\n"));
}

TEST(LogUpdateUrl, ShowsADynamicUrl) {
  EXPECT_THAT(logged({"D", "http://dyn"}),
              ElementsAre("[Extractor] Will use Dynamic Update URL: http://dyn\n",
                          "[Extractor] Update URL is currently 'http://dyn'\n",
                          "[Extractor] Update URL is now 'http://dyn/'\n"));
}

TEST(LogUpdateUrl, ShowsNoneForDWithoutAParameter) {
  EXPECT_THAT(logged({"D", std::nullopt}),
              ElementsAre("[Extractor] Will use Dynamic Update URL: \n",
                          "[Extractor] Update URL is currently ''\n",
                          "[Extractor] Update URL is now ''\n"));
}

TEST(AddTailProperties, AddsThemInTheOrderThatJavaExpects) {
  const StreamOf stream(
      records({"app", "3", "17", "7", "1500", "abcd", "1", "perm_all", "-s", "8", "D"}));
  const TailRecords tail = readTailRecords(stream.get());
  PropertyBlock properties;
  const CapturedLog log;
  addTailProperties(tail, false, properties);
  EXPECT_EQ(properties.bytes(),
            "qystat_update_url\0D\0qystat_install_type\0perm_all\0qystat_min_splash_ms\0"
            "1500\0"
            "qystat_qysig_public_key\0abcd\0qystat_can_override_splash\0"
            "1\0qystat_app_name\0app\0"
            "qystat_wrapper_app_version\0"
            "3\0qystat_wrapper_gu_version\0"
            "7\0"
            "qystat_silent_parameter\0-s\0qystat_java_version\0"
            "8\0\0"s);
  EXPECT_THAT(log.messages(), ElementsAre("[Extractor] Setting up static properties\n"));
}

TEST(AddTailProperties, SaysLastThatASilentRunShowsNothing) {
  PropertyBlock properties;
  addTailProperties({}, true, properties);
  EXPECT_TRUE(
      properties.bytes().ends_with("qystat_java_version\0\x04\0qystat_show_no_ui\0true\0\0"s));
}

/// A tail with this key record; none: it ends before.
TailRecords withKey(const std::optional<std::string>& hex) {
  TailRecords tail;
  tail.signaturePublicKey = hex.value_or("");
  tail.hasSignaturePublicKey = hex.has_value();
  return tail;
}

TEST(LoadSignatureKey, IsNoneForAnEmptyOrMissingRecord) {
  const CapturedLog log;
  EXPECT_EQ(loadSignatureKey(withKey(std::nullopt)), nullptr);
  EXPECT_EQ(loadSignatureKey(withKey("")), nullptr);
  EXPECT_THAT(log.messages(), ElementsAre("[Extractor] Public key empty (no public key)\n",
                                          "[Extractor] Public key length 0 (no public key)\n"));
}

TEST(LoadSignatureKey, LoadsAPublicKey) {
  const CapturedLog log;
  Rsa_key* key = loadSignatureKey(withKey(kPublicKeyHex));
  ASSERT_NE(key, nullptr);
  EXPECT_THAT(log.messages(), ElementsAre("[Extractor] Processed public key of length 226\n",
                                          MatchesRegex("\\[Extractor\\] Public Key: [0-9A-F]+\n")));
  freePublicKey(key);
}

TEST(LoadSignatureKey, IsNoneForAKeyThatCannotBeRead) {
  const CapturedLog log;
  EXPECT_EQ(loadSignatureKey(withKey("3003020101")), nullptr);
  EXPECT_EQ(loadSignatureKey(withKey("not hexadecimal")), nullptr);
  EXPECT_EQ(loadSignatureKey(withKey("a")), nullptr);
  EXPECT_TRUE(
      log.contains("[Extractor] Processed public key of length 5\n"
                   "[Extractor] Public Key: 00000000\n"));
}

TEST(LoadSignatureKey, SurvivesAKeyCutAnywhere) {
  const std::string hex = kPublicKeyHex;
  for (std::size_t length = 0; length < hex.size() - 20; length += 7)
    EXPECT_EQ(loadSignatureKey(withKey(hex.substr(0, length))), nullptr) << length;
}

}  // namespace
}  // namespace quillory::testing
