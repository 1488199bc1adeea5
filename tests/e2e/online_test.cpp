// An installer without a runtime gets one from its update URL.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <memory>

#include "tests/e2e/online_machine.h"

namespace quillory::testing {
namespace {

namespace fs = std::filesystem;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::MatchesRegex;
using ::testing::Not;

class OnlineInstaller : public ::testing::Test {
 protected:
  HttpServer server_;
  OnlineMachine machine_;
  const std::string alias_ = machine_.master() + "/Quillory-JRE-17-complete";
};

TEST_F(OnlineInstaller, InstallsTheRuntimeOfTheUpdateUrlAndStarts) {
  publishRuntime(server_, "17", packedScriptRuntime());
  machine_.expectGoodStart(onlineTail(server_.url()));
  EXPECT_THAT(
      namesIn(machine_.master()),
      ElementsAre("QYAppsSharedConfig", "Quillory-Demo-3-complete", "Quillory-JRE-17-complete",
                  "Quillory-JRE-17-complete.plugin", "Quillory-Quillory-1-complete", "logs"));
  EXPECT_EQ(fs::read_symlink(alias_ + ".plugin/Contents/Home").string(), alias_);
  EXPECT_EQ(modeOf(alias_ + ".plugin"), 0777U);
}

TEST_F(OnlineInstaller, AsksForTheVersionOfTheMomentAndItsArchive) {
  publishRuntime(server_, "17", packedScriptRuntime());
  machine_.expectGoodStart(onlineTail(server_.url()));
  EXPECT_THAT(server_.targets(),
              ElementsAre(MatchesRegex("/Quillory-JRE-version\\.txt\\?time=[0-9]{13}"),
                          "/Quillory-JRE-17-archive.p2.l2"));
}

TEST_F(OnlineInstaller, SaysInTheLogWhatItFetchesAndFromWhere) {
  publishRuntime(server_, "17", packedScriptRuntime());
  const ChildResult result = machine_.start(onlineTail(server_.url("")));
  EXPECT_EQ(result.exitStatus, 0);
  linesInOrder(result, {"[Extractor] Update URL is currently '" + server_.url("") + "'",
                        "[Extractor] Update URL is now '" + server_.url() + "'",
                        "[Extractor] Setting up a JRE",
                        "+++ Start: Setting up online JRE",
                        "[Extractor] Online installer - no stored JRE, will check for compatible "
                        "system JRE",
                        "[JRESearch] JRE does not exist or does not have unpack200",
                        "[JREDownload] Failed to pick up any existing system JRE, will download",
                        "[JREDownload] JRE version downloaded OK [" + machine_.master() +
                            "/Quillory-Quillory-1-complete/Quillory-JRE-version.txt]",
                        "[JREDownload] JRE Version is 17",
                        "[JREDownload] Downloading JRE",
                        "[JREDownload] JRE Downloaded OK, will extract",
                        "[JREDownload] Decompressing JRE archive",
                        "[ExtractArchive] Archive signature verified.",
                        "[JREDownload] Done extracting JRE archive",
                        "[JREDownload] Regenerating jsa...",
                        "[JREDownload] Downloaded JRE is now ready.",
                        "[JREDownload] Finalising setup of new JRE 17",
                        "[Extractor] Renamed JRE folder to " + alias_ + ".plugin",
                        "[Extractor] JRE setup. Overriding cacerts.",
                        "[Extractor] Extracting App...",
                        "[Extractor] Using private JRE Quillory-JRE-17-complete"});
  const std::string version = "Fetching JRE Version from " + server_.url(kVersionPath) + "?time=";
  EXPECT_THAT(result.out, HasSubstr("[JREDownload] " + version));
  const std::string starting = "Starting download from = " + server_.url();
  EXPECT_THAT(result.err, HasSubstr(starting + "Quillory-JRE-version.txt?time="));
  EXPECT_THAT(result.err, HasSubstr(starting + "Quillory-JRE-17-archive.p2.l2\n"));
  EXPECT_THAT(result.err, HasSubstr("Percent complete - 100.0"));
}

TEST_F(OnlineInstaller, RunsTheApplicationInTheDownloadedRuntime) {
  Tail tail = onlineTail(server_.url());
  tail.publicKey = "";
  publishRuntime(server_, "17.0.2", packedArchive(runtimeContent(), nullptr));
  const ChildResult first = machine_.start(tail);
  EXPECT_EQ(first.exitStatus, 0) << first.out << first.err;
  EXPECT_EQ(reported(first, "home"), machine_.master() + "/Quillory-JRE-17.0.2-complete");
  EXPECT_THAT(first.out, HasSubstr("[JNILaunch] [pid=" + reported(first, "pid") + "]"));
  EXPECT_EQ(reported(first, "arg 1"), "argument");

  const ChildResult second = machine_.start(tail);
  EXPECT_EQ(countLine(second, "[Extractor] Running without extraction now"), 1);
  EXPECT_EQ(reported(second, "home"), reported(first, "home"));
  EXPECT_EQ(server_.requests().size(), 2U);
}

TEST_F(OnlineInstaller, LeavesTheApplicationToTheUpdaterWhenItBringsNone) {
  Tail tail = onlineTail(server_.url());
  tail.appVersion = "";
  publishRuntime(server_, "17", packedScriptRuntime());
  const ChildResult result = machine_.start(tail);
  EXPECT_EQ(countLine(result, "[Extractor] Online installer - no app to extract"), 1);
  EXPECT_THAT(startedArguments(machine_.user()), Contains("argument"));
}

// What a server finds under the name of the file when it has undone the escapes.
TEST_F(OnlineInstaller, InstallsARuntimeWhoseNameNoAddressCanHold) {
  static constexpr struct {
    const char* name;
    const char* inAddress;
  } kCases[] = {{"My JRE", "My%20JRE"}, {"JR\u00c9", "JR%C3%89"}};
  for (const auto& [name, inAddress] : kCases) {
    SCOPED_TRACE(name);
    const std::string address = "/Quillory-" + std::string(inAddress);
    server_.answer(address + "-version.txt", answerFile("17\n"));
    server_.answer(address + "-17-archive.p2.l2", answerFile(packedScriptRuntime()));
    const OnlineMachine machine;
    const ChildResult result = machine.start(onlineTail(server_.url()), {{"jre_name", name}});
    EXPECT_EQ(result.exitStatus, 0) << result.out << result.err;
    EXPECT_THAT(startedArguments(machine.user()), Contains("argument"));
    EXPECT_THAT(namesIn(machine.master()),
                Contains("Quillory-" + std::string(name) + "-17-complete.plugin"));
  }
}

TEST_F(OnlineInstaller, UsesAHealthyRuntimeThatIsInstalledAlready) {
  publishRuntime(server_, "17", packedScriptRuntime());
  machine_.expectGoodStart(onlineTail(server_.url()));
  Tail newer = onlineTail("http://127.0.0.1:" + std::to_string(unusedPort()) + "/");
  newer.guVersion = "2";
  machine_.expectGoodStart(newer);
}

TEST_F(OnlineInstaller, ReplacesAnInstalledRuntimeThatIsBroken) {
  publishRuntime(server_, "17", packedScriptRuntime());
  machine_.expectGoodStart(onlineTail(server_.url()));
  fs::remove(alias_ + "/lib/rt.jar");
  machine_.expectGoodStart(onlineTail(server_.url()));
  EXPECT_TRUE(fs::is_regular_file(alias_ + "/lib/rt.jar"));
  EXPECT_EQ(fs::read_symlink(alias_ + ".plugin/Contents/Home").string(), alias_);
}

TEST_F(OnlineInstaller, LeavesABrokenRuntimeAloneWhenThereIsNoOtherToBeHad) {
  publishRuntime(server_, "17", packedScriptRuntime());
  machine_.expectGoodStart(onlineTail(server_.url()));
  fs::remove(alias_ + "/lib/rt.jar");
  server_.answer(archivePath("17"), answerError(404));
  EXPECT_EQ(machine_.start(onlineTail(server_.url())).exitStatus, 1);
  EXPECT_TRUE(fs::is_regular_file(alias_ + "/bin/java"));
}

TEST_F(OnlineInstaller, TakesTheUpdateUrlOfTheParametersAndFollowsRedirects) {
  HttpServer elsewhere;
  publishRuntime(elsewhere, "17", packedScriptRuntime());
  server_.answer("/updates" + std::string(kVersionPath),
                 answerRedirect(elsewhere.url(kVersionPath)));
  server_.answer("/updates" + archivePath("17"), answerRedirect(elsewhere.url(archivePath("17"))));
  const ChildResult result =
      machine_.start(onlineTail("D"), {{"update_url", server_.url("/updates")}});
  EXPECT_EQ(result.exitStatus, 0) << result.out;
  EXPECT_THAT(startedArguments(machine_.user()), Contains("argument"));
}

TEST_F(OnlineInstaller, GoesThroughTheProxyOfTheSystem) {
  publishRuntime(server_, "17", packedScriptRuntime());
  ChildOptions options = machine_.options();
  options.environment["http_proxy"] = server_.url();
  const ChildResult result = machine_.start(onlineTail("http://updates.invalid/"), {}, options);
  EXPECT_EQ(result.exitStatus, 0) << result.out;
  EXPECT_THAT(server_.targets(), Contains("http://updates.invalid/Quillory-JRE-17-archive.p2.l2"));
}

TEST_F(OnlineInstaller, AcceptsAVersionOfFiftyCharacters) {
  const std::string version = "17." + std::string(47, '0');
  publishRuntime(server_, version, packedScriptRuntime());
  machine_.expectGoodStart(onlineTail(server_.url()));
  EXPECT_THAT(namesIn(machine_.master()), Contains("Quillory-JRE-" + version + "-complete"));
}

// Whoever may write to the update URL can leave the signature out: what protects the way there is
// https.
TEST_F(OnlineInstaller, AcceptsAnArchiveWithoutASignature) {
  publishRuntime(server_, "17", packedArchive(scriptRuntimeContent(), nullptr));
  const ChildResult result = machine_.start(onlineTail(server_.url()));
  EXPECT_EQ(result.exitStatus, 0) << result.out;
  EXPECT_THAT(result.out, Not(HasSubstr("[ExtractArchive] Archive signature verified.")));
  EXPECT_THAT(startedArguments(machine_.user()), Contains("argument"));
}

TEST_F(OnlineInstaller, PutsTheShippedTrustStoreIntoTheDownloadedRuntime) {
  publishRuntime(server_, "17", packedScriptRuntime());
  Tail tail = onlineTail(server_.url());
  const std::string empty = emptyEntry("cacerts");
  tail.entries.replace(tail.entries.find(empty), empty.size(), fileEntry("cacerts", "shipped"));
  machine_.expectGoodStart(tail);
  EXPECT_EQ(readFile(alias_ + "/lib/security/cacerts"), "shipped");
}

}  // namespace
}  // namespace quillory::testing
