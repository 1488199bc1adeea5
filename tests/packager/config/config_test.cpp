#include "packager/config/config.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

#include "tests/packager/loaded_config.h"
#include "tests/packager/rules_of.h"

namespace quillory::pack {
namespace {

using namespace std::string_literals;
using ::testing::ElementsAre;
using testing::findingOf;
using testing::hasRule;
using ::testing::HasSubstr;
using testing::kMinimal;
using testing::load;
using testing::Loaded;
using testing::loadWith;
using testing::rulesOf;

std::string page(const std::string& path) {
  std::ifstream file(QUILLORY_SOURCE_DIR "/" + path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

// The first block of TOML in a page.
std::string tomlIn(const std::string& path) {
  const std::string text = page(path);
  const std::string fence = "```toml\n";
  const std::size_t start = text.find(fence);
  EXPECT_NE(start, std::string::npos) << path;
  return text.substr(start + fence.size(), text.find("```", start + 1) - start - fence.size());
}

TEST(LoadConfig, FillsInWhatFollowsFromTheRest) {
  const Loaded loaded = load(kMinimal);
  ASSERT_TRUE(loaded.accepted) << ::testing::PrintToString(rulesOf(loaded.findings));
  const Config& config = loaded.config;
  EXPECT_EQ(config.application.executable, "Hello");
  EXPECT_EQ(config.application.displayVersion, "3");
  EXPECT_EQ(config.runtime.source, RuntimeSource::kNone);
  EXPECT_EQ(config.runtime.name, "JRE");
  EXPECT_EQ(config.install.type, "perm_user");
  EXPECT_EQ(config.update.urlKind, UpdateUrlKind::kOff);
  EXPECT_EQ(config.update.url, "http://no.invalid/");
  EXPECT_EQ(config.updater.version, 1);
  EXPECT_EQ(config.bundle.compression, 6);
  EXPECT_EQ(config.bundle.output, "dist");
}

TEST(LoadConfig, ReadsEveryKeyOfTheExampleInTheDocumentation) {
  const Loaded loaded = load(tomlIn("docs/packaging.md"));
  ASSERT_TRUE(loaded.accepted) << asText(loaded.findings.at(0));
  EXPECT_TRUE(loaded.findings.empty());
  const Config& config = loaded.config;
  EXPECT_EQ(config.application.name, "Hello Quillory");
  EXPECT_EQ(config.application.version, 12);
  EXPECT_EQ(config.application.displayVersion, "1.2.0");
  EXPECT_EQ(config.application.mainClass, "com.example.Hello");
  EXPECT_THAT(config.application.jars, ElementsAre("hello.jar", "libs/*.jar"));
  ASSERT_EQ(config.application.files.size(), 2u);
  EXPECT_EQ(config.application.files[0].from, "data");
  EXPECT_EQ(config.application.files[0].to, "");
  EXPECT_EQ(config.application.files[1].from, "docs/manual.pdf");
  EXPECT_EQ(config.application.files[1].to, "help/manual.pdf");
  EXPECT_THAT(config.application.arguments, ElementsAre("--greeting"));
  EXPECT_EQ(config.application.identifier, "com.example.hello");
  EXPECT_EQ(config.application.executable, "HelloQuillory");
  EXPECT_EQ(config.application.icon, "icon.png");
  EXPECT_EQ(config.application.splash, "splash.png");
  EXPECT_THAT(config.application.urlSchemes, ElementsAre("hello"));
  ASSERT_EQ(config.documents.size(), 1u);
  EXPECT_EQ(config.documents[0].name, "Hello letter");
  EXPECT_THAT(config.documents[0].extensions, ElementsAre("letter"));
  EXPECT_EQ(config.documents[0].role, DocumentRole::kEditor);
  EXPECT_EQ(config.documents[0].icon, "");
  EXPECT_EQ(config.application.category, "public.app-category.utilities");
  EXPECT_EQ(config.application.copyright, "Example & Co");
  EXPECT_EQ(config.jvm.maximumHeap, 512);
  EXPECT_EQ(config.jvm.initialHeap, 64);
  EXPECT_FALSE(config.jvm.forceSpawn);
  EXPECT_EQ(config.runtime.source, RuntimeSource::kJlink);
  EXPECT_THAT(config.runtime.addModules, ElementsAre("jdk.crypto.ec"));
  EXPECT_EQ(config.install.silentSwitch, "-q");
  EXPECT_EQ(config.install.requiredJava, 8);
  EXPECT_EQ(config.update.urlKind, UpdateUrlKind::kStatic);
  EXPECT_EQ(config.update.url, "https://example.com/updates/");
  EXPECT_TRUE(config.update.hasClient);
  EXPECT_EQ(config.update.mode, UpdateMode::kBackground);
  EXPECT_EQ(config.update.channel, "stable");
  EXPECT_EQ(config.update.reserveKey, "reserve.public.pem");
  EXPECT_EQ(config.update.checkHours, 24);
  EXPECT_EQ(config.update.keepVersions, 2);
  EXPECT_EQ(config.update.release.rollout, "7 days");
  EXPECT_EQ(config.update.release.notes, "notes.md");
  EXPECT_EQ(config.update.release.expiresDays, 90);
  EXPECT_EQ(config.update.release.deltas, 5);
  EXPECT_TRUE(config.application.jarsStored);
  EXPECT_FALSE(config.bundle.isOnline);
  EXPECT_EQ(config.signing.key, "signing.pem");
  EXPECT_EQ(config.parameters, (Parameters{{"channel", "stable"}}));
}

TEST(LoadConfig, TakesPathsOfTheJdkFromTheFolderOfTheFile) {
  const Loaded loaded = load(kMinimal + "[runtime]\njlink = true\njdk = \"jdk\"\n"s +
                             "jmods = \"/jdk-for-macos/jmods\"\n");
  ASSERT_TRUE(loaded.accepted);
  EXPECT_EQ(loaded.config.runtime.jdk, loaded.config.folder + "/jdk");
  EXPECT_EQ(loaded.config.runtime.jmods, "/jdk-for-macos/jmods");
  const Loaded without = load(kMinimal + "[runtime]\njlink = true\n"s);
  EXPECT_EQ(without.config.runtime.jdk, "");
  EXPECT_EQ(without.config.runtime.jmods, "");
}

TEST(LoadConfig, ReadsTheExampleOfTheReadMe) {
  const Loaded loaded = load(tomlIn("README.md"));
  EXPECT_TRUE(loaded.accepted);
  EXPECT_EQ(rulesOf(loaded.findings), std::vector<std::string>{"identifier"});
}

TEST(LoadConfig, TellsRuntimesApart) {
  EXPECT_EQ(loadWith("[runtime]\njlink = true\n").config.runtime.source, RuntimeSource::kJlink);
  EXPECT_EQ(loadWith("").config.signing.salt, Salt::kRandom);
  EXPECT_EQ(loadWith("[signing]\nsalt = \"random\"\n").config.signing.salt, Salt::kRandom);
  EXPECT_EQ(loadWith("[signing]\nsalt = \"derived\"\n").config.signing.salt, Salt::kDerived);
  EXPECT_EQ(loadWith("[runtime]\nmodules = [\"java.base\"]\n").config.runtime.source,
            RuntimeSource::kJlink);
  EXPECT_EQ(loadWith("[runtime]\nfolder = \"jre\"\n").config.runtime.source,
            RuntimeSource::kFolder);
  EXPECT_TRUE(
      hasRule(loadWith("[runtime]\nfolder = \"jre\"\njlink = true\n").findings, "runtime-source"));
}

TEST(LoadConfig, TellsInstallPlacesApart) {
  EXPECT_EQ(loadWith("[install]\nfor = \"all-users\"\n").config.install.type, "perm_all");
  EXPECT_EQ(loadWith("[install]\nfor = \"temporary\"\n").config.install.type, "temporary");
  const Finding finding = findingOf(loadWith("[install]\nfor = \"users\"\n").findings, "choice");
  EXPECT_EQ(finding.what, "install.for is none of \"user\", \"all-users\", \"temporary\"");
  EXPECT_EQ(finding.advice, "did you mean \"user\"?");
}

TEST(LoadConfig, TellsUpdatesApart) {
  const Config dynamic = loadWith("[update]\ndynamic = true\n").config;
  EXPECT_EQ(dynamic.update.urlKind, UpdateUrlKind::kDynamic);
  EXPECT_EQ(dynamic.update.url, "");
  const Config both = loadWith("[update]\ndynamic = true\nurl = \"https://a.example/\"\n").config;
  EXPECT_EQ(both.update.urlKind, UpdateUrlKind::kDynamic);
  EXPECT_EQ(both.update.url, "https://a.example/");
}

TEST(LoadConfig, ReadsWhatInstallationsUpdateThemselvesBy) {
  const Loaded loaded = loadWith(
      "[update]\n"
      "url = \"https://example.com/\"\n"
      "channel = \"beta\"\n"
      "mode = \"at-start\"\n"
      "at-start-seconds = 30\n"
      "check-hours = 6\n"
      "keep-versions = 3\n"
      "mirrors = [\"https://one.example/\", \"https://two.example/\"]\n"
      "reserve-key = \"reserve.public.pem\"\n"
      "next-keys = [\"new.pem\"]\n"
      "minimum-system = \"10.15\"\n"
      "minimum-from = 4\n"
      "stepping-stone = 2\n"
      "critical-below = 3\n"
      "expires-days = 30\n"
      "deltas = 0\n"
      "[signing]\n"
      "next-key = \"new.pem\"\n");
  ASSERT_TRUE(loaded.accepted) << asText(loaded.findings.at(0));
  const UpdateConfig& update = loaded.config.update;
  EXPECT_EQ(update.channel, "beta");
  EXPECT_EQ(update.mode, UpdateMode::kAtStart);
  EXPECT_EQ(update.atStartSeconds, 30);
  EXPECT_EQ(update.checkHours, 6);
  EXPECT_EQ(update.keepVersions, 3);
  EXPECT_THAT(update.mirrors, ElementsAre("https://one.example/", "https://two.example/"));
  EXPECT_THAT(update.nextKeys, ElementsAre("new.pem"));
  EXPECT_EQ(update.release.minimumSystem, "10.15");
  EXPECT_EQ(update.release.minimumFrom, 4);
  EXPECT_EQ(update.release.steppingStone, 2);
  EXPECT_EQ(update.release.criticalBelow, 3);
  EXPECT_EQ(update.release.expiresDays, 30);
  EXPECT_EQ(update.release.deltas, 0);
  EXPECT_EQ(loaded.config.signing.nextKey, "new.pem");
}

// Configurations of before look for nothing, and what they pack stays as it was.
TEST(LoadConfig, HasAClientOnlyWhereAChannelOrAModeIsNamed) {
  const std::string url = "[update]\nurl = \"https://example.com/\"\n";
  EXPECT_FALSE(loadWith(url).config.update.hasClient);
  EXPECT_EQ(loadWith(url).config.application.jarsStored, false);
  EXPECT_TRUE(loadWith(url + "channel = \"stable\"\n").config.update.hasClient);
  EXPECT_TRUE(loadWith(url + "mode = \"manual\"\n").config.update.hasClient);
  EXPECT_EQ(loadWith(url + "mode = \"manual\"\n").config.application.jarsStored, true);
  EXPECT_EQ(loadWith("jars-stored = true\n" + url).config.application.jarsStored, true);
  EXPECT_EQ(
      loadWith("jars-stored = false\n" + url + "mode = \"ask\"\n").config.application.jarsStored,
      false);
}

TEST(LoadConfig, KeepsParametersInTheOrderOfTheFile) {
  EXPECT_EQ(loadWith("[parameters]\nb = \"x\"\na = 7\nc = true\n").config.parameters,
            (Parameters{{"b", "x"}, {"a", "7"}, {"c", "true"}}));
}

TEST(LoadConfig, NamesTheLineAndTheNearestKeyForAnUnknownOne) {
  const Finding finding = findingOf(loadWith("mainclass = \"x\"\n").findings, "unknown-key");
  EXPECT_EQ(asText(finding),
            ":7: error: there is no application.mainclass [unknown-key]\n"
            "  -> did you mean \"main-class\"?");
}

TEST(LoadConfig, ListsTheKnownKeysWhenNoneIsNear) {
  const Finding finding = findingOf(loadWith("[signing]\ncolour = 1\n").findings, "unknown-key");
  EXPECT_EQ(finding.advice, "known here: key next-key salt");
}

TEST(LoadConfig, RefusesUnknownTablesAndKeysOutsideOfTables) {
  EXPECT_EQ(findingOf(loadWith("[updates]\n").findings, "unknown-key").what,
            "there is no table [updates]");
  EXPECT_EQ(findingOf(load("name = \"x\"\n" + std::string(kMinimal)).findings, "unknown-key").what,
            "\"name\" stands outside of every table");
}

TEST(LoadConfig, NamesEveryRequiredKeyThatIsMissing) {
  const Loaded loaded = load("[application]\n");
  EXPECT_EQ(rulesOf(loaded.findings), std::vector<std::string>(4, "missing-key"));
  EXPECT_EQ(loaded.findings[0].what, "application.name is missing");
  EXPECT_EQ(load("").findings.size(), 4u);
}

TEST(LoadConfig, RefusesValuesOfTheWrongKind) {
  const std::pair<const char*, const char*> cases[] = {
      {"copyright = 5\n", "application.copyright is a whole number, not a text in quotes"},
      {"splash-override = \"yes\"\n", "application.splash-override is a text, not true or false"},
      {"arguments = \"-x\"\n", "application.arguments is a text, not a list of texts"},
      {"arguments = [1]\n", "application.arguments is a whole number, not a text in quotes"},
      {"min-splash-ms = 1.5\n",
       "application.min-splash-ms is a number with a fraction, not a whole number"},
      {"files = [7]\n",
       "application.files is a whole number, not a list of names or of { from = "
       "\"...\", to = \"...\" }"},
      {"[parameters]\nx = []\n",
       "parameters.x is a list, not a text, a whole number, or true or false"}};
  for (const auto& [lines, what] : cases) {
    EXPECT_EQ(findingOf(loadWith(lines).findings, "wrong-kind").what, what);
  }
  EXPECT_EQ(findingOf(loadWith("arguments = \"-x\"\n").findings, "wrong-kind").advice,
            "write it as in arguments = [\"...\"]");
  EXPECT_EQ(findingOf(loadWith("splash-override = 1\n").findings, "wrong-kind").advice,
            "write it as in splash-override = true");
  EXPECT_EQ(findingOf(loadWith("[jvm]\nmemory-mb = \"1\"\n").findings, "wrong-kind").advice,
            "write it as in memory-mb = 1");
  EXPECT_EQ(findingOf(load("application = 5\n").findings, "wrong-kind").what,
            "\"application\" is a whole number, not a table");
}

TEST(LoadConfig, NamesWhatIsWrongWithAnEntryOfFiles) {
  const Finding unknown =
      findingOf(loadWith("files = [{ form = \"x\" }]\n").findings, "unknown-key");
  EXPECT_EQ(asText(unknown),
            ":7: error: there is no form in an entry of application.files [unknown-key]\n"
            "  -> did you mean \"from\"?");
  EXPECT_EQ(findingOf(loadWith("files = [{ from = 1 }]\n").findings, "wrong-kind").what,
            "application.files.from is a whole number, not a text in quotes");
  for (const char* lines : {"files = [\"\"]\n", "files = [{ to = \"x\" }]\n"}) {
    EXPECT_EQ(findingOf(loadWith(lines).findings, "missing-key").what,
              "application.files has an entry that names no file");
  }
}

TEST(LoadConfig, RefusesNumbersOutOfRange) {
  EXPECT_EQ(findingOf(loadWith("[bundle]\ncompression = 10\n").findings, "range").what,
            "bundle.compression is 10, not a number from 0 to 9");
  EXPECT_EQ(findingOf(loadWith("[bundle]\ncompression = 10\n").findings, "range").advice,
            "choose one of these, or leave compression out");
  EXPECT_TRUE(hasRule(loadWith("[jvm]\nmemory-mb = -1\n").findings, "range"));
}

TEST(LoadConfig, RefusesVersionsThatAreNoWholeNumbers) {
  for (const char* version : {"\"1.2\"", "1.2", "-1", "\"3\"", "true"}) {
    std::string text = kMinimal;
    text.replace(text.find("version = 3"), 11, std::string("version = ") + version);
    EXPECT_THAT(findingOf(load(text).findings, "version").what,
                HasSubstr("application.version is not a whole number"))
        << version;
  }
  EXPECT_TRUE(hasRule(loadWith("[updater]\nversion = 1.5\n").findings, "version"));
  EXPECT_TRUE(hasRule(loadWith("[runtime]\nversion = \"17.0\"\n").findings, "version"));
}

TEST(LoadConfig, RefusesVersionsThatLeaveNoRoomForLaterOnes) {
  const auto versioned = [](const std::string& version) {
    std::string text = kMinimal;
    return load(text.replace(text.find("version = 3"), 11, "version = " + version));
  };
  EXPECT_TRUE(versioned("1000000000000000000").accepted);
  for (const char* version : {"1000000000000000001", "9223372036854775807"}) {
    EXPECT_THAT(findingOf(versioned(version).findings, "version").what,
                HasSubstr("application.version is larger than 1000000000000000000"))
        << version;
  }
  // One that no 64 bits hold: the library may read the largest number, or refuse it.
  EXPECT_FALSE(versioned("99999999999999999999").accepted);
  const std::string large = "version = 1000000000000000001\n";
  EXPECT_TRUE(hasRule(loadWith("[updater]\n" + large).findings, "version"));
  EXPECT_TRUE(hasRule(loadWith("[runtime]\njlink = true\n" + large).findings, "version"));
}

TEST(LoadConfig, RefusesParametersThatAreTooLargeForNumbers) {
  EXPECT_FALSE(loadWith("[parameters]\nx = 99999999999999999999\n").accepted);
  EXPECT_EQ(findingOf(loadWith("[parameters]\nx = 9223372036854775807\n").findings, "range").advice,
            "write it in quotes");
}

TEST(LoadConfig, TellsWhereTheNotationIsWrong) {
  const Loaded loaded = load("[application]\nname = Hello\n");
  ASSERT_EQ(rulesOf(loaded.findings), std::vector<std::string>{"toml"});
  EXPECT_EQ(loaded.findings[0].place.line, 2u);
  EXPECT_FALSE(loaded.findings[0].what.empty());
  EXPECT_EQ(loaded.findings[0].what.find("[error]"), std::string::npos);
}

TEST(LoadConfig, SurvivesAFileThatIsCutAnywhere) {
  const std::string whole = tomlIn("docs/packaging.md");
  std::size_t cuts = 0, rejected = 0;
  for (std::size_t length = 0; length < whole.size(); length += 13, ++cuts) {
    const Loaded cut = load(whole.substr(0, length));
    EXPECT_EQ(cut.accepted, !hasErrors(cut.findings)) << length;
    rejected += cut.accepted ? 0 : 1;
  }
  EXPECT_GT(cuts, 50u);
  EXPECT_GT(rejected, cuts / 10) << "most cuts leave a shorter configuration";
}

TEST(LoadConfig, ReportsAFileThatIsNotThere) {
  Findings findings;
  EXPECT_THROW(loadConfig("/nonexistent/quillory.toml", findings), PackError);
}

}  // namespace
}  // namespace quillory::pack
