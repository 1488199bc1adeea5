#include "java/jre_provisioning.h"

#include <gmock/gmock.h>
#include <sys/stat.h>

#include <filesystem>
#include <string>
#include <vector>

#include "formats/update_url.h"
#include "install/replacement.h"
#include "java/jre_bundle.h"
#include "support/clock.h"
#include "tests/harness/captured_log.h"
#include "tests/harness/records.h"
#include "tests/harness/scoped_replace.h"
#include "tests/harness/stream_of.h"
#include "tests/harness/temp_dir.h"
#include "tests/java/jre_fixture.h"

namespace quillory {
namespace {

using namespace quillory::testing;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
namespace fs = std::filesystem;

constexpr char kVersionUrl[] = "http://localhost/updates/Quillory-JRE-version.txt";

class ProvisionTest : public ::testing::Test {
 protected:
  void SetUp() override {
    fs::create_directories(dir_ / "tools");
    for (const char* const tool : {"sh", "which", "cp", "chmod", "dirname"})
      fs::create_symlink(fs::canonical("/usr/bin/" + std::string(tool)), tools_ + '/' + tool);
    writeFile(updater_ + "/cacerts", "override");
    writeFile(updater_ + "/QuilloryLaunch",
              records({"3", "Main", "OnUpdate", "App", "icns", "0", "0", "0", "0", "0", "Compat"}));
    writeScript(updater_ + "/lzma64", "cp \"$2\" \"$3\"");
    request_.place = {master_, *JreName::make("JRE", "")};
    request_.system.requiredJavaVersion = "8";
    request_.system.isCompatible = compatibilityClassOf(master_);
    request_.system.places = {applet_, "/nonexistent/java"};
    request_.server = {"http://localhost/updates/", updater_};
    request_.tools.lzmaTool = updater_ + "/lzma64";
    request_.caCerts = updater_ + "/cacerts";
  }

  std::optional<std::string> tryToProvide(const std::string& tail = "") {
    StreamOf stream(tail);
    request_.embedded.tail = stream.get();
    const ScopedEnvironment path("PATH", tools_);
    const JreOutcome<std::string> outcome = provisionJre(request_);
    exitStatus_ = outcome.exitStatus;
    return outcome.provided;
  }
  /// The path of the bundle; "" without a JRE, which is not expected.
  std::string provide(const std::string& tail = "") {
    const std::optional<std::string> bundle = tryToProvide(tail);
    EXPECT_TRUE(bundle.has_value());
    return bundle.value_or("");
  }

  // The JRE's entry in the tail: the archive `archive`, "compressed".
  static std::string tailEntry(const std::string& archive) {
    return fileEntry("JRE.p2.l2", archive);
  }
  static std::string archiveWithBrokenSignature() {
    std::string archive = jreArchive();
    archive.pop_back();
    return archive + brokenSignature(archive.size());
  }

  void serve(const std::string& version, const std::string& archive) {
    server_.files()[kVersionUrl] = version;
    server_.files()["http://localhost/updates/Quillory-JRE-" + version + "-archive.p2.l2"] =
        archive;
  }

  std::string aliasOf(const std::string& version) const {
    return master_ + "/Quillory-JRE-" + version + "-complete";
  }

  // The finished layout of a JRE from jreArchive().
  void expectInstalled(const std::string& version) {
    const std::string alias = aliasOf(version);
    const std::string bundle = alias + ".plugin";
    EXPECT_THAT(
        listTree(alias),
        ElementsAre("bin/", "bin/java", "bin/unpack200", "lib/", "lib/classes.jsa", "lib/jli/",
                    "lib/jli/libjli.dylib", "lib/rt.jar", "lib/security/", "lib/security/cacerts"));
    EXPECT_THAT(listTree(bundle),
                ElementsAre("Contents/", "Contents/Home -> " + alias, "Contents/MacOS/",
                            "Contents/MacOS/libjli.dylib -> " + alias + "/lib/jli/libjli.dylib"));
    EXPECT_EQ(readFile(alias + "/lib/security/cacerts"), "override");
    EXPECT_EQ(modeOf(bundle), 0777U);
    EXPECT_EQ(modeOf(alias + "/bin/java"), 0777U);
    EXPECT_EQ(modeOf(alias + "/bin/unpack200"), 0755U);
    EXPECT_THAT(listTree(master_), Not(Contains(HasSubstr("QuilloryTemp"))));
  }

  TempDir dir_;
  std::string tools_ = dir_ / "tools";
  std::string master_ = dir_ / "master";
  std::string updater_ = dir_ / "master/Quillory-Quillory-7-complete";
  std::string applet_ = dir_ / "Applet.plugin";
  FakeServer server_;
  JreRequest request_;
  int exitStatus_ = -1;  ///< of the last outcome
};

using ProvisionJre = ProvisionTest;

TEST_F(ProvisionJre, InstallsTheJreOfTheTail) {
  request_.embedded.version = "8";
  EXPECT_EQ(provide(tailEntry(jreArchive())), aliasOf("8") + ".plugin");
  expectInstalled("8");
}

TEST_F(ProvisionJre, LogsAnOfflineInstallation) {
  request_.embedded.version = "8";
  CapturedLog log;
  const std::string bundle = provide(tailEntry(jreArchive()));
  const std::string text = log.text();
  std::size_t at = 0;
  for (const std::string& part :
       {std::string("[Extractor] Setting up a JRE\n"), std::string("Extracting Offline JRE"),
        std::string("[Extractor] We want to query the JRE version to enable proxy detection.\n"),
        std::string("[Extractor] Offline installer - no need to download JRE, will extract\n"),
        std::string("[Extractor] UP200 path is "),
        std::string("[Extractor] Extracting JRE archive...\n"),
        std::string("[ExtractArchive] Extracting archive "),
        std::string("[Extractor] Extracted JRE JRE\n"),
        std::string("[Extractor] Regenerating jsa...\n"),
        std::string("[Spawner] Appended argument -Xshare:dump\n"),
        std::string("Extracting Offline JRE"), "[Extractor] Renamed JRE folder to " + bundle + "\n",
        std::string("OSX JRE initialisation"),
        std::string("[Extractor] JRE setup. Overriding cacerts.\n"),
        "[Extractor] CACerts path " + request_.caCerts + " exists\n",
        "[ChMod] Executing chmod 777 \"" + bundle + "\"\n",
        std::string("[Extractor] Ensuring JRE bin is writable.\n"),
        "[ChMod] Executing chmod 777 \"" + bundle + "/bin\"\n"}) {
    at = text.find(part, at);
    ASSERT_NE(at, std::string::npos) << part;
    at += part.size();
  }
}

TEST_F(ProvisionJre, LogsTheCompletionOnce) {
  request_.embedded.version = "8";
  CapturedLog log;
  provide(tailEntry(jreArchive()));
  const std::string text = log.text();
  const std::string line = "[Extractor] JRE setup. Overriding cacerts.\n";
  EXPECT_EQ(text.find(line), text.rfind(line));
}

TEST_F(ProvisionJre, AsksForTheVersionOfAnOfflineJreToo) {
  request_.embedded.version = "8";
  server_.files()[kVersionUrl] = "9";
  provide(tailEntry(jreArchive()));
  EXPECT_THAT(server_.requests(), ElementsAre(HasSubstr("Quillory-JRE-version.txt?time=")));
  EXPECT_EQ(readFile(updater_ + "/Quillory-JRE-version.txt"), "9");
  expectInstalled("8");
}

TEST_F(ProvisionJre, AsksNobodyWithTheInvalidUpdateUrl) {
  request_.embedded.version = "8";
  request_.server.url = kInvalidUpdateURL;
  provide(tailEntry(jreArchive()));
  EXPECT_THAT(server_.requests(), IsEmpty());
  expectInstalled("8");
}

TEST_F(ProvisionJre, LeavesTheTailBehindTheJre) {
  request_.embedded.version = "8";
  const std::string tail = tailEntry(jreArchive());
  StreamOf stream(tail + "next");
  request_.embedded.tail = stream.get();
  provisionJre(request_);
  EXPECT_EQ(std::ftell(stream.get()), static_cast<long>(tail.size()));
}

TEST_F(ProvisionJre, InstallsOverWhatIsThereWithTheSameResult) {
  request_.embedded.version = "8";
  provide(tailEntry(jreArchive()));
  writeFile(aliasOf("8") + "/lib/old.jar", "of the old one");
  writeFile(dir_ / "elsewhere/precious", "kept");
  fs::create_directory_symlink(dir_ / "elsewhere", aliasOf("8") + "/out");

  static std::uint64_t slept = 0;
  slept = 0;
  const ScopedReplace noWait(
      timeCalls.sleepMicros, +[](std::uint64_t micros) { slept += micros; });
  CapturedLog log;
  provide(tailEntry(jreArchive()));
  expectInstalled("8");
  EXPECT_TRUE(log.contains("[Rename] The target already exists. Deleting.\n"));
  EXPECT_FALSE(log.contains("[Rename] Could not rename"));
  EXPECT_EQ(slept, 0U) << "without a retry";
  EXPECT_EQ(readFile(dir_ / "elsewhere/precious"), "kept");
}

TEST_F(ProvisionJre, FollowsNoLinkInTheWay) {
  writeFile(dir_ / "elsewhere/precious", "kept");
  for (const std::string& place : {aliasOf("8"), aliasOf("8") + ".plugin"}) {
    SCOPED_TRACE(place);
    request_.embedded.version = "8";
    fs::remove_all(place);
    fs::create_directory_symlink(dir_ / "elsewhere", place);
    provide(tailEntry(jreArchive()));
    expectInstalled("8");
    fs::create_directory_symlink(dir_ / "elsewhere", place + "/out");
    provide(tailEntry(jreArchive()));
    expectInstalled("8");
    EXPECT_THAT(listTree(dir_ / "elsewhere"), ElementsAre("precious"));
  }
}

TEST_F(ProvisionJre, InstallsOverEveryStateThatAKillLeaves) {
  const std::string alias = aliasOf("8");
  const std::string bundle = alias + ".plugin";
  const struct {
    const char* name;
    std::function<void()> make;
  } kStates[] = {
      {"an empty alias", [&] { fs::create_directories(alias); }},
      {"an alias without rt.jar", [&] { writeFile(alias + "/bin/java", "x"); }},
      {"a bundle alone", [&] { writeJavaHome(bundle + "/Contents/Home"); }},
      {"a plain home in the bundle's place", [&] { writeJavaHome(bundle); }},
      {"a home that was wrapped in part",
       [&] {
         writeJavaHome(bundle);
         fs::create_directories(bundle + "/Contents/Home");
         fs::rename(bundle + "/bin", bundle + "/Contents/Home/bin");
       }},
      {"a shaped bundle and an empty alias",
       [&] {
         writeJavaHome(bundle + "/Contents/Home");
         shapeJreBundle(bundle);
       }},
      {"a home that was moved in part, by an older version",
       [&] {
         writeJavaHome(bundle + "/Contents/Home");
         fs::create_directories(alias);
         fs::rename(bundle + "/Contents/Home/bin", alias + "/bin");
       }},
      {"the old one set aside, its place empty",
       [&] { writeJavaHome(master_ + "/.replaced/Quillory-JRE-8-complete"); }},
  };
  for (const auto& [name, make] : kStates) {
    SCOPED_TRACE(name);
    for (const bool isEmbedded : {true, false}) {
      fs::remove_all(alias);
      fs::remove_all(bundle);
      fs::remove_all(master_ + "/.replaced");
      make();
      bringBackWhatWasSetAside(master_);
      request_.embedded.version = isEmbedded ? "8" : "";
      serve("8", jreArchive());
      provide(isEmbedded ? tailEntry(jreArchive()) : "");
      if (isEmbedded) expectInstalled("8");
      EXPECT_TRUE(fs::exists(alias + "/bin/java"));
      EXPECT_TRUE(fs::exists(alias + "/lib/rt.jar"));
      EXPECT_EQ(readFile(alias + "/lib/security/cacerts"), "override");
      EXPECT_FALSE(fs::exists(master_ + "/.replaced"));
      if (fs::exists(bundle)) {
        EXPECT_EQ(fs::read_symlink(bundle + "/Contents/Home"), alias);
      }
    }
  }
}

TEST_F(ProvisionJre, InstallsBesideAnotherVersion) {
  request_.embedded.version = "7";
  provide(tailEntry(jreArchive()));
  request_.embedded.version = "8";
  provide(tailEntry(jreArchive()));
  expectInstalled("7");
  expectInstalled("8");
}

TEST_F(ProvisionJre, KeepsTheOwnTrustStoreWithoutAnOverride) {
  request_.embedded.version = "8";
  fs::remove(request_.caCerts);
  provide(tailEntry(jreArchive()));
  EXPECT_EQ(readFile(aliasOf("8") + "/lib/security/cacerts"), "the JRE's own");
}

TEST_F(ProvisionJre, MovesAnArchiveIntoPlaceWhoseSignatureDoesNotHold) {
  request_.embedded.version = "8";
  CapturedLog log;
  provide(tailEntry(archiveWithBrokenSignature()));
  EXPECT_TRUE(fs::is_directory(aliasOf("8") + ".plugin"));
  EXPECT_THAT(listTree(aliasOf("8")), IsEmpty()) << "nothing of it can be used";
  EXPECT_TRUE(log.contains("[Extractor] Renamed JRE folder to "));
}

TEST_F(ProvisionJre, KeepsAWorkingJreWhenTheSignatureOfTheNextDoesNotHold) {
  request_.embedded.version = "8";
  provide(tailEntry(jreArchive()));
  CapturedLog log;
  EXPECT_EQ(provide(tailEntry(archiveWithBrokenSignature())), aliasOf("8") + ".plugin");
  expectInstalled("8");
  EXPECT_TRUE(log.contains("[Extractor] No usable JRE was extracted, keeping the one in "));
  EXPECT_FALSE(log.contains("[Extractor] Renamed JRE folder to "));
}

TEST_F(ProvisionJre, UsesAHealthyInstalledJreOnline) {
  request_.embedded.version = "8";
  provide(tailEntry(jreArchive()));
  writeFile(aliasOf("8") + "/lib/security/cacerts", "something else");
  fs::permissions(aliasOf("8") + ".plugin", fs::perms(0700));
  request_.embedded.version = "";
  server_.files()[kVersionUrl] = "9";
  const std::size_t requests = server_.requests().size();
  CapturedLog log;
  EXPECT_EQ(provide(), aliasOf("8") + ".plugin");
  expectInstalled("8");
  EXPECT_EQ(server_.requests().size(), requests) << "nothing is downloaded";
  EXPECT_FALSE(log.contains("[JRESearch]"));
  EXPECT_FALSE(log.contains("[Extractor] Renamed JRE folder"));
  EXPECT_TRUE(log.contains("[Extractor] Using the installed JRE " + aliasOf("8") + "\n"));
  EXPECT_TRUE(log.contains("[Extractor] JRE setup. Overriding cacerts.\n"));
}

TEST_F(ProvisionJre, FinishesAnInstalledJreThatWasNotPrepared) {
  writeJavaHome(aliasOf("00000000000") + ".plugin");
  EXPECT_EQ(provide(), aliasOf("00000000000") + ".plugin");
  EXPECT_TRUE(fs::exists(aliasOf("00000000000") + "/bin/java"));
  EXPECT_EQ(fs::read_symlink(aliasOf("00000000000") + ".plugin/Contents/Home"),
            aliasOf("00000000000"));
}

TEST_F(ProvisionJre, ReplacesABrokenJreOnline) {
  request_.embedded.version = "8";
  provide(tailEntry(jreArchive()));
  fs::remove(aliasOf("8") + "/lib/rt.jar");
  request_.embedded.version = "";
  serve("8", jreArchive());
  provide();
  expectInstalled("8");
}

TEST_F(ProvisionJre, CopiesASystemJre) {
  writeJavaHome(dir_ / "system/jre");
  fs::create_symlink(dir_ / "system/jre/bin/java", tools_ + "/java");
  CapturedLog log;
  EXPECT_EQ(provide(), aliasOf("00000000000") + ".plugin");
  EXPECT_TRUE(
      log.contains("[Extractor] Online installer - no stored JRE, will check for "
                   "compatible system JRE\n"));
  EXPECT_TRUE(log.contains("[JREDownload] Finalising setup of new JRE 00000000000\n"));
  const std::string alias = aliasOf("00000000000");
  EXPECT_EQ(modeOf(alias + "/bin/java"), 0755U);
  EXPECT_EQ(modeOf(alias + "/bin"), 0777U);
  EXPECT_EQ(readFile(alias + "/lib/rt.jar"), "classes");
  EXPECT_EQ(readFile(alias + "/lib/security/cacerts"), "override");
  EXPECT_EQ(fs::read_symlink(alias + ".plugin/Contents/Home"), alias);
  EXPECT_THAT(server_.requests(), IsEmpty());
  EXPECT_EQ(readFile(dir_ / "system/jre/lib/security/cacerts"), "the JRE's own");
}

TEST_F(ProvisionJre, CopiesTheAppletPluginWithItsBundle) {
  writeJavaHome(applet_ + "/Contents/Home");
  writeFile(applet_ + "/Contents/MacOS/JavaAppletPlugin", "stub");
  writeFile(applet_ + "/Contents/Home/lib/libnpjp2.dylib", "plug-in");
  provide();
  const std::string alias = aliasOf("00000000000");
  EXPECT_TRUE(fs::exists(alias + "/bin/java"));
  EXPECT_EQ(modeOf(alias + "/bin"), 0777U);
  EXPECT_EQ(fs::read_symlink(alias + ".plugin/Contents/MacOS/JavaAppletPlugin"),
            alias + "/lib/libnpjp2.dylib");
}

TEST_F(ProvisionJre, DownloadsWhereTheSystemHasNone) {
  serve("1.8.0_202", jreArchive());
  CapturedLog log;
  EXPECT_EQ(provide(), aliasOf("1.8.0_202") + ".plugin");
  expectInstalled("1.8.0_202");
  const std::string text = log.text();
  std::size_t at = 0;
  for (const char* const part :
       {"[Extractor] Setting up a JRE\n", "Setting up online JRE",
        "[Extractor] Online installer - no stored JRE, will check for compatible system JRE\n",
        "[JRESearch] JRE does not exist or does not have unpack200\n",
        "[JREDownload] Failed to pick up any existing system JRE, will download\n",
        "[JREDownload] Downloaded JRE is now ready.\n",
        "[JREDownload] Finalising setup of new JRE 1.8.0_202\n", "Setting up online JRE",
        "[Extractor] Renamed JRE folder to "}) {
    at = text.find(part, at);
    ASSERT_NE(at, std::string::npos) << part;
    at += std::string(part).size();
  }
}

TEST_F(ProvisionJre, DownloadsWhereTheSystemJreIsNotCompatible) {
  writeJavaHome(dir_ / "system/jre");
  writeScript(dir_ / "system/jre/bin/java", javaScript("1.8.0", 1));
  fs::create_symlink(dir_ / "system/jre/bin/java", tools_ + "/java");
  serve("9", jreArchive());
  CapturedLog log;
  EXPECT_EQ(provide(), aliasOf("9") + ".plugin");
  EXPECT_TRUE(log.contains("[JRESearch] JRE failed compatibility test\n"));
}

TEST_F(ProvisionJre, TakesAMasterFolderThatAShellWouldExpand) {
  const std::string odd = dir_ / "master $HOME `touch bad` \"q\"";
  fs::rename(master_, odd);
  master_ = request_.place.masterFolder = odd;
  updater_ = request_.server.versionFileFolder = odd + "/Quillory-Quillory-7-complete";
  request_.tools.lzmaTool = updater_ + "/lzma64";
  request_.caCerts = updater_ + "/cacerts";
  serve("8", jreArchive());
  provide();
  expectInstalled("8");
  EXPECT_FALSE(fs::exists("bad"));
}

TEST_F(ProvisionJre, InstallsNothingWhenADownloadedSignatureDoesNotHold) {
  serve("8", archiveWithBrokenSignature());
  CapturedLog log;
  EXPECT_EQ(tryToProvide(), std::nullopt);
  EXPECT_TRUE(log.contains("[JREDownload] The downloaded archive holds no usable JRE\n"));
  EXPECT_FALSE(fs::exists(aliasOf("8") + ".plugin"));
  serve("8", jreArchive());
  provide();
  expectInstalled("8");
}

TEST_F(ProvisionJre, EndsWhereAnEntryOfTheTailIsRefused) {
  request_.embedded.version = "8";
  EXPECT_EQ(tryToProvide(fileEntry("../JRE.p2.l2", jreArchive())), std::nullopt);
  EXPECT_EQ(exitStatus_, kExitFailure);
  EXPECT_THAT(listTree(master_), Not(Contains(HasSubstr("QuilloryTemp"))));
  EXPECT_FALSE(fs::exists(aliasOf("8") + ".plugin"));
}

TEST_F(ProvisionJre, TellsOfAPack200EntryThatLeftNothing) {
  const std::string packed = records({"2", "lib/packed.jar", "3"}) + "abc";
  request_.embedded.version = "8";
  EXPECT_EQ(tryToProvide(tailEntry(jreArchive(packed))), std::nullopt);
  EXPECT_EQ(exitStatus_, kExitUnpack200Failed);

  request_.embedded.version = "";
  serve("8", jreArchive(packed));
  EXPECT_EQ(tryToProvide(), std::nullopt);
  EXPECT_EQ(exitStatus_, kExitUnpack200Failed);
  EXPECT_THAT(listTree(master_), Not(Contains(HasSubstr("QuilloryTemp"))));
}

TEST_F(ProvisionJre, KeepsABrokenJreWhenTheDownloadFails) {
  writeFile(aliasOf("8") + "/bin/java", "broken");
  CapturedLog log;
  EXPECT_EQ(tryToProvide(), std::nullopt);
  EXPECT_TRUE(log.contains("[JREDownload] Failed to download JRE version file\n"));
  EXPECT_EQ(readFile(aliasOf("8") + "/bin/java"), "broken");
}

TEST_F(ProvisionJre, DownloadsNothingWhenTheSearchIsCutShort) {
  writeJavaHome(dir_ / "system/jre");
  fs::create_symlink(dir_ / "system/jre/bin/java", tools_ + "/java");
  fs::remove(updater_ + "/QuilloryLaunch");
  fs::rename(updater_, dir_ / "updater");
  serve("8", jreArchive());
  CapturedLog log;
  EXPECT_EQ(tryToProvide(), std::nullopt);
  EXPECT_TRUE(log.contains("No latest App version even after download!\n"));
  EXPECT_THAT(server_.requests(), IsEmpty());
}

}  // namespace
}  // namespace quillory
