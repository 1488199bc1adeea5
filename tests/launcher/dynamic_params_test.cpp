#include "launcher/dynamic_params.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <utility>
#include <vector>

#include "formats/record_stream.h"
#include "java/launch_flow.h"
#include "tests/harness/captured_log.h"
#include "tests/harness/page_example.h"
#include "tests/harness/records.h"
#include "tests/harness/scoped_replace.h"
#include "tests/harness/stream_of.h"
#include "tests/harness/temp_dir.h"
#include "tests/launcher/test_bundle.h"
#include "ui/for_embedders.h"
#include "ui/splash.h"

namespace quillory::testing {
namespace {

using namespace std::string_literals;
using ::testing::ElementsAre;

constexpr char kRule[] = "++++++++++++++++++++++++++++++++++++++++++++++++\n";
constexpr char kEndRule[] = "------------------------------------------------\n";

DynamicParams readPairs(const Pairs& pairs, PropertyBlock* properties = nullptr) {
  const StreamOf stream(paramRecords(pairs));
  PropertyBlock ownProperties;
  return readParamPairs(stream.get(), properties != nullptr ? *properties : ownProperties);
}

TEST(ReadParamPairs, LogsTheCountAndEachPairInAFrame) {
  const CapturedLog log;
  readPairs({{"colour", "red"}, {"empty", ""}});
  EXPECT_THAT(log.messages(), ElementsAre("\n", kRule, "+++ Processing 2 dynamic properties\n",
                                          kRule, "[DynProps] Dynamic Param 0: colour=[red]\n",
                                          "[DynProps] Dynamic Param 1: empty=[]\n", kEndRule,
                                          "--- End: Processing dynamic properties\n\n", kEndRule));
}

TEST(ReadParamPairs, StoresEveryPairAsADynamicProperty) {
  PropertyBlock properties;
  readPairs({{"colour", "red"}, {"show_no_ui", "true"}, {"empty", ""}}, &properties);
  EXPECT_EQ(properties.bytes(),
            "qydyna_colour\0red\0qydyna_show_no_ui\0true\0qydyna_empty\0\x04\0\0"s);
}

TEST(ReadParamPairs, TellsFailuresWhereTheLastPairSaysSo) {
  EXPECT_TRUE(readPairs({{"error_dialog", "true"}}).showsFailures);
  EXPECT_FALSE(readPairs({{"error_dialog", "true"}, {"error_dialog", "no"}}).showsFailures);
  EXPECT_FALSE(readPairs({}).showsFailures);
}

TEST(ReadParamPairs, LeavesEverythingOffWithoutPairs) {
  for (const char* count : {"0", "-3", "", "many"}) {
    SCOPED_TRACE(count);
    const StreamOf stream(records({count, "show_no_ui", "true"}));
    PropertyBlock properties;
    const DynamicParams params = readParamPairs(stream.get(), properties);
    EXPECT_FALSE(params.isSilent);
    EXPECT_FALSE(params.isAutoTest);
    EXPECT_FALSE(params.isHardened);
    EXPECT_FALSE(params.updateUrl.has_value());
    EXPECT_FALSE(params.splashImage.has_value());
    EXPECT_EQ(params.jreName, "");
    EXPECT_EQ(properties.bytes(), "\0\0"s);
  }
}

TEST(ReadParamPairs, EndsWithTheFileWhereTheCountPromisesMore) {
  const StreamOf stream(records({"2000000000", "jre_name", "j", "a", "b"}));
  PropertyBlock properties;
  EXPECT_EQ(readParamPairs(stream.get(), properties).jreName, "j");
  EXPECT_EQ(properties.bytes(), "qydyna_jre_name\0j\0qydyna_a\0b\0\0"s);
}

TEST(ReadParamPairs, TakesWhatIsThereOfAFileCutAnywhere) {
  const std::string whole = paramRecords({{"jre_name", "jre"}, {"show_no_ui", "true"}});
  for (std::size_t length = 0; length <= whole.size(); ++length) {
    const StreamOf stream(whole.substr(0, length));
    PropertyBlock properties;
    const DynamicParams params = readParamPairs(stream.get(), properties);
    EXPECT_TRUE("jre"s.starts_with(params.jreName));
  }
}

// Behind a longer one the rest of the file is read from a wrong place.
TEST(ReadParamPairs, TakesSoManyCharactersOfANameAndAValueAndNoMore) {
  const auto urlBehind = [](std::size_t nameLength, std::size_t valueLength) {
    ::testing::internal::CaptureStdout();
    const DynamicParams params =
        readPairs({{std::string(nameLength, 'n'), std::string(valueLength, 'v')},
                   {"update_url", "http://u"}});
    ::testing::internal::GetCapturedStdout();
    return params.updateUrl;
  };
  EXPECT_EQ(urlBehind(1022, 1), "http://u");
  EXPECT_EQ(urlBehind(1023, 1), std::nullopt);
  EXPECT_EQ(urlBehind(1, 199'998), "http://u");
  EXPECT_EQ(urlBehind(1, 199'999), std::nullopt);
}

TEST(ReadParamPairs, KeepsTheDynamicUpdateUrl) {
  const CapturedLog log;
  EXPECT_EQ(readPairs({{"update_url", "http://localhost/u"}}).updateUrl, "http://localhost/u");
  EXPECT_TRUE(log.contains("[DynProps] Dynamic Update URL: http://localhost/u\n"));
  EXPECT_EQ(readPairs({{"update_url", ""}}).updateUrl, "");
}

TEST(ReadParamPairs, SwitchesAutoTestOnByItsPresenceAlone) {
  EXPECT_TRUE(readPairs({{"wrapper_autotest", "false"}}).isAutoTest);
  EXPECT_TRUE(readPairs({{"wrapper_autotest", ""}}).isAutoTest);
  EXPECT_FALSE(readPairs({{"Wrapper_autotest", "true"}}).isAutoTest);
}

TEST(ReadParamPairs, NeverUnsetsSilence) {
  EXPECT_TRUE(readPairs({{"show_no_ui", "true"}, {"show_no_ui", "false"}}).isSilent);
  EXPECT_FALSE(readPairs({{"show_no_ui", "TRUE"}}).isSilent);
}

TEST(ReadParamPairs, LetsTheLastHardenedDecide) {
  EXPECT_TRUE(readPairs({{"hardened", "false"}, {"hardened", "true"}}).isHardened);
  EXPECT_FALSE(readPairs({{"hardened", "true"}, {"hardened", "yes"}}).isHardened);
}

TEST(ReadParamPairs, LetsTheLastForceSpawnDecide) {
  const ScopedReplace spawn(forceSpawn, false);
  readPairs({{"force_spawn", "false"}, {"force_spawn", "true"}});
  EXPECT_TRUE(forceSpawn);
  readPairs({{"force_spawn", "true"}, {"force_spawn", "yes"}});
  EXPECT_FALSE(forceSpawn);
  forceSpawn = true;
  readPairs({{"colour", "red"}});
  EXPECT_TRUE(forceSpawn);
}

TEST(ReadParamPairs, SetsTheSplashMarginUnlessItIsEmpty) {
  const int before = splash::getSplashBuffer();
  readPairs({{"splash_buffer", "12px"}});
  EXPECT_EQ(splash::getSplashBuffer(), 12);
  readPairs({{"splash_buffer", ""}});
  EXPECT_EQ(splash::getSplashBuffer(), 12);
  readPairs({{"splash_buffer", "99999999999999999999"}});
  EXPECT_EQ(splash::getSplashBuffer(), 2147483647);
  splash::setSplashBuffer(before);
}

TEST(ReadParamPairs, ReplacesTheJreName) {
  const CapturedLog log;
  EXPECT_EQ(readPairs({{"jre_name", "one"}, {"jre_name", "two"}}).jreName, "two");
  EXPECT_TRUE(log.contains("[DynProps] JRE name from dynamic launch properties is two\n"));
}

TEST(ReadParamPairs, DecodesTheSplashImage) {
  const CapturedLog log;
  const DynamicParams params = readPairs({{"splash_image", "TWE="}});
  EXPECT_EQ(params.splashImage, "Ma");
  const auto& lines = log.messages();
  EXPECT_THAT(
      std::vector(lines.begin() + 5, lines.end() - 3),
      ElementsAre("[DynProps] Splash Image is TWE=\n", "[DynProps] Base64 decoding image...\n",
                  "[DynProps] Decode complete [image size is 2]\n"));
}

TEST(ReadParamPairs, KeepsNoImageOfBadBase64) {
  const CapturedLog log;
  EXPECT_FALSE(readPairs({{"splash_image", "TWE"}}).splashImage.has_value());
  EXPECT_TRUE(log.contains("[DynProps] Decode complete [image size is 0]\n"));
  EXPECT_FALSE(readPairs({{"splash_image", "TW?="}}).splashImage.has_value());
  EXPECT_FALSE(
      readPairs({{"splash_image", "TWE="}, {"splash_image", "x"}}).splashImage.has_value());
}

TEST(ReadParamPairs, LogsAValueOf100CharactersWhole) {
  const CapturedLog log;
  const std::string value(100, 'v');
  readPairs({{"long", value}});
  EXPECT_TRUE(log.contains("[DynProps] Dynamic Param 0: long=[" + value + "]\n"));
}

TEST(ReadParamPairs, LogsTheScratchTextInsteadOfALongerValue) {
  const CapturedLog log;
  const std::string image(120, 'A');
  readPairs({{"first", std::string(101, 'v')},
             {"splash_image", image},
             {"second", std::string(101, 'w')},
             {"splash_image", std::string(100, 'B')},
             {"third", std::string(300, 'x')}});
  const std::string startOfA(99, 'A'), startOfB(99, 'B');
  // Empty until a long picture has filled it, even in the picture's own line.
  EXPECT_TRUE(log.contains("[DynProps] Dynamic Param 0: first=[...]\n"));
  EXPECT_TRUE(
      log.contains("[DynProps] Dynamic Param 1: splash_image=[...]\n"
                   "[DynProps] Splash Image is " +
                   startOfA + "...\n"));
  EXPECT_TRUE(log.contains("[DynProps] Dynamic Param 2: second=[" + startOfA + "...]\n"));
  EXPECT_TRUE(log.contains("[DynProps] Splash Image is " + startOfB + "...\n"));
  EXPECT_TRUE(log.contains("[DynProps] Dynamic Param 4: third=[" + startOfB + "...]\n"));
}

TEST(ReadParamPairs, LogsAPictureOf99CharactersWhole) {
  const CapturedLog log;
  readPairs({{"splash_image", std::string(99, 'A')}});
  EXPECT_TRUE(log.contains("[DynProps] Splash Image is " + std::string(99, 'A') + "\n"));
}

TEST(ReadParamPairs, ReadsTheExampleOfTheFormatPage) {
  const StreamOf stream(pageExample("formats/parameters-file.md", 1));
  PropertyBlock properties;
  const DynamicParams params = readParamPairs(stream.get(), properties);
  EXPECT_EQ(params.jreName, "JRE");
  EXPECT_TRUE(params.isSilent);
  EXPECT_TRUE(isAtEnd(stream.get()));
}

TEST(ReadDynamicParams, PrefersTheFileOutsideTheSignature) {
  const TestBundle bundle;
  bundle.writeResource("AppParams.excludefromsigning", paramsFile({{"jre_name", "outside"}}));
  bundle.writeResource("params.lproj/locversion.plist", paramsFile({{"jre_name", "inside"}}));
  PropertyBlock properties;
  EXPECT_EQ(readDynamicParams(bundle.executable(), false, properties)->jreName, "outside");
}

TEST(ReadDynamicParams, FallsBackToTheOtherFile) {
  const TestBundle bundle;
  bundle.writeResource("params.lproj/locversion.plist", paramsFile({{"jre_name", "inside"}}));
  PropertyBlock properties;
  const CapturedLog log;
  EXPECT_EQ(readDynamicParams(bundle.executable(), false, properties)->jreName, "inside");
  EXPECT_TRUE(log.contains("[Extractor] Found Params marker. Extracting now...\n"));
  EXPECT_FALSE(log.contains("elevated run"));
}

TEST(ReadDynamicParams, SaysThatAnElevatedRunOnlyPrepares) {
  const TestBundle bundle;
  bundle.writeResource("AppParams.excludefromsigning", paramsFile({}));
  PropertyBlock properties;
  const CapturedLog log;
  EXPECT_TRUE(readDynamicParams(bundle.executable(), true, properties));
  EXPECT_EQ(log.messages().back(),
            "[Extractor] This is an elevated run purely to prepare an installation. Will not show "
            "UI or launch an app\n");
}

TEST(ReadDynamicParams, AreNoneWithoutAFile) {
  const TestBundle bundle;
  PropertyBlock properties;
  const CapturedLog log;
  EXPECT_FALSE(readDynamicParams(bundle.executable(), false, properties));
  EXPECT_EQ(log.messages().back(),
            "[Extractor] *********************** Failed to extract wrapper params - couldn't open "
            "params file\n");
}

TEST(ReadDynamicParams, AreNoneWithoutAMarker) {
  const TestBundle bundle;
  bundle.writeResource("AppParams.excludefromsigning", paramRecords({{"jre_name", "jre"}}));
  PropertyBlock properties;
  const CapturedLog log;
  EXPECT_FALSE(readDynamicParams(bundle.executable(), false, properties));
  EXPECT_EQ(log.messages().back(), "Could not find marker: Params\n");
}

TEST(OverrideJreName, KeepsTheNameWithoutAFile) {
  const TempDir master;
  const CapturedLog log;
  EXPECT_EQ(overrideJreName(master.str(), "jre"), "jre");
  EXPECT_THAT(log.messages(),
              ElementsAre("[JREOverride] No JRE name override, will continue to use jre\n"));
}

TEST(OverrideJreName, TakesTheNameOfTheFile) {
  const TempDir master;
  writeFile(master / "QYApps/JreNameOverride", records({"other", "not read"}));
  const CapturedLog log;
  EXPECT_EQ(overrideJreName(master.str(), "jre"), "other");
  EXPECT_THAT(log.messages(),
              ElementsAre("[JREOverride] Processing JRE Override file (JreNameOverride)\n",
                          "[JREOverride] JRE name overriden to other\n"));
}

TEST(OverrideJreName, ReadsTheExampleOfTheFormatPage) {
  const TempDir master;
  writeFile(master / "QYApps/JreNameOverride", pageExample("formats/parameters-file.md", 2));
  EXPECT_EQ(overrideJreName(master.str(), "JRE"), "OtherJRE");
}

TEST(OverrideJreName, KeepsTheNameForADash) {
  const TempDir master;
  writeFile(master / "QYApps/JreNameOverride", records({"-"}));
  const CapturedLog log;
  EXPECT_EQ(overrideJreName(master.str(), "jre"), "jre");
  EXPECT_EQ(log.messages().back(), "[JREOverride] Ignoring JRE name -, keeping jre\n");
}

TEST(OverrideJreName, IsEmptiedByAnEmptyRecord) {
  const TempDir master;
  writeFile(master / "QYApps/JreNameOverride", records({""}));
  EXPECT_EQ(overrideJreName(master.str(), "jre"), "");
  writeFile(master / "QYApps/JreNameOverride", "");
  EXPECT_EQ(overrideJreName(master.str(), "jre"), "");
}

TEST(OverrideJreName, IsCutAt499Characters) {
  const TempDir master;
  writeFile(master / "QYApps/JreNameOverride", std::string(600, 'j'));
  EXPECT_EQ(overrideJreName(master.str(), "jre"), std::string(499, 'j'));
}

}  // namespace
}  // namespace quillory::testing
