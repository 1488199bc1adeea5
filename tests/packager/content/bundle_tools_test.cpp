// Where programs lie that no configuration names is tested with copies of the whole program: see
// commands/bundle_target_test.cpp.
#include "packager/content/bundle_tools.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "formats/markers.h"
#include "packager/content/program_folder.h"
#include "tests/packager/mac_programs.h"
#include "tests/packager/rules_of.h"

namespace quillory::pack {
namespace {

namespace fs = std::filesystem;
using ::testing::HasSubstr;
using testing::kArm;
using testing::kElf;
using testing::kX86;
using testing::rulesOf;
using testing::thinMachO;
using testing::writeFile;

// A configuration that names all of them.
class FindBundleTools : public testing::MacPrograms {
 protected:
  FindBundleTools() {
    writeFile(dir_ / "updater.jar", "jar");
    config_.file = "quillory.toml";
    config_.folder = dir_.str();
    config_.bundle.launcher = "launcher";
    config_.bundle.decompressors[0] = "lzma64";
    config_.bundle.elevMac = "elev_mac";
    config_.updater.jar = "updater.jar";
    config_.places = {{"bundle.launcher", {"quillory.toml", 2}},
                      {"bundle.lzma64", {"quillory.toml", 3}},
                      {"bundle.elev-mac", {"quillory.toml", 4}},
                      {"updater.jar", {"quillory.toml", 6}}};
  }

  // Everything that is wrong with the tools for macOS.
  Findings findings() const {
    try {
      findBundleTools(config_, Target::kMacOS);
    } catch (const RejectedInput& e) {
      return e.findings();
    }
    return {};
  }

  Config config_;
};

TEST_F(FindBundleTools, TakesTheFilesThatTheConfigurationNamesFromItsFolder) {
  const BundleTools tools = findBundleTools(config_, Target::kMacOS);
  EXPECT_EQ(tools.launcher, dir_ / "launcher");
  EXPECT_EQ(tools.decompressors[0], dir_ / "lzma64");
  EXPECT_EQ(tools.elevMac, dir_ / "elev_mac");
  EXPECT_EQ(tools.updaterJar, dir_ / "updater.jar");
}

TEST_F(FindBundleTools, TakesTheUpdaterThatComesWithUs) {
  config_.updater.jar = "";
  EXPECT_EQ(findBundleTools(config_, Target::kMacOS).updaterJar, QUILLORY_UPDATER_JAR);
}

TEST_F(FindBundleTools, WantsTheProgramsOfAnUpdaterThatLooksForUpdates) {
  EXPECT_EQ(findBundleTools(config_, Target::kMacOS).updateProgram, "");
  config_.update.hasClient = true;
  config_.bundle.updateProgram = "quillory-update";
  config_.bundle.updateWindow = "quillory-update-window";
  config_.places["bundle.quillory-update-window"] = {"quillory.toml", 7};
  writeFile(dir_ / "quillory-update", thinMachO(kX86));
  EXPECT_EQ(findings().at(0).what, "there is no file " + dir_ / "quillory-update-window");
  EXPECT_EQ(findings().at(0).place.line, 7u);
  writeFile(dir_ / "quillory-update-window", kElf);
  EXPECT_EQ(rulesOf(findings()), std::vector<std::string>{"platform"});
  writeFile(dir_ / "quillory-update-window", thinMachO(kX86));
  const BundleTools tools = findBundleTools(config_, Target::kMacOS);
  EXPECT_EQ(tools.updateProgram, dir_ / "quillory-update");
  EXPECT_EQ(tools.updateWindow, dir_ / "quillory-update-window");
}

TEST_F(FindBundleTools, NamesTheKeyOfAFileThatIsNotThere) {
  for (const auto& [name, key, line] :
       {std::tuple{"launcher", "bundle.launcher", 2u}, std::tuple{"lzma64", "bundle.lzma64", 3u},
        std::tuple{"elev_mac", "bundle.elev-mac", 4u},
        std::tuple{"updater.jar", "updater.jar", 6u}}) {
    fs::rename(dir_ / name, dir_ / "away");
    const Findings found = findings();
    ASSERT_EQ(found.size(), 1u) << name;
    EXPECT_EQ(asText(found[0]),
              "quillory.toml:" + std::to_string(line) + ": error: there is no file " + dir_ / name +
                  " [missing-file]\n  -> build it, or correct the name; without " + key +
                  " the one that comes with us is taken");
    fs::rename(dir_ / "away", dir_ / name);
  }
}

TEST_F(FindBundleTools, RefusesAllProgramsForAnotherSystemAtOnce) {
  writeFile(dir_ / "launcher", kElf);
  writeFile(dir_ / "elev_mac", thinMachO(kArm));
  const Findings found = findings();
  ASSERT_EQ(rulesOf(found), (std::vector<std::string>{"platform", "platform"}));
  EXPECT_EQ(asText(found[0]),
            "quillory.toml:2: error: " + dir_ / "launcher" +
                " is for Linux, and the bundle is for macOS [platform]\n"
                "  -> --target says what the bundle is for, and without bundle.launcher the "
                "program for it is taken");
  EXPECT_EQ(found[1].place.line, 4u);
  EXPECT_THAT(found[1].what, HasSubstr("is for macOS (arm64), and the bundle needs it for x86_64"));
}

TEST_F(FindBundleTools, RefusesWhatIsNoProgram) {
  writeFile(dir_ / "lzma64", "text");
  ASSERT_EQ(rulesOf(findings()), std::vector<std::string>{"platform"});
  EXPECT_EQ(findings()[0].what, dir_ / "lzma64" + " is no program");
  EXPECT_EQ(findings()[0].advice, "build it again");
}

TEST_F(FindBundleTools, RefusesALauncherWithATail) {
  writeFile(dir_ / "launcher", thinMachO(kX86) + "code" + tailMarker() + "tail");
  ASSERT_EQ(rulesOf(findings()), std::vector<std::string>{"tail-marker"});
  EXPECT_EQ(asText(findings()[0]),
            "quillory.toml:2: error: " + dir_ / "launcher" +
                " holds a tail already, which it would read instead of this one [tail-marker]\n"
                "  -> take the launcher as it was built, not one out of a bundle");
}

TEST_F(FindBundleTools, DoesWithoutAnElevationToolOfThisSystem) {
  if (nativeTarget() != Target::kLinux) {
    GTEST_SKIP() << "the stand-ins are programs for Linux";
  }
  for (const char* name : {"launcher", "lzma64"}) {
    writeFile(dir_ / name, kElf);
  }
  config_.bundle.elevMac = "";
  EXPECT_EQ(findBundleTools(config_, Target::kLinux).elevMac, "");
  config_.bundle.decompressors[0] = "";
  try {
    findBundleTools(config_, Target::kLinux);
    FAIL();
  } catch (const PackError& e) {
    EXPECT_THAT(asText(e.finding()), HasSubstr("error: for Linux there is no lzma64 in "));
    EXPECT_THAT(asText(e.finding()),
                HasSubstr("\n  -> build them; files elsewhere are named with bundle.lzma64"));
  }
}

TEST(OwnFile, LiesBesideTheProgram) {
  EXPECT_EQ(ownFile("nobody/has.this"), "");
  const std::string name = fs::path(QUILLORY_THIS_PROGRAM).filename();
  EXPECT_TRUE(fs::equivalent(ownFile(name), QUILLORY_THIS_PROGRAM));
}

}  // namespace
}  // namespace quillory::pack
