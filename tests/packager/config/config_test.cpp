#include "packager/config/config.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

#include "tests/harness/temp_dir.h"
#include "tests/packager/project_fixture.h"

namespace quillory::pack {
namespace {

using namespace std::string_literals;
using ::testing::ElementsAre;
using testing::findingOf;
using testing::hasRule;
using ::testing::HasSubstr;
using testing::rulesOf;
using testing::TempDir;
using testing::writeFile;

constexpr char kMinimal[] =
    "[application]\n"
    "name = \"Hello\"\n"
    "version = 3\n"
    "main-class = \"com.example.Hello\"\n"
    "jars = [\"hello.jar\"]\n"
    "identifier = \"com.example.hello\"\n";

struct Loaded {
  Config config;
  Findings findings;  // also those of a rejected file
  bool accepted = false;
};

Loaded load(const std::string& text) {
  TempDir dir;
  writeFile(dir / "quillory.toml", text);
  Loaded loaded;
  try {
    loaded.config = loadConfig(dir / "quillory.toml", loaded.findings);
    loaded.accepted = true;
  } catch (const RejectedInput& e) {
    loaded.findings = e.findings();
  }
  for (Finding& finding : loaded.findings) {
    EXPECT_EQ(finding.place.file, dir / "quillory.toml") << finding.what;
    finding.place.file.clear();
  }
  return loaded;
}

// The minimal configuration with more lines behind it.
Loaded loadWith(const std::string& more) { return load(kMinimal + more); }

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
  EXPECT_EQ(config.update.mode, UpdateMode::kOff);
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
  EXPECT_EQ(config.application.category, "public.app-category.utilities");
  EXPECT_EQ(config.application.copyright, "Example & Co");
  EXPECT_EQ(config.jvm.maximumHeap, 512);
  EXPECT_EQ(config.jvm.initialHeap, 64);
  EXPECT_FALSE(config.jvm.forceSpawn);
  EXPECT_EQ(config.runtime.source, RuntimeSource::kJlink);
  EXPECT_THAT(config.runtime.addModules, ElementsAre("jdk.crypto.ec"));
  EXPECT_EQ(config.install.silentSwitch, "-q");
  EXPECT_EQ(config.install.requiredJava, 8);
  EXPECT_EQ(config.update.mode, UpdateMode::kStatic);
  EXPECT_EQ(config.update.url, "https://example.com/updates/");
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
  EXPECT_EQ(dynamic.update.mode, UpdateMode::kDynamic);
  EXPECT_EQ(dynamic.update.url, "");
  const Config both = loadWith("[update]\ndynamic = true\nurl = \"https://a.example/\"\n").config;
  EXPECT_EQ(both.update.mode, UpdateMode::kDynamic);
  EXPECT_EQ(both.update.url, "https://a.example/");
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
  EXPECT_EQ(finding.advice, "known here: key salt");
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

// Lints: each with its reason.

Findings named(const std::string& name) {
  std::string text = kMinimal;
  text.replace(text.find("\"Hello\""), 7, name);
  return load(text).findings;
}

TEST(LintConfig, RefusesNamesThatAreNeverFoundAgain) {
  const Finding finding = findingOf(named("\"My-App\""), "name-dash");
  EXPECT_EQ(finding.place.line, 2u);
  EXPECT_EQ(finding.what,
            "application.name holds a \"-\": the launcher takes what stands between the first two "
            "dashes of a folder's name, so it would never find \"My-App\" again");
  EXPECT_TRUE(hasRule(loadWith("[runtime]\nname = \"J-RE\"\n").findings, "name-dash"));
}

TEST(LintConfig, RefusesNamesThatAreNoFolderNames) {
  EXPECT_TRUE(hasRule(named("\"\""), "name"));
  EXPECT_TRUE(hasRule(named("\"a/b\""), "name"));
  EXPECT_TRUE(hasRule(named("\"a\\nb\""), "name"));
  EXPECT_TRUE(hasRule(named("\"a:b\""), "name-colon"));
  EXPECT_TRUE(hasRule(named("\"Quillory\""), "name-taken"));
  EXPECT_TRUE(hasRule(named("\"JRE\""), "name-taken"));
  EXPECT_TRUE(hasRule(named("\"java\""), "name-taken"));
  EXPECT_TRUE(hasRule(loadWith("[runtime]\nname = \"Quillory\"\n").findings, "name-taken"));
}

TEST(LintConfig, RefusesNamesThatADiskTakesForOne) {
  for (const char* name : {"quillory", "QUILLORY", "jre", "Java", "KeyTool"}) {
    EXPECT_TRUE(hasRule(named('"' + std::string(name) + '"'), "name-taken")) << name;
  }
  EXPECT_TRUE(hasRule(loadWith("[runtime]\nname = \"quilLory\"\n").findings, "name-taken"));
  EXPECT_TRUE(hasRule(loadWith("[runtime]\nname = \"hello\"\n").findings, "name-taken"));
}

TEST(LintConfig, RefusesNamesThatNobodySeesOrCanWrite) {
  for (const char* name :
       {" ", " a", "a ", "a\\u0000b", "a\\u001bb", "a\\tb", "a\\u007f", ".", ".."}) {
    const Findings findings = named('"' + std::string(name) + '"');
    EXPECT_TRUE(hasRule(findings, "name")) << name;
    EXPECT_FALSE(hasRule(findings, "record-limit")) << name;
    EXPECT_TRUE(hasRule(loadWith("executable = \"" + std::string(name) + "\"\n").findings, "name"))
        << name;
  }
}

TEST(LintConfig, RefusesExecutablesThatNoFileCanBeNamedAfter) {
  EXPECT_TRUE(loadWith("executable = \"" + std::string(250, 'e') + "\"\n").accepted);
  EXPECT_EQ(
      findingOf(loadWith("executable = \"" + std::string(300, 'e') + "\"\n").findings, "name").what,
      "application.executable has 300 bytes; with the ending of its icon, 250 fit into a file's "
      "name");
}

TEST(LintConfig, WarnsOfIdentifiersThatMacOSMayNotTake) {
  for (const char* identifier :
       {"com.example.my app", "com.example.my_app", "com.example.\u00e4"}) {
    std::string text = kMinimal;
    text.replace(text.find("com.example.hello"), 17, identifier);
    const Loaded loaded = load(text);
    EXPECT_TRUE(loaded.accepted);
    EXPECT_EQ(findingOf(loaded.findings, "identifier").severity, Severity::kWarning);
  }
  EXPECT_FALSE(hasRule(load(kMinimal).findings, "identifier"));
}

TEST(LintConfig, RefusesNamesThatMakeFolderNamesTooLong) {
  // "Quillory-" + name + "-3-complete.plugin" has 255 bytes at most.
  EXPECT_FALSE(hasRule(named('"' + std::string(228, 'n') + '"'), "record-limit"));
  EXPECT_TRUE(hasRule(named('"' + std::string(229, 'n') + '"'), "record-limit"));
}

TEST(LintConfig, WarnsOfNamesThatShellsDoNotTakeAsTheyAre) {
  EXPECT_EQ(findingOf(named("\"a$b\""), "name-quote").severity, Severity::kWarning);
}

TEST(LintConfig, RefusesTextsThatTheLauncherWouldCut) {
  const std::string longest(1022, 'x');
  EXPECT_TRUE(loadWith("arguments = [\"" + longest + "\"]\n").accepted);
  EXPECT_EQ(
      findingOf(loadWith("arguments = [\"" + longest + "x\"]\n").findings, "record-limit").what,
      "application.arguments has 1023 bytes; the launcher reads up to 1022 and takes the rest "
      "for the next record");
  const std::string url = "https://example.com/" + std::string(4978, 'u');
  EXPECT_TRUE(loadWith("[update]\nurl = \"" + url + "\"\n").accepted);
  EXPECT_TRUE(hasRule(loadWith("[update]\nurl = \"" + url + "u\"\n").findings, "record-limit"));
  EXPECT_TRUE(
      hasRule(loadWith("[install]\nsilent-switch = \"a\\u0000b\"\n").findings, "zero-byte"));
}

TEST(LintConfig, RefusesAFirstHeapThatIsLargerThanTheLargest) {
  EXPECT_EQ(
      asText(findingOf(loadWith("[jvm]\nmemory-mb = 64\ninitial-memory-mb = 65\n").findings,
                       "memory")),
      ":9: error: jvm.initial-memory-mb is 65, more than the 64 of memory-mb: Java refuses to "
      "start so [memory]\n"
      "  -> make it as large as memory-mb or smaller, or leave it out");
  EXPECT_TRUE(loadWith("[jvm]\nmemory-mb = 64\ninitial-memory-mb = 64\n").accepted);
  EXPECT_TRUE(loadWith("[jvm]\ninitial-memory-mb = 65\n").accepted);
}

TEST(LintConfig, RefusesWhatIsNoMainClass) {
  std::string text = kMinimal;
  text.replace(text.find("com.example.Hello"), 17, "com/example/Hello");
  EXPECT_TRUE(hasRule(load(text).findings, "main-class"));
}

TEST(LintConfig, RefusesAnEmptyClassPath) {
  std::string text = kMinimal;
  text.replace(text.find("[\"hello.jar\"]"), 13, "[]");
  EXPECT_TRUE(hasRule(load(text).findings, "no-jars"));
}

TEST(LintConfig, ChecksUpdateUrls) {
  EXPECT_TRUE(loadWith("[update]\nurl = \"https://example.com/\"\n").findings.empty());
  EXPECT_EQ(findingOf(loadWith("[update]\nurl = \"http://example.com/\"\n").findings, "plain-http")
                .severity,
            Severity::kWarning);
  EXPECT_TRUE(hasRule(loadWith("[update]\nurl = \"ftp://example.com/\"\n").findings, "update-url"));
  EXPECT_TRUE(hasRule(loadWith("[update]\nurl = \"D\"\n").findings, "update-url"));
  for (const char* url : {"https://", "http:///x", "https://:80/", "https://x y/",
                          "https://x/\\u0007", "https://x/?a=b", "https://x/#a"}) {
    const Loaded loaded = loadWith("[update]\nurl = \"" + std::string(url) + "\"\n");
    EXPECT_FALSE(loaded.accepted) << url;
    EXPECT_NE(findingOf(loaded.findings, "update-url").advice, "") << url;
  }
  EXPECT_TRUE(loadWith("[update]\nurl = \"https://[::1]:8080/a%20b/\"\n").findings.empty());
}

TEST(LintConfig, WarnsOfADynamicUrlThatIsNotThereYet) {
  const Loaded loaded = loadWith("[update]\ndynamic = true\n");
  EXPECT_TRUE(loaded.accepted);
  EXPECT_EQ(findingOf(loaded.findings, "update-url").severity, Severity::kWarning);
  EXPECT_TRUE(
      loadWith("[update]\ndynamic = true\nurl = \"https://a.example/\"\n").findings.empty());
}

TEST(LintConfig, WarnsWhenThereIsNoRuntimeAndNoPlaceToGetOneFrom) {
  EXPECT_TRUE(hasRule(loadWith("").findings, "no-runtime"));
  EXPECT_FALSE(hasRule(loadWith("[runtime]\njlink = true\n").findings, "no-runtime"));
  EXPECT_FALSE(hasRule(loadWith("[update]\ndynamic = true\n").findings, "no-runtime"));
}

TEST(LintConfig, WarnsOfRuntimeKeysWithoutEffect) {
  for (const char* line : {"jmods = \"x\"", "jdk = \"x\"", "add-modules = [\"java.sql\"]",
                           "jlink-options = [\"-v\"]", "modules = [\"java.base\"]"}) {
    for (const char* other : {"jlink = false\n", "folder = \"jre\"\njlink = false\n"}) {
      const Loaded loaded = loadWith("[runtime]\n" + std::string(other) + line + '\n');
      EXPECT_TRUE(loaded.accepted) << line;
      EXPECT_EQ(findingOf(loaded.findings, "no-effect").severity, Severity::kWarning) << line;
    }
    EXPECT_FALSE(hasRule(loadWith("[runtime]\njlink = true\n" + std::string(line) + '\n').findings,
                         "no-effect"))
        << line;
  }
  EXPECT_TRUE(hasRule(loadWith("[runtime]\nversion = 17\n").findings, "no-effect"));
  EXPECT_FALSE(
      hasRule(loadWith("[runtime]\nfolder = \"jre\"\nversion = 17\n").findings, "no-effect"));
}

TEST(LintConfig, RefusesAnEmptyOutputFolder) {
  EXPECT_EQ(findingOf(loadWith("[bundle]\noutput = \"\"\n").findings, "name").what,
            "bundle.output is empty");
}

TEST(LintConfig, ChecksUrlSchemes) {
  EXPECT_FALSE(hasRule(loadWith("url-schemes = [\"a\", \"b+c.d-1\"]\n").findings, "url-scheme"));
  for (const char* scheme : {"", "1a", "my app", "http://", "a:"}) {
    EXPECT_TRUE(hasRule(loadWith("url-schemes = [\"" + std::string(scheme) + "\"]\n").findings,
                        "url-scheme"))
        << scheme;
  }
}

TEST(LintConfig, RefusesParametersThatOtherKeysWrite) {
  EXPECT_EQ(findingOf(loadWith("[parameters]\njre_name = \"x\"\n").findings, "parameter").advice,
            "use runtime.name");
  EXPECT_TRUE(hasRule(loadWith("[parameters]\nupdate_url = \"x\"\n").findings, "parameter"));
}

TEST(LintConfig, RefusesParametersThatTheLauncherDoesNotTake) {
  for (const char* line :
       {"force_spawn = \"maybe\"", "show_no_ui = \"yes\"", "show_no_ui = 1", "\"\" = \"x\""}) {
    const Loaded loaded = loadWith("[parameters]\n" + std::string(line) + '\n');
    EXPECT_FALSE(loaded.accepted) << line;
    EXPECT_NE(findingOf(loaded.findings, "parameter").advice, "") << line;
  }
  EXPECT_TRUE(loadWith("[parameters]\nforce_spawn = true\nshow_no_ui = \"false\"\n").accepted);
}

TEST(LintConfig, RefusesAParameterThatWouldBeWrittenTwice) {
  EXPECT_EQ(
      findingOf(loadWith("[jvm]\nforce-spawn = true\n[parameters]\nforce_spawn = true\n").findings,
                "parameter")
          .what,
      "parameters.force_spawn is written by jvm.force-spawn as well");
}

TEST(LintConfig, WarnsOfAMissingIdentifier) {
  std::string text = kMinimal;
  text.erase(text.find("identifier"));
  const Loaded loaded = load(text);
  EXPECT_TRUE(hasRule(loaded.findings, "identifier"));
  EXPECT_EQ(loaded.config.application.identifier, "local.Hello");
}

TEST(LintConfig, MakesAnExecutableNameOfLettersAndDigits) {
  std::string text = kMinimal;
  text.replace(text.find("\"Hello\""), 7, "\"Hello \u00e4 World 2\"");
  EXPECT_EQ(load(text).config.application.executable, "HelloWorld2");
  EXPECT_TRUE(hasRule(loadWith("executable = \"a/b\"\n").findings, "name"));
}

}  // namespace
}  // namespace quillory::pack
