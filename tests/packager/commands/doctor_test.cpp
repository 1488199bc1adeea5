#include "packager/commands/doctor.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "packager/keys/signing_key.h"
#include "tests/harness/records.h"
#include "tests/packager/finished_bundle.h"
#include "tests/packager/mach_o_bytes.h"
#include "tests/packager/openssl.h"

namespace quillory::testing {
namespace {

namespace fs = std::filesystem;
using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::Not;

using DoctorOf = FinishedBundle;

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

TEST_F(DoctorOf, AToolOfNoBytes) {
  const std::string others = records({"0", "x", "0"});
  const std::string head = records({"App", "", "", "1", "", "", "", "", "", "", ""});
  writeFile(tail(), head + records({"0", "lzma64", "0"}) + others);
  EXPECT_THAT(pack({"doctor", bundle_}).err, HasSubstr("[no-lzma64]"));
  // One of a single byte is a tool, whatever else is said of it.
  writeFile(tail(), head + records({"0", "lzma64", "1"}) + "x" + others);
  EXPECT_THAT(pack({"doctor", bundle_}).err,
              AllOf(Not(HasSubstr("[no-lzma64]")), HasSubstr("lzma64 is no program")));
}

TEST_F(DoctorOf, AKeyThatNoSignatureFitsInto) {
  const auto complaintsWithKeyOf = [&](int bits) {
    const std::string key = project_ / std::to_string(bits);
    openssl({"genrsa", "-traditional", "-out", key, std::to_string(bits)});
    writeFile(tail(), records({"App", "", "", "1", "", pack::SigningKey::load(key).publicHex(), "",
                               "", "", "", ""}));
    return pack({"doctor", bundle_}).err;
  };
  EXPECT_THAT(complaintsWithKeyOf(1032), HasSubstr("[key-size]")) << "129 bytes";
  EXPECT_THAT(complaintsWithKeyOf(1040), Not(HasSubstr("[key-size]"))) << "130 bytes";
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
