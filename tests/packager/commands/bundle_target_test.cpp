// Bundles for another system than this one: which programs and runtimes they get, and which not.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <nlohmann/json.hpp>

#include "formats/markers.h"
#include "packager/content/program_folder.h"
#include "packager/writing/tail_writer.h"
#include "support/owned.h"
#include "tests/harness/child_process.h"
#include "tests/harness/records.h"
#include "tests/packager/mach_o_bytes.h"
#include "tests/packager/project_fixture.h"

namespace quillory::testing {
namespace {

namespace fs = std::filesystem;
using namespace std::string_literals;
using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

constexpr char kOnline[] = "[update]\nurl = \"https://example.com/\"\n";

// The project with programs and a runtime for macOS.
class BundleTarget : public ::testing::Test {
 protected:
  BundleTarget() {
    writeFile(project_ / "launcher", universalMachO({kX86, kArm}));
    writeFile(project_ / "lzma64", universalMachO({kX86, kArm}) + "lzma64");
    writeFile(project_ / "elev_mac", thinMachO(kX86) + "elev");
    writeFile(project_ / "jre/bin/java", universalMachO({kX86, kArm}));
    writeFile(project_ / "jre/lib/server/libjvm.dylib", universalMachO({kX86, kArm}));
    fs::rename(project_ / "jre/lib/libjli.so", project_ / "jre/lib/libjli.dylib");
  }

  std::string config(const std::string& extra) const {
    std::string text = project_.config(extra);
    return text.insert(text.find("lzma64 ="), "elev-mac = \"elev_mac\"\n");
  }
  // Without [bundle], which names the programs.
  std::string configWithoutPrograms(const std::string& extra) const {
    std::string text = project_.config(extra);
    return text.erase(0, text.find("[updater]"));
  }
  CommandResult packFor(const std::string& target, const std::string& config) const {
    return pack({"bundle", "--target", target, project_.writeConfig(config)});
  }
  // A configuration that is not accepted: the rule, and nothing written.
  std::string errorOf(const std::string& target, const std::string& config,
                      const std::string& rule) const {
    const CommandResult result = packFor(target, config);
    EXPECT_EQ(result.status, 3) << result.err;
    EXPECT_THAT(result.err, HasSubstr('[' + rule + ']'));
    EXPECT_FALSE(fs::exists(project_ / "dist/Hello.app"));
    return result.err;
  }
  // Copies of quillory-pack and of what it needs from `share` and of the programs of this project.
  std::string installed(const std::string& bin, const std::string& share,
                        const std::string& programs) const {
    for (const std::string& folder : {bin, share, programs}) {
      fs::create_directories(project_ / folder);
    }
    fs::copy_file(QUILLORY_PACK, project_ / (bin + "/quillory-pack"));
    fs::copy_file(QUILLORY_UPDATER_JAR, project_ / (share + "/updater.jar"));
    for (const char* name : {"launcher", "lzma64", "elev_mac"}) {
      fs::copy_file(project_ / name, fs::path(project_ / programs) / name);
    }
    return project_ / (bin + "/quillory-pack");
  }

  Project project_;
  const std::string bundle_ = project_ / "dist/Hello.app";
};

// By rules that are not ours: what a signature seals cannot be changed after it.
TEST_F(BundleTarget, HasItsParametersOnAMacWhereNoCodeSignatureSealsThem) {
  ASSERT_EQ(packFor("macos", config(kRuntime)).status, 0);
  const std::string params = bundle_ + "/Contents/Resources/params.lproj/locversion.plist";
  ASSERT_TRUE(fs::exists(params));
  const ChildResult sealed =
      runChild({"/usr/bin/python3", "-B", QUILLORY_SEALED_FILES, bundle_ + "/Contents"});
  EXPECT_EQ(sealed.out, "MacOS/Hello\nResources/Tail\nResources/elev_mac\n") << sealed.err;
  ASSERT_EQ(pack({"set", bundle_, "channel=beta"}).status, 0);
  EXPECT_THAT(readFile(params), HasSubstr(records({"channel", "beta"})));
  EXPECT_THAT(pack({"doctor", bundle_}).err, Not(HasSubstr("[sealed-parameters]")));
  fs::rename(params, bundle_ + "/Contents/Resources/AppParams.excludefromsigning");
  EXPECT_THAT(pack({"doctor", bundle_}).err, HasSubstr("[sealed-parameters]"));
}

TEST_F(BundleTarget, IsExplainedWhereASystemHasPutItSomewhereElse) {
  ASSERT_EQ(packFor("macos", config(kRuntime)).status, 0);
  EXPECT_THAT(pack({"doctor", bundle_}).err, Not(HasSubstr("[translocated]")));
  const std::string place = project_ / "AppTranslocation/0F2A/d";
  fs::create_directories(place);
  fs::rename(bundle_, place + "/Hello.app");
  EXPECT_THAT(pack({"doctor", place + "/Hello.app"}).err, HasSubstr("[translocated]"));
}

TEST_F(BundleTarget, AsksOnAMacForWhatItsUpdateUrlNeeds) {
  errorOf("macos", config(std::string(kRuntime) + "[macos]\nplist = { CFBundleName = \"x\" }\n"),
          "parameter");
  const std::string keys = "[macos]\nplist = { NSCameraUsageDescription = \"To see you.\" }\n";
  const CommandResult result =
      packFor("macos", config(kRuntime + keys + "[update]\ndynamic = true\n"));
  ASSERT_EQ(result.status, 0) << result.err;
  EXPECT_THAT(result.err, HasSubstr("[plain-http]"));
  EXPECT_THAT(readFile(bundle_ + "/Contents/Info.plist"),
              AllOf(HasSubstr("NSAllowsArbitraryLoads"), HasSubstr("<string>To see you.</string>"),
                    HasSubstr("NSRequiresAquaSystemAppearance")));
}

TEST_F(BundleTarget, OpensItsOwnDocumentsOnAMac) {
  const std::string documents =
      "[[documents]]\nname = \"Letter\"\nextensions = [\"letter\"]\nicon = \"letter.icns\"\n";
  const std::string icns = "icns\0\0\0\x10icp4\0\0\0\x08"s;
  errorOf("macos", config(kRuntime + documents), "missing-file");
  writeFile(project_ / "letter.icns", icns);
  ASSERT_EQ(packFor("macos", config(kRuntime + documents)).status, 0);
  EXPECT_EQ(readFile(bundle_ + "/Contents/Resources/Hello-letter.icns"), icns);
  EXPECT_THAT(readFile(bundle_ + "/Contents/Info.plist"),
              AllOf(HasSubstr("<string>Hello-letter.icns</string>"),
                    HasSubstr("LSArchitecturePriority"), HasSubstr("<string>x86_64</string>")));
}

TEST_F(BundleTarget, PutsProgramsForMacOSIntoTheBundle) {
  const CommandResult result = packFor("macos", config(kRuntime));
  ASSERT_EQ(result.status, 0) << result.err;
  EXPECT_THAT(result.err, HasSubstr(", for macOS; the files for the update URL"));
  EXPECT_EQ(readFile(bundle_ + "/Contents/MacOS/Hello"), readFile(project_ / "launcher"));
  EXPECT_EQ(readFile(bundle_ + "/Contents/Resources/elev_mac"), readFile(project_ / "elev_mac"));
  const std::string lzma64 = readFile(project_ / "lzma64");
  EXPECT_THAT(readFile(bundle_ + "/Contents/Resources/Tail"),
              HasSubstr(records({"0", "lzma64", std::to_string(lzma64.size())}) + lzma64));
}

TEST_F(BundleTarget, IsSaidToScripts) {
  const std::string path = project_.writeConfig(config(kRuntime));
  const CommandResult packed = pack({"bundle", "--json", "--target", "macos", path});
  EXPECT_EQ(nlohmann::json::parse(packed.out)["target"], "macos");
  const auto inspected = nlohmann::json::parse(pack({"inspect", "--json", bundle_}).out);
  EXPECT_EQ(inspected["content"]["target"], "macos");
  EXPECT_EQ(inspected["content"]["architectures"], (std::vector<std::string>{"x86_64", "arm64"}));
  EXPECT_EQ(nlohmann::json::parse(pack({"doctor", "--json", bundle_}).out)["target"], "macos");
}

TEST_F(BundleTarget, IsWhatDoctorAndVerifyFindGood) {
  ASSERT_EQ(packFor("macos", config(kRuntime)).status, 0);
  EXPECT_EQ(pack({"verify", bundle_}).status, 0);
  const CommandResult doctor = pack({"doctor", bundle_});
  EXPECT_EQ(doctor.status, 0) << doctor.err;
  EXPECT_EQ(doctor.err, "a bundle for macOS (x86_64, arm64)\n" + bundle_ +
                            ": warning: the bundle's code is not signed: macOS refuses it when it "
                            "was downloaded [not-signed]\n  -> docs/packaging.md tells how to sign "
                            "and notarize it\n");
  EXPECT_THAT(pack({"inspect", bundle_}).out,
              HasSubstr("target: macos\narchitectures:\n  x86_64\n  arm64\n"));
}

TEST_F(BundleTarget, FindsProgramsBesideTheBuildThatItIsFrom) {
  const std::string program =
      installed("build/release/bin", "build/release/share/quillory", "build/macos/bin");
  project_.writeConfig(configWithoutPrograms(kOnline));
  const ChildResult result =
      runChild({program, "bundle", "--target", "macos", project_ / "quillory.toml"});
  ASSERT_EQ(result.exitStatus, 0) << result.err;
  EXPECT_EQ(readFile(bundle_ + "/Contents/MacOS/Hello"), readFile(project_ / "launcher"));
  EXPECT_EQ(readFile(bundle_ + "/Contents/Resources/elev_mac"), readFile(project_ / "elev_mac"));
}

TEST_F(BundleTarget, FindsProgramsInItsInstallation) {
  const std::string program =
      installed("usr/bin", "usr/share/quillory", "usr/share/quillory/macos");
  project_.writeConfig(configWithoutPrograms(kOnline));
  const ChildResult result =
      runChild({program, "bundle", "--target", "macos", project_ / "quillory.toml"});
  ASSERT_EQ(result.exitStatus, 0) << result.err;
  EXPECT_EQ(readFile(bundle_ + "/Contents/MacOS/Hello"), readFile(project_ / "launcher"));
}

TEST_F(BundleTarget, SaysAllThatIsMissingWhereItLookedAndWhatToDo) {
  if (pack::nativeTarget() == pack::Target::kMacOS) {
    GTEST_SKIP() << "the programs for macOS are those beside it";
  }
  const std::string program = installed("a/b/bin", "a/b/share/quillory", "a/macos/bin");
  fs::remove(project_ / "a/macos/bin/lzma64");
  fs::remove(project_ / "a/macos/bin/elev_mac");
  project_.writeConfig(configWithoutPrograms(kOnline));
  const ChildResult result =
      runChild({program, "bundle", "-q", "--target", "macos", project_ / "quillory.toml"});
  EXPECT_EQ(result.exitStatus, 1);
  EXPECT_EQ(result.err, "error: for macOS there is no lzma64, elev_mac in " +
                            (project_ / "a/macos/bin") + " or " +
                            (project_ / "a/b/share/quillory/macos") +
                            "\n  -> scripts/build-macos.sh makes them; files elsewhere are named "
                            "with bundle.lzma64, bundle.elev-mac\n");
}

TEST_F(BundleTarget, TakesTheProgramsThatTheConfigurationNames) {
  const std::string program = installed("a/b/bin", "a/b/share/quillory", "a/macos/bin");
  writeFile(project_ / "a/macos/bin/lzma64", thinMachO(kX86) + "the one of the build");
  std::string text = configWithoutPrograms(kOnline);
  project_.writeConfig("[bundle]\nlzma64 = \"lzma64\"\n" + text);
  const ChildResult result =
      runChild({program, "bundle", "--target", "macos", project_ / "quillory.toml"});
  ASSERT_EQ(result.exitStatus, 0) << result.err;
  EXPECT_THAT(readFile(bundle_ + "/Contents/Resources/Tail"),
              AllOf(HasSubstr(readFile(project_ / "lzma64")), Not(HasSubstr("of the build"))));
}

TEST_F(BundleTarget, RefusesProgramsForAnotherSystem) {
  const std::string elf =
      "\x7F"
      "ELF";
  for (const char* name : {"launcher", "lzma64", "elev_mac"}) {
    const std::string good = readFile(project_ / name);
    const std::pair<std::string, std::string> wrong[] = {
        {elf, "is for Linux, and the bundle is for macOS"},
        {thinMachO(kArm), "is for macOS (arm64), and the bundle needs it for x86_64"},
        {universalMachO({kArm}), "is for macOS (arm64), and the bundle needs it for x86_64"},
        {good.substr(0, 31), "is no program"},
        {"", "is no program"}};
    for (const auto& [content, reason] : wrong) {
      writeFile(project_ / name, content);
      EXPECT_THAT(errorOf("macos", config(kOnline), "platform"),
                  AllOf(HasSubstr("quillory.toml:"),
                        HasSubstr("error: " + (project_ / name) + ' ' + reason)));
    }
    writeFile(project_ / name, good);
  }
}

TEST_F(BundleTarget, RefusesProgramsForMacOSInABundleForLinux) {
  const std::string text = errorOf("linux", config(kOnline), "platform");
  for (const char* name : {"launcher", "lzma64", "elev_mac"}) {
    EXPECT_THAT(text, HasSubstr((project_ / name) + " is for macOS"));
  }
  EXPECT_THAT(text, HasSubstr("-> --target says what the bundle is for, and without "
                              "bundle.launcher the program for it is taken"));
}

TEST_F(BundleTarget, IsThisSystemWhenNoneIsNamed) {
  project_.writeConfig(config(kOnline));
  const ChildResult result = runChild({QUILLORY_PACK, "bundle", project_ / "quillory.toml"});
  EXPECT_EQ(result.exitStatus, pack::nativeTarget() == pack::Target::kMacOS ? 0 : 3) << result.err;
}

TEST_F(BundleTarget, NeedsNoRuntimeForAnOnlineInstaller) {
  const CommandResult result = packFor("macos", config(kOnline));
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_EQ(result.err.find("[architecture]"), std::string::npos);
}

TEST_F(BundleTarget, RefusesARuntimeForAnotherSystem) {
  writeFile(project_ / "jre/bin/java",
            "\x7F"
            "ELF");
  EXPECT_THAT(
      errorOf("macos", config(kRuntime), "platform"),
      AllOf(HasSubstr((project_ / "jre/bin/java") + " is for Linux, and the bundle is for macOS"),
            HasSubstr("-> in [runtime]: folder, with a runtime for macOS, or jlink with "
                      "jmods, the folder of that name in a JDK for macOS; without "
                      "[runtime] the first start downloads one")));
  writeFile(project_ / "jre/bin/java", thinMachO(kArm));
  EXPECT_THAT(errorOf("macos", config(kRuntime), "platform"), HasSubstr("needs it for x86_64"));
  writeFile(project_ / "launcher",
            "\x7F"
            "ELF");
  fs::copy_file(project_ / "launcher", project_ / "lzma64", fs::copy_options::overwrite_existing);
  EXPECT_THAT(errorOf("linux", project_.config(kRuntime), "platform"),
              HasSubstr("jre/bin/java is for macOS (arm64), and the bundle is for Linux"));
}

TEST_F(BundleTarget, RefusesARuntimeWithoutTheVirtualMachineForMacOS) {
  fs::rename(project_ / "jre/lib/server/libjvm.dylib", project_ / "jre/lib/server/libjvm.so");
  EXPECT_THAT(errorOf("macos", config(kRuntime), "platform"),
              HasSubstr("there is no " + (project_ / "jre/lib/server/libjvm.dylib") +
                        ": it is no runtime for macOS"));
  // Whole JDKs of Java 8 have it in a runtime of their own.
  fs::create_directories(project_ / "jre/jre/lib/server");
  fs::rename(project_ / "jre/lib/server/libjvm.so", project_ / "jre/jre/lib/server/libjvm.dylib");
  EXPECT_EQ(packFor("macos", config(kRuntime)).status, 0);
}

TEST_F(BundleTarget, WarnsOfARuntimeForFewerProcessorsThanTheLauncher) {
  writeFile(project_ / "jre/bin/java", thinMachO(kX86));
  const CommandResult result = packFor("macos", config(kRuntime));
  EXPECT_EQ(result.status, 0);
  EXPECT_THAT(result.err, HasSubstr("quillory.toml:16: warning: the launcher runs on arm64 too"));
  EXPECT_THAT(pack({"doctor", bundle_}).err, HasSubstr("[architecture]"));
}

TEST_F(BundleTarget, RefusesToLinkTheModulesOfThisSystemForAnother) {
  const std::string other = pack::nameOf(
      pack::nativeTarget() == pack::Target::kMacOS ? pack::Target::kLinux : pack::Target::kMacOS);
  if (other == "linux") {
    GTEST_SKIP() << "the programs of this test are for macOS";
  }
  EXPECT_THAT(errorOf(other, config("[runtime]\njlink = true\n"), "platform"),
              AllOf(HasSubstr("jlink links the modules of this system, and the bundle is for "),
                    HasSubstr("jmods, the folder of that name in a JDK for ")));
  EXPECT_THAT(errorOf(other, config("[runtime]\njlink = true\njmods = \"jre\"\n"), "missing-file"),
              HasSubstr((project_ / "jre") + " holds no java.base.jmod"));
}

TEST_F(BundleTarget, RefusesALauncherOutOfABundle) {
  std::string text = config(kOnline);
  text.replace(text.find("[bundle]\n"), 9, "[bundle]\ntail = \"executable\"\n");
  ASSERT_EQ(packFor("macos", text).status, 0);
  fs::copy_file(bundle_ + "/Contents/MacOS/Hello", project_ / "launcher",
                fs::copy_options::overwrite_existing);
  fs::remove_all(project_ / "dist");
  EXPECT_THAT(errorOf("macos", config(kOnline), "tail-marker"),
              HasSubstr("launcher holds a tail already"));
}

// The launcher's own search, which takes no byte twice.
std::string behindTheMarker(const std::string& file) {
  const OwnedFile stream(std::fopen(file.c_str(), "rb"));
  const OwnedText marker(allocAndInitMarker());
  if (scanToMarker(stream.get(), marker.get(), kTailMarkerLength, "Tail") == kMarkerNotFound) {
    return "no marker";
  }
  std::string text(8, '\0');
  text.resize(std::fread(text.data(), 1, text.size(), stream.get()));
  return text;
}

TEST_F(BundleTarget, PutsATailBehindEveryLauncherWhereTheLauncherFindsIt) {
  std::string text = config(kOnline);
  text.replace(text.find("[bundle]\n"), 9, "[bundle]\ntail = \"executable\"\n");
  const std::string marker = tailMarker();
  const std::string image = universalMachO({kX86, kArm});
  for (const std::size_t length : {0u, 1u, 2u, 50u, 127u}) {
    const std::string launcher = image + marker.substr(0, length);
    writeFile(project_ / "launcher", launcher);
    ASSERT_EQ(packFor("macos", text).status, 0);
    const std::string executable = bundle_ + "/Contents/MacOS/Hello";
    EXPECT_THAT(readFile(executable), StartsWith(launcher + (length == 0 ? "" : "\xFF") + marker));
    EXPECT_EQ(behindTheMarker(executable), records({"Hello", "3"})) << length;
    EXPECT_FALSE(fs::exists(bundle_ + "/Contents/Resources/Tail"));
  }
  EXPECT_EQ(marker.find('\xFF'), std::string::npos);
}

}  // namespace
}  // namespace quillory::testing
