// What the commands do with finished files: inspect, verify, extract, set, doctor.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <nlohmann/json.hpp>

#include "packager/bytes/byte_sinks.h"
#include "packager/bytes/work_folder.h"
#include "packager/commands/verify.h"
#include "packager/writing/archive_writer.h"
#include "tests/harness/child_process.h"
#include "tests/harness/page_example.h"
#include "tests/harness/records.h"
#include "tests/packager/mach_o_bytes.h"
#include "tests/packager/project_fixture.h"

namespace quillory::testing {
namespace {

namespace fs = std::filesystem;
using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::Not;

constexpr char kRuntime[] = "[runtime]\nfolder = \"jre\"\n";

class FinishedBundle : public ::testing::Test {
 protected:
  FinishedBundle() : bundle_(bundleOf(project_, project_.config(kRuntime))) {}

  std::string params() const {
    return bundle_ + "/Contents/Resources/AppParams.excludefromsigning";
  }
  std::string tail() const { return bundle_ + "/Contents/Resources/Tail"; }
  std::string release(const std::string& name) const {
    return project_ / ("dist/release/Quillory-" + name + "-archive.p2.l2");
  }
  // Changes the first place where `from` stands in a file; both have the same length.
  static void patch(const std::string& file, const std::string& from, const std::string& to) {
    ASSERT_EQ(from.size(), to.size());
    std::string bytes = readFile(file);
    const std::size_t at = bytes.find(from);
    ASSERT_NE(at, std::string::npos);
    bytes.replace(at, from.size(), to);
    writeFile(file, bytes);
  }

  Project project_;
  std::string bundle_;
};

using Inspect = FinishedBundle;
using Verify = FinishedBundle;
using Extract = FinishedBundle;
using SetParameters = FinishedBundle;
using DoctorOf = FinishedBundle;

TEST_F(Inspect, ShowsABundleWithItsParametersTailAndArchives) {
  const CommandResult result = pack({"inspect", bundle_});
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_THAT(
      result.out,
      AllOf(HasSubstr("kind: bundle\n"), HasSubstr("target: linux\nCFBundleIdentifier"),
            HasSubstr("CFBundleIdentifier: com.example.hello\n"), HasSubstr("    jre_name = JRE\n"),
            HasSubstr("    App Name: Hello\n"), HasSubstr("    JRE Version: 170000900\n"),
            HasSubstr("      bits: 2048\n"), HasSubstr("  installs: for the current user\n"),
            HasSubstr("    file     GU.p2.l2  "), HasSubstr("        signed: yes\n"),
            HasSubstr("          file     Contents/Home/bin/java  9\n")));
}

TEST_F(Inspect, ShowsEveryKindOfFile) {
  const TempDir dir;
  writeFile(dir / "QuilloryLaunch", pageExample("formats/launch-file.md"));
  writeFile(dir / "QYLaunchProperties-1-2", pageExample("formats/launch-properties.md"));
  writeFile(dir / "JRE-LastSuccessfulOptions-x", pageExample("formats/remembered-options.md"));
  writeFile(dir / "Quillory-JRE-version.txt", pageExample("formats/version-file.md"));
  writeFile(dir / "a.p2", pageExample("formats/archive.md", 2));
  const std::pair<std::string, std::vector<std::string>> cases[] = {
      {dir / "QuilloryLaunch",
       {"kind: launch-file", "version: 6", "main class: com.example.hello.Hello",
        "largest heap MiB: 256", "class path:\n  hello.jar\n  lib/a.jar", "must fork: no"}},
      {dir / "QYLaunchProperties-1-2",
       {"kind: launch-properties", "static app_name = Demo", "static silent_parameter = \n",
        "dynamic url_req = demo://x"}},
      {dir / "JRE-LastSuccessfulOptions-x",
       {"kind: remembered-options", "-Xss4m", "-Dsun.java2d.opengl=false"}},
      {dir / "Quillory-JRE-version.txt", {"kind: version-file", "version: 1.8.0_202"}},
      {dir / "a.p2", {"kind: archive", "signed: yes", "signed bytes: 29", "lib/hello.txt  5"}},
      {release("Hello-3"), {"kind: compressed-archive", "QuilloryLaunch", "lib/hello.jar"}},
      {tail(), {"kind: tail", "App Version: 3", "verpatch.exe  0"}},
      {params(), {"kind: parameters", "count: 1", "jre_name = JRE"}},
      {Project::key(), {"kind: key", "bits: 2048", "the private key, which signs"}}};
  for (const auto& [path, parts] : cases) {
    const CommandResult result = pack({"inspect", path});
    EXPECT_EQ(result.status, 0) << path << result.err;
    for (const std::string& part : parts) {
      EXPECT_THAT(result.out + '\n', HasSubstr(part)) << path;
    }
  }
}

TEST_F(Inspect, KnowsFilesByTheirContentToo) {
  const TempDir dir;
  const std::pair<std::string, std::string> cases[] = {
      {pageExample("formats/archive.md", 1), "archive"},
      {readFile(release("Hello-3")), "compressed-archive"},
      {pageExample("formats/launch-properties.md"), "launch-properties"},
      {readFile(params()), "parameters"},
      {readFile(Project::key()), "key"}};
  for (const auto& [content, kind] : cases) {
    writeFile(dir / "file", content);
    EXPECT_THAT(pack({"inspect", dir / "file"}).out, HasSubstr("kind: " + kind + '\n'));
  }
  writeFile(dir / "file", "something else");
  const CommandResult unknown = pack({"inspect", dir / "file"});
  EXPECT_EQ(unknown.status, 1);
  EXPECT_THAT(unknown.err, HasSubstr("is none of the files that quillory-pack knows"));
  EXPECT_EQ(pack({"inspect", dir / "missing"}).status, 1);
}

TEST_F(Inspect, TakesTheWordOfWhoeverKnowsBetter) {
  const TempDir dir;
  writeFile(dir / "x", pageExample("formats/launch-file.md"));
  EXPECT_THAT(pack({"inspect", "--as", "launch-file", dir / "x"}).out,
              HasSubstr("main class: com.example.hello.Hello"));
  EXPECT_EQ(pack({"inspect", "--as", "nonsense", dir / "x"}).status, 2);
}

TEST_F(Inspect, GivesScriptsADocument) {
  const auto document = nlohmann::json::parse(pack({"inspect", "--json", bundle_}).out);
  EXPECT_EQ(document["command"], "inspect");
  EXPECT_EQ(document["status"], 0);
  EXPECT_EQ(document["content"]["tail"]["records"]["App Name"], "Hello");
  EXPECT_EQ(document["content"]["tail"]["entries"][0]["path"], "lzma64");
  EXPECT_TRUE(document["findings"].empty());
}

TEST_F(Inspect, ShowsWhatCannotBePrintedAndShortensWhatIsLong) {
  const TempDir dir;
  writeFile(dir / "QYLaunchProperties-1-2",
            records({"qystat_a", "line\nend\x01", "qydyna_b"}) + std::string(500, 'x'));
  const CommandResult result = pack({"inspect", dir / "QYLaunchProperties-1-2"});
  EXPECT_THAT(result.out, HasSubstr("static a = line\\nend\\x01\n"));
  EXPECT_THAT(result.out, HasSubstr("dynamic b = " + std::string(120, 'x') + "... (500 bytes)"));
}

TEST_F(Inspect, ReportsWhatIsWrongWithAFile) {
  const std::string bytes = readFile(tail());
  writeFile(tail(), bytes.substr(0, bytes.size() - 100));
  const CommandResult result = pack({"inspect", tail()});
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.err, HasSubstr("[cut-short]"));
}

TEST_F(Verify, FindsAFreshBundleGood) {
  const CommandResult result = pack({"verify", bundle_});
  EXPECT_EQ(result.status, 0) << result.out << result.err;
  EXPECT_EQ(result.out, "signed: " + bundle_ + ": GU.p2.l2: a client installs it\n" +
                            "signed: " + bundle_ + ": JRE.p2.l2: a client installs it\n" +
                            "signed: " + bundle_ + ": App.p2.l2: a client installs it\n");
  EXPECT_THAT(result.err, HasSubstr("good\n"));
}

TEST_F(Verify, ChecksArchivesWithAKeyAndSaysWhenThereIsNone) {
  EXPECT_THAT(pack({"verify", "--key", Project::key(), release("Hello-3")}).out,
              HasSubstr("signed: "));
  const CommandResult without = pack({"verify", release("Hello-3")});
  EXPECT_EQ(without.status, 0);
  EXPECT_THAT(without.out, HasSubstr("signed, not checked"));
  EXPECT_EQ(without.err, "structure good; signatures not checked: --key checks them\n");
  const auto unchecked =
      nlohmann::json::parse(pack({"verify", "--json", release("Hello-3"), bundle_}).out);
  EXPECT_EQ(unchecked["signature"], "not checked");
  EXPECT_EQ(unchecked["structure"], "good");
  EXPECT_TRUE(unchecked["good"].is_null());
  const auto checked = nlohmann::json::parse(
      pack({"verify", "--json", "--key", Project::key(), release("Hello-3"), bundle_}).out);
  EXPECT_EQ(checked["signature"], "checked");
  EXPECT_EQ(checked["good"], true);
  const auto nothing = nlohmann::json::parse(pack({"verify", "--json", bundle_ + "/no"}).out);
  EXPECT_EQ(nothing["signature"], "not checked");
  EXPECT_EQ(nothing["good"], false);
}

TEST_F(Verify, LooksAtThePathsBehindOneThatItDoesNotKnow) {
  const CommandResult result =
      pack({"verify", project_ / "missing", project_ / "hello.jar", bundle_});
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.err, AllOf(HasSubstr(project_ / "missing" + ": error: "),
                                HasSubstr(project_ / "hello.jar" +
                                          ": error: is neither a bundle nor an archive"),
                                HasSubstr("NOT good\n")));
  EXPECT_THAT(result.out, HasSubstr("signed: " + bundle_ + ": App.p2.l2"));
  const CommandResult noKey = pack({"verify", "--key", project_ / "none.pem", bundle_, tail()});
  EXPECT_EQ(noKey.status, 1);
  EXPECT_EQ(noKey.out, "");
}

TEST_F(Verify, FindsAChangedArchiveBroken) {
  const TempDir dir;
  ASSERT_EQ(
      runChild({"sh", "-c",
                "xz --format=lzma -dc '" + release("Hello-3") + "' > '" + (dir / "a.p2") + "'"})
          .exitStatus,
      0);
  EXPECT_EQ(pack({"verify", "--key", Project::key(), dir / "a.p2"}).status, 0);
  patch(dir / "a.p2", "com.example", "com.exbmple");
  const CommandResult result = pack({"verify", "--key", Project::key(), dir / "a.p2"});
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.out, HasSubstr("BROKEN: " + (dir / "a.p2") +
                                    ": a client deletes everything that it extracted from it"));
}

TEST_F(Verify, FindsABundleBrokenWhoseKeyOrArchiveWasExchanged) {
  const std::string other = project_ / "other.pem";
  ASSERT_EQ(runChild({"openssl", "genrsa", "-out", other, "2048"}).exitStatus, 0);
  EXPECT_EQ(pack({"verify", "--key", other, bundle_}).status, 1);
  EXPECT_THAT(pack({"verify", "--key", other, bundle_}).err, HasSubstr("[other-key]"));
  EXPECT_EQ(pack({"verify", "--key", Project::key(), bundle_}).status, 0);
}

TEST_F(Verify, AcceptsUnsignedArchivesOnlyWhereNoKeyIsKnown) {
  const TempDir dir;
  writeFile(dir / "a.p2", pageExample("formats/archive.md", 1));
  const CommandResult result = pack({"verify", dir / "a.p2"});
  EXPECT_EQ(result.status, 0);
  EXPECT_THAT(result.out, HasSubstr("it is not signed, and a client installs it all the same"));
  EXPECT_EQ(pack({"verify", "--key", Project::key(), dir / "a.p2"}).status, 1);
}

TEST_F(Verify, FindsASignatureAtTheWrongPlaceBroken) {
  const TempDir dir;
  writeFile(dir / "a.p2", pageExample("formats/archive.md", 2));
  patch(dir / "a.p2",
        std::string("1\0"
                    "29\0",
                    5),
        std::string("1\0"
                    "28\0",
                    5));
  const CommandResult result = pack({"verify", dir / "a.p2"});
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.err, HasSubstr("[signature-place]"));
}

TEST_F(Verify, GoesOnBehindAnArchiveThatCannotBeUnpacked) {
  std::string bytes = readFile(tail());
  const std::size_t content = bytes.find(std::string("JRE.p2.l2\0", 10));
  bytes[content + 200] = static_cast<char>(bytes[content + 200] ^ 0x55);
  writeFile(tail(), bytes);
  const CommandResult result = pack({"verify", bundle_});
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.out, AllOf(HasSubstr("signed: " + bundle_ + ": GU.p2.l2"),
                                HasSubstr("BROKEN: " + bundle_ + ": JRE.p2.l2"),
                                HasSubstr("signed: " + bundle_ + ": App.p2.l2")));
  EXPECT_EQ(pack({"doctor", bundle_}).status, 1);
}

TEST_F(Verify, FindsDamagedFilesNotGoodAndNothingWorse) {
  const std::string bytes = readFile(release("Quillory-1"));
  for (std::size_t length = 0; length < bytes.size(); length += 997) {
    writeFile(project_ / "cut.p2.l2", bytes.substr(0, length));
    EXPECT_EQ(pack({"verify", project_ / "cut.p2.l2"}).status, 1) << length;
  }
  EXPECT_EQ(pack({"verify", project_ / "hello.jar"}).status, 1);
  EXPECT_EQ(pack({"verify", project_ / "missing"}).status, 1);
}

TEST_F(Extract, GivesTheFilesBackAsTheLauncherDoes) {
  const TempDir dir;
  const CommandResult result =
      pack({"extract", "--key", Project::key(), release("Hello-3"), dir / "out"});
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_EQ(result.out, dir / "out" + "\n");
  EXPECT_EQ(readFile(dir / "out/lib/hello.jar"), readFile(project_ / "hello.jar"));
  EXPECT_EQ(modeOf(dir / "out/lib/hello.jar"), 0755u);
  EXPECT_EQ(modeOf(dir / "out/lib"), 0777u);
  EXPECT_TRUE(fs::exists(release("Hello-3"))) << "the archive stays";
}

TEST_F(Extract, RefusesAnArchiveThatTheKeyDidNotSign) {
  const TempDir dir;
  writeFile(dir / "a.p2", pageExample("formats/archive.md", 2));
  const CommandResult result =
      pack({"extract", "--key", Project::key(), dir / "a.p2", dir / "out"});
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.err, HasSubstr("the archive is not signed with this key"));
  EXPECT_FALSE(fs::exists(dir / "out"));
  EXPECT_EQ(pack({"extract", dir / "a.p2", dir / "out"}).status, 0);
  EXPECT_EQ(readFile(dir / "out/lib/hello.txt"), "hello");
}

TEST_F(Extract, RefusesWhatWouldLeaveTheFolderOrNeverEnd) {
  const TempDir dir;
  writeFile(dir / "up.p2", records({"0", "../up", "1"}) + "x" + records({""}));
  EXPECT_EQ(pack({"extract", dir / "up.p2", dir / "out"}).status, 3);
  writeFile(dir / "short.p2", records({"0", "a", "10"}) + "x");
  EXPECT_EQ(pack({"extract", dir / "short.p2", dir / "out"}).status, 3);
  writeFile(dir / "packed.p2", records({"2", "a.jar", "1"}) + "x" + records({""}));
  EXPECT_EQ(pack({"extract", dir / "packed.p2", dir / "out"}).status, 1);
  EXPECT_FALSE(fs::exists(dir / "out"));
  EXPECT_FALSE(fs::exists(dir / "up"));
}

TEST(ExtractProgram, SaysWhyTheLaunchersCodeEndedItAndCleansUp) {
  const TempDir dir;
  fs::create_directory(dir / "tmp");
  // A folder, with something in it, where the next entry needs a file.
  writeFile(dir / "a.p2",
            records({"0", "a/b", "1"}) + "x" + records({"0", "a", "1"}) + "y" + records({""}));
  ChildOptions options;
  options.environment["TMPDIR"] = dir / "tmp";
  const ChildResult plain =
      runChild({QUILLORY_PACK, "extract", dir / "a.p2", dir / "out"}, options);
  EXPECT_EQ(plain.exitStatus, 1);
  EXPECT_EQ(plain.out, "");
  EXPECT_EQ(plain.err, dir / "a.p2" +
                           ": error: cannot be extracted: Unable to extract archive file a (1), "
                           "unable to open file for writing\n");
  const ChildResult json =
      runChild({QUILLORY_PACK, "extract", "--json", "-v", dir / "a.p2", dir / "new"}, options);
  EXPECT_EQ(json.exitStatus, 1);
  EXPECT_EQ(json.err, "");
  const auto document = nlohmann::json::parse(json.out);
  EXPECT_EQ(document["command"], "extract");
  EXPECT_EQ(document["status"], 1);
  ASSERT_EQ(document["findings"].size(), 1u);
  EXPECT_THAT(document["findings"][0]["what"].get<std::string>(),
              HasSubstr("Unable to extract archive file a (1)"));
  EXPECT_TRUE(fs::is_empty(dir / "tmp"));
}

TEST_F(Extract, GivesScriptsADocumentAndNothingElse) {
  const TempDir dir;
  const ChildResult result =
      runChild({QUILLORY_PACK, "extract", "--json", "--verbose", release("Hello-3"), dir / "out"});
  EXPECT_EQ(result.exitStatus, 0);
  EXPECT_EQ(result.err, "");
  EXPECT_EQ(nlohmann::json::parse(result.out)["folder"], dir / "out");
  EXPECT_THAT(runChild({QUILLORY_PACK, "extract", "-v", release("Hello-3"), dir / "more"}).err,
              HasSubstr("[ExtractArchiveFile]"));
}

TEST_F(Extract, WantsAnEmptyFolder) {
  const TempDir dir;
  writeFile(dir / "out/mine", "x");
  EXPECT_THAT(pack({"extract", release("Hello-3"), dir / "out"}).err, HasSubstr("is not empty"));
  EXPECT_THAT(pack({"extract", project_ / "hello.jar", dir / "new"}).err,
              HasSubstr("is no archive"));
}

TEST_F(SetParameters, ChangesOneAndAddsAnother) {
  const std::string before = readFile(tail());
  const CommandResult result = pack({"set", bundle_, "jre_name=Java", "channel=a=b c"});
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_EQ(result.out, params() + '\n');
  EXPECT_EQ(readFile(params()).substr(64), records({"2", "jre_name", "Java", "channel", "a=b c"}));
  EXPECT_EQ(readFile(tail()), before);
}

TEST_F(SetParameters, RemovesAndKeepsWhatStandsBeforeTheMarker) {
  writeFile(params(), "text for others\n" + readFile(params()).substr(0, 64) +
                          records({"3", "a", "1", "b", "2", "a", "3"}));
  fs::permissions(params(), fs::perms(0640));
  EXPECT_EQ(pack({"set", params(), "--unset", "b", "a=4"}).status, 0);
  EXPECT_EQ(readFile(params()).substr(0, 16), "text for others\n");
  EXPECT_EQ(readFile(params()).substr(80), records({"1", "a", "4"}));
  EXPECT_EQ(modeOf(params()), 0640u);
}

TEST_F(SetParameters, LeavesTheFileAloneWhenAChangeMakesNoSense) {
  const std::string before = readFile(params());
  const std::vector<std::string> wrong[] = {{"novalue"},
                                            {"=x"},
                                            {"a=1", "force_spawn=yes"},
                                            {"show_no_ui=1"},
                                            {"jre_name=a-b"},
                                            {"jre_name="},
                                            {"jre_name=a:b"},
                                            {"jre_name=a/b"},
                                            {"jre_name=.."},
                                            {"update_url=https://"},
                                            {"update_url=https://x y/"},
                                            {"update_url=https://x/?a=b"},
                                            {"update_url=ftp://x"},
                                            {"--unset", "missing"},
                                            {std::string(1023, 'n') + "=x"}};
  for (std::vector<std::string> arguments : wrong) {
    arguments.insert(arguments.begin(), {"set", bundle_});
    const CommandResult result = pack(arguments);
    EXPECT_EQ(result.status, 1) << arguments.back();
    EXPECT_NE(result.err, "");
    EXPECT_EQ(readFile(params()), before);
  }
}

TEST_F(SetParameters, LeavesADamagedFileAlone) {
  const std::string marker = readFile(params()).substr(0, 64);
  for (const std::string& damaged :
       {records({"5", "jre_name", "JRE"}), records({"many", "a", "b"}), std::string("1\0a", 3),
        records({"1", std::string(1500, 'n'), "x"})}) {
    writeFile(params(), marker + damaged);
    for (const std::string& named : {bundle_, params()}) {
      const CommandResult result = pack({"set", named, "a=1"});
      EXPECT_EQ(result.status, 1);
      EXPECT_EQ(result.out, "");
      EXPECT_THAT(result.err,
                  HasSubstr(params() + ": error: is damaged, and stays as it is: the "));
      EXPECT_EQ(readFile(params()), marker + damaged);
    }
  }
}

TEST_F(SetParameters, TakesTheFileThatTheLauncherTakes) {
  const std::string other = bundle_ + "/Contents/Resources/params.lproj/locversion.plist";
  fs::create_directories(fs::path(other).parent_path());
  fs::rename(params(), other);
  EXPECT_EQ(pack({"set", bundle_, "a=b"}).out, other + '\n');
  fs::remove(other);
  EXPECT_EQ(pack({"set", bundle_, "a=b"}).status, 1);
}

TEST_F(DoctorOf, AGoodBundleHasNothingToComplainAboutButThePlatform) {
  const CommandResult result = pack({"doctor", bundle_});
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_THAT(result.out, HasSubstr("Nothing that would keep it from starting was found."));
  EXPECT_EQ(result.err, "a bundle for Linux\n" + bundle_ +
                            "/Contents/MacOS/Hello: warning: the executable is for Linux: a "
                            "Mac does not start it [platform]\n  -> for Macs pack it with --target "
                            "macos\n");
}

TEST_F(DoctorOf, ABundleWithAMissingPart) {
  const std::pair<std::string, std::string> cases[] = {
      {bundle_ + "/Contents/Info.plist", "there is no Info.plist"},
      {bundle_ + "/Contents/MacOS/Hello", "there is no executable"},
      {params(), "there is no parameters file"},
      {tail(), "there is no tail"}};
  for (const auto& [file, what] : cases) {
    const std::string content = readFile(file);
    fs::remove(file);
    const CommandResult result = pack({"doctor", bundle_});
    EXPECT_EQ(result.status, 1) << file;
    EXPECT_THAT(result.err, HasSubstr(what));
    writeFile(file, content);
  }
  EXPECT_EQ(pack({"doctor", project_.folder().str()}).status, 1);
}

// Packs what the configuration says and looks for a rule among what the doctor finds.
void expectComplaint(const std::string& changes, const std::string& rule, int status) {
  Project project;
  const CommandResult result = pack({"doctor", bundleOf(project, project.config(changes))});
  EXPECT_EQ(result.status, status) << result.err;
  EXPECT_THAT(result.err, HasSubstr('[' + rule + ']'));
}

TEST_F(DoctorOf, ConfigurationsThatPackAndStillWorryPeople) {
  expectComplaint("", "no-runtime", 1);
  expectComplaint("[update]\nurl = \"http://example.com/\"\n", "plain-http", 0);
  expectComplaint("[update]\ndynamic = true\n" + std::string(kRuntime), "update-url", 0);
  expectComplaint("[install]\nfor = \"all-users\"\n" + std::string(kRuntime), "no-elevation", 1);
}

TEST_F(DoctorOf, ProgramsOfAnotherSystem) {
  writeFile(bundle_ + "/Contents/MacOS/Hello", thinMachO(kX86));
  const CommandResult result = pack({"doctor", bundle_});
  EXPECT_EQ(result.status, 1);
  const std::string rest = " is for Linux, the launcher is for macOS (x86_64)";
  EXPECT_THAT(result.err,
              AllOf(HasSubstr("a bundle for macOS (x86_64)\n"), HasSubstr("error: lzma64" + rest),
                    HasSubstr("error: the runtime's java" + rest)));
  patch(tail(),
        "\x7f"
        "ELF, too",
        "text, too");
  EXPECT_THAT(pack({"doctor", bundle_}).err, HasSubstr("lzma64 is no program"));
}

TEST_F(DoctorOf, AnExecutableThatMayNotBeExecuted) {
  fs::permissions(bundle_ + "/Contents/MacOS/Hello", fs::perms(0644));
  EXPECT_THAT(pack({"doctor", bundle_}).err, HasSubstr("[not-executable]"));
}

TEST_F(DoctorOf, ATailInsideSignedCode) {
  std::string config = project_.config(kRuntime);
  config.replace(config.find("[bundle]\n"), 9, "[bundle]\ntail = \"executable\"\n");
  const std::string bundle = bundleOf(project_, config);
  fs::create_directory(bundle + "/Contents/_CodeSignature");
  EXPECT_THAT(pack({"doctor", bundle}).err, HasSubstr("[tail-in-signed-code]"));
}

TEST_F(DoctorOf, TailsMadeByHand) {
  const std::string entries =
      readFile(tail()).substr(readFile(tail()).find(std::string("0\0lzma64\0", 9)));
  const std::string key = "";
  const auto complaintsAbout = [&](const std::string& records, const std::string& content) {
    writeFile(tail(), records + content);
    return pack({"doctor", bundle_}).err;
  };
  EXPECT_THAT(
      complaintsAbout(records({"My-App", "3", "1", "1", "", key, "", "", "", "", ""}), entries),
      AllOf(HasSubstr("[name-dash]"), HasSubstr("[unsigned]"), HasSubstr("[signature]")));
  EXPECT_THAT(
      complaintsAbout(records({"Quillory", "x", "1", "1", "", key, "", "", "", "", ""}), entries),
      AllOf(HasSubstr("[name-taken]"), HasSubstr("[version]")));
  EXPECT_THAT(
      complaintsAbout(records({"jre", "3", "1", "1", "", key, "", "", "", "", ""}), entries),
      HasSubstr("[name-taken]"));
  EXPECT_THAT(complaintsAbout(records({"App", "3", "", "", "", key, "", "", "", "", ""}), ""),
              AllOf(HasSubstr("[no-updater]"), HasSubstr("[no-lzma64]"), HasSubstr("[no-runtime]"),
                    HasSubstr("[missing-entry]")));
}

TEST_F(Verify, StopsBeforeTheNextBlockWhenItIsInterrupted) {
  using namespace quillory::pack;
  const PublicKey key = PublicKey::load(Project::key());
  const PlainArchive archive(wholeFile(release("Hello-3")), true);
  Findings findings;
  EXPECT_EQ(verifyArchiveFile(archive, "a", &key, findings).trust, Trust::kVerified);
  const auto interrupted = [&] {
    noticeInterruptions();
    std::raise(SIGINT);
    try {
      verifyArchiveFile(archive, "a", &key, findings);
    } catch (const PackError& e) {
      std::cerr << e.finding().what << '\n';
      std::_Exit(7);
    }
  };
  EXPECT_EXIT(interrupted(), ::testing::ExitedWithCode(7), "interrupted");
}

TEST_F(Verify, AsTheDoctorReportsTheArchivesThatAreMissing) {
  writeFile(tail(), records({"App", "3", "17", "1", "", "", "", "", "", "", ""}));
  for (const char* command : {"verify", "doctor"}) {
    SCOPED_TRACE(command);
    const CommandResult result = pack({command, bundle_});
    EXPECT_EQ(result.status, 1);
    std::size_t last = 0;
    for (const std::string part : {"updater", "runtime", "application"}) {
      const std::size_t at = result.err.find("the tail has a version of the " + part +
                                             " and no archive at its place [missing-entry]");
      ASSERT_NE(at, std::string::npos) << part << '\n' << result.err;
      EXPECT_GE(at, last) << "in the order of the tail";
      last = at;
    }
  }
}

TEST_F(DoctorOf, ArchivesWithoutWhatAStartNeeds) {
  const std::string tool = records({"0", "lzma64", "4"}) +
                           "\x7f"
                           "ELF";
  const auto nested = [](const std::string& name, const std::string& content) {
    return records({"0", name, std::to_string(content.size())}) + content;
  };
  const std::string empty = records({"0", "x", "0"});
  const std::string nothing = records({""});
  const std::string launch = records({"6", "", "", "", "", "0", "7", "8", "1", "lib/a.jar", "0"});
  writeFile(tail(),
            records({"App", "3", "1", "1", "", "", "", "", "", "", ""}) + tool + empty +
                nested("GU.p2", nothing) + empty + empty + nested("JRE.p2", nothing) +
                nested("App.p2", records({"0", "QuilloryLaunch", std::to_string(launch.size())}) +
                                     launch + nothing) +
                empty);
  const CommandResult result = pack({"doctor", "-v", bundle_});
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(
      result.err,
      AllOf(HasSubstr("there is no launch file in the archive"),
            HasSubstr("the runtime has no Contents/Home/bin/java"), HasSubstr("[no-rt-jar]"),
            HasSubstr("the class path names \"lib/a.jar\", which is not in the archive"),
            HasSubstr("a heap of 8 MiB, more than the 7 that it allows"),
            HasSubstr("the launch file names no main class"), HasSubstr("[runtime-executable]")));
}

}  // namespace
}  // namespace quillory::testing
