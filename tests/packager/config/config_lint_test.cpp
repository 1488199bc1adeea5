#include "packager/config/config_lint.h"

#include <gtest/gtest.h>

#include "tests/packager/loaded_config.h"
#include "tests/packager/rules_of.h"

namespace quillory::pack {
namespace {

using testing::findingOf;
using testing::hasRule;
using testing::kMinimal;
using testing::load;
using testing::Loaded;
using testing::loadWith;

// Lints: each with its reason.

TEST(LintConfig, WantsTheJarsOfARootInIt) {
  for (const char* jar : {"/usr/share/a.jar", "../a.jar", "lib/../../a.jar"}) {
    std::string text = kMinimal;
    text.replace(text.find("\"hello.jar\""), 11, '"' + std::string(jar) + '"');
    const Finding finding = findingOf(load(text + "root = \"tree\"\n").findings, "root");
    EXPECT_EQ(finding.what,
              "application.jars has " + std::string(jar) + ", which is not in application.root");
    EXPECT_EQ(finding.place.line, 5u);
    EXPECT_FALSE(hasRule(load(text).findings, "root"));
  }
  std::string text = kMinimal;
  text.replace(text.find("\"hello.jar\""), 11, "\"a:b/c.jar\"");
  EXPECT_TRUE(hasRule(load(text + "root = \"tree\"\n").findings, "name-colon"));
}

TEST(LintConfig, SaysThatARootHasNoLayout) {
  EXPECT_EQ(
      findingOf(loadWith("root = \"tree\"\nlayout = \"beside\"\n").findings, "no-effect").what,
      "application.layout has no effect here: what lies in application.root is packed as it "
      "lies");
  EXPECT_FALSE(hasRule(loadWith("layout = \"beside\"\n").findings, "no-effect"));
}

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
  // "Quillory-" + name + "-3-complete" has 255 bytes at most.
  EXPECT_FALSE(hasRule(named('"' + std::string(235, 'n') + '"'), "record-limit"));
  EXPECT_TRUE(hasRule(named('"' + std::string(236, 'n') + '"'), "record-limit"));
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
  for (const char* key : {"main-class", "compatibility-class"}) {
    const std::string updater = std::string("[updater]\n") + key + " = \"" + longest;
    EXPECT_TRUE(loadWith(updater + "\"\n").accepted) << key;
    EXPECT_TRUE(hasRule(loadWith(updater + "x\"\n").findings, "record-limit")) << key;
  }
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

TEST(LintConfig, AModuleIsNamedWithTheClassInIt) {
  const auto with = [](const std::string& line) {
    std::string text = kMinimal;
    const std::string before = "main-class = \"com.example.Hello\"";
    return load(text.replace(text.find(before), before.size(), line));
  };
  const Loaded loaded = with("module = \"com.example/com.example.Hello\"");
  ASSERT_TRUE(loaded.accepted);
  EXPECT_EQ(loaded.config.application.module, "com.example");
  EXPECT_EQ(loaded.config.application.mainClass, "com.example.Hello");
  for (const char* wrong : {"com.example", "/a.B", "m/", "m/Main", ""}) {
    EXPECT_EQ(
        asText(findingOf(with("module = \"" + std::string(wrong) + '"').findings, "main-class")),
        ":4: error: application.module is not the name of a module and of a class in it "
        "[main-class]\n"
        "  -> write it as for java -m: module = \"com.example/com.example.Main\"")
        << wrong;
  }
  EXPECT_TRUE(hasRule(with("main-class = \"a.B\"\nmodule = \"m/a.B\"").findings, "main-class"));
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

TEST(LintConfig, RefusesDocumentsThatNobodyCouldTellApart) {
  const auto with = [](const std::string& extensions) {
    return loadWith("[[documents]]\nname = \"A\"\nextensions = " + extensions + '\n').findings;
  };
  EXPECT_FALSE(hasRule(with("[\"a\", \"b-2\"]"), "extension"));
  for (const char* bad : {"\"\"", "\".a\"", "\"a.b\"", "\"\u00e4\"", "\"a b\"", "\"a\", \"a\"",
                          "\"abcdefghijklmnopqrstuvwxyz0123456\""})
    EXPECT_TRUE(hasRule(with("[" + std::string(bad) + "]"), "extension")) << bad;
  EXPECT_TRUE(hasRule(with("[]"), "missing-key"));
  EXPECT_TRUE(hasRule(loadWith("[[documents]]\nnames = \"A\"\n").findings, "unknown-key"));
  EXPECT_TRUE(hasRule(loadWith("[documents]\nname = \"A\"\n").findings, "wrong-kind"));
  const std::string twice = "[[documents]]\nname = \"A\"\nextensions = [\"a\"]\n";
  EXPECT_TRUE(hasRule(loadWith(twice + twice).findings, "extension"));
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

TEST(LintConfig, WarnsOfAClassListForNoRuntime) {
  const std::string line = "class-list = \"none\"\n";
  EXPECT_EQ(findingOf(loadWith("[runtime]\n" + line).findings, "no-effect").what,
            "runtime.class-list has no effect here: it is for a runtime that is packed");
  for (const char* source : {"jlink = true\n", "folder = \"jre\"\n"}) {
    EXPECT_FALSE(hasRule(loadWith("[runtime]\n" + (source + line)).findings, "no-effect"))
        << source;
  }
}

TEST(LintConfig, RefusesAClassListThatIsNothing) {
  const Finding finding =
      findingOf(loadWith("[runtime]\njlink = true\nclass-list = \"\"\n").findings, "choice");
  EXPECT_EQ(asText(finding),
            ":9: error: runtime.class-list is empty [choice]\n"
            "  -> write \"auto\", \"none\" or a file");
}

TEST(LintConfig, WarnsOfOptionsThatNoRuntimeWouldHave) {
  const std::string options = "[jvm]\noptions = [\"-Xss2m\"]\n";
  EXPECT_EQ(
      findingOf(loadWith(options + "[runtime]\nfolder = \"jre\"\n").findings, "no-effect").what,
      "jvm.options has no effect here: a runtime that jlink makes has it");
  EXPECT_FALSE(hasRule(loadWith(options + "[runtime]\njlink = true\n").findings, "no-effect"));
}

TEST(LintConfig, AStartupArchiveNeedsARuntimeThatIsPacked) {
  const std::string key = "[jvm]\nstartup-archive = ";
  EXPECT_EQ(asText(findingOf(loadWith(key + "true\n").findings, "no-effect")),
            ":8: warning: jvm.startup-archive has no effect here: archives are made for packed "
            "runtimes and class paths [no-effect]\n"
            "  -> leave it out");
  EXPECT_FALSE(hasRule(loadWith(key + "false\n").findings, "no-effect"));
  EXPECT_FALSE(hasRule(loadWith(key + "true\n[runtime]\njlink = true\n").findings, "no-effect"));
}

TEST(LintConfig, SaysWhichKeysNeedTheUpdaterThatComesWithUs) {
  const std::string runtime = "[runtime]\njlink = true\n";
  const std::string own = "[updater]\njar = \"mine.jar\"\n";
  const std::string archive = "[jvm]\nstartup-archive = true\n" + runtime;
  EXPECT_EQ(asText(findingOf(loadWith(archive + own).findings, "no-effect")),
            ":8: warning: jvm.startup-archive has no effect here: with updater.jar the JVM is made "
            "without the application's classes [no-effect]\n"
            "  -> leave it out, or leave out updater.jar");
  EXPECT_FALSE(hasRule(loadWith(archive).findings, "no-effect"));
  EXPECT_FALSE(hasRule(loadWith(runtime + own).findings, "no-effect"))
      << "nobody has asked for one";

  std::string text = kMinimal;
  const std::string mainClass = "main-class = \"com.example.Hello\"";
  ASSERT_NE(text.find(mainClass), text.npos);
  text.replace(text.find(mainClass), mainClass.size(), "module = \"m/com.example.Hello\"");
  EXPECT_EQ(findingOf(load(text + own).findings, "no-effect").what,
            "application.module has no effect here: with updater.jar the JVM is made without the "
            "application's modules");
  EXPECT_FALSE(hasRule(load(text).findings, "no-effect"));
}

TEST(LintConfig, RefusesSystemPropertiesThatTheUpdaterSetsOrCannotSet) {
  const auto with = [](const std::string& pair) {
    return loadWith("[jvm]\nsystem-properties = { " + pair + " }\n").findings;
  };
  EXPECT_FALSE(hasRule(with("\"a.b\" = \"c\", d = 1"), "parameter"));
  for (const char* pair : {"\"quillory.arguments\" = \"x\"", "\"java.class.path\" = \"x\"",
                           "\"\" = \"x\"", "\"a=b\" = \"x\""}) {
    EXPECT_TRUE(hasRule(with(pair), "parameter")) << pair;
  }
  EXPECT_FALSE(hasRule(with("a = \"" + std::string(1018, 'x') + "\""), "record-limit"));
  EXPECT_TRUE(hasRule(with("a = \"" + std::string(1019, 'x') + "\""), "record-limit"));
}

TEST(LintConfig, RefusesWhatIsNoNameOfAnEnvironmentVariable) {
  const auto with = [](const std::string& pair) {
    return loadWith("[jvm]\nenvironment = { " + pair + " }\n").findings;
  };
  EXPECT_FALSE(hasRule(with("GDK_BACKEND = \"x11\", _a1 = 1"), "parameter"));
  for (const char* pair :
       {"\"\" = \"x\"", "\"1A\" = \"x\"", "\"A-B\" = \"x\"", "\"A=B\" = \"x\""}) {
    EXPECT_TRUE(hasRule(with(pair), "parameter")) << pair;
  }
  EXPECT_TRUE(hasRule(with("A = \"" + std::string(1000, 'x') + "\""), "record-limit"));
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
