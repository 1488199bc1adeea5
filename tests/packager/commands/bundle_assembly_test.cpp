// What a bundle is made of, file by file; the tail and the parameters as bytes written by hand.
#include "packager/commands/bundle_assembly.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "formats/markers.h"
#include "tests/harness/records.h"
#include "tests/harness/temp_dir.h"

namespace quillory::pack {
namespace {

namespace fs = std::filesystem;
using testing::readFile;
using testing::records;
using testing::TempDir;
using testing::writeFile;
using namespace std::string_literals;

class AssembleBundle : public ::testing::Test {
 protected:
  AssembleBundle() {
    config_.folder = dir_.str();
    config_.application.name = "Demo";
    config_.application.executable = "Demo";
    config_.application.displayVersion = "1.2";
    config_.application.identifier = "com.example.demo";
    config_.application.minSplashMillis = 1500;
    config_.install.type = "perm_user";
    config_.update.url = "https://example.com/u/";
    config_.update.urlKind = UpdateUrlKind::kStatic;
    for (const char* name : {"launcher", "lzma64", "elev_mac", "GU", "App", "JRE"})
      writeFile(dir_ / name, "<"s + name + ">");
    tools_.launcher = dir_ / "launcher";
    tools_.decompressors = {dir_ / "lzma64"};
    tools_.elevMac = dir_ / "elev_mac";
    fs::create_directory(dir_ / "work");
  }

  PackedParts parts() const {
    return {{"Quillory", "7", dir_ / "GU"}, {"Demo", "3", dir_ / "App"}, std::nullopt};
  }
  void assemble(const PackedParts& parts) {
    made_ = assembleBundle(config_, tools_, parts, "abcd", dir_ / "work");
  }
  std::string contents(const std::string& inside) const {
    return made_.bundle + "/Contents/" + inside;
  }

  TempDir dir_;
  Config config_;
  BundleTools tools_;
  MadeFiles made_;
};

std::string tailWithoutRuntime() {
  return records({"Demo", "3", "", "7", "1500", "abcd", "0", "perm_user", "", "",
                  "https://example.com/u/"}) +
         records({"0", "lzma64", "8"}) + "<lzma64>" + records({"0", "nativesplash.png", "0"}) +
         records({"0", "cacerts", "0"}) + records({"0", "verpatch.exe", "0"}) +
         records({"0", "GU.p2.l2", "4"}) + "<GU>" + records({"0", "App.p2.l2", "5"}) + "<App>" +
         records({"0", "App2", "0"});
}

TEST_F(AssembleBundle, PutsTheTailIntoAFileOfItsOwn) {
  assemble(parts());
  EXPECT_EQ(readFile(contents("MacOS/Demo")), "<launcher>");
  EXPECT_EQ(readFile(contents("Resources/Tail")), tailWithoutRuntime());
}

TEST_F(AssembleBundle, PutsTheTailBehindTheExecutableWhereThatIsAskedFor) {
  config_.bundle.tail = TailPlace::kExecutable;
  assemble(parts());
  EXPECT_EQ(readFile(contents("MacOS/Demo")), "<launcher>" + tailMarker() + tailWithoutRuntime());
  EXPECT_FALSE(fs::exists(contents("Resources/Tail")));
}

TEST_F(AssembleBundle, PutsARuntimeBetweenUpdaterAndApplication) {
  PackedParts all = parts();
  all.runtime = PackedPart{"JRE", "17", dir_ / "JRE"};
  assemble(all);
  const std::string tail = readFile(contents("Resources/Tail"));
  EXPECT_TRUE(tail.starts_with(records({"Demo", "3", "17", "7"})));
  EXPECT_TRUE(tail.ends_with(
      records({"0", "GU.p2.l2", "4"}) + "<GU>" + records({"0", "JRE.p2.l2", "5"}) + "<JRE>" +
      records({"0", "App.p2.l2", "5"}) + "<App>" + records({"0", "App2", "0"})));
  EXPECT_EQ(readFile(made_.release + "/Quillory-JRE-17-archive.p2.l2"), "<JRE>");
  EXPECT_EQ(readFile(made_.release + "/Quillory-JRE-version.txt"), "17\n");
}

TEST_F(AssembleBundle, LeavesRuntimeAndApplicationToTheReleaseFilesWhenOnline) {
  config_.bundle.isOnline = true;
  PackedParts all = parts();
  all.runtime = PackedPart{"JRE", "17", dir_ / "JRE"};
  assemble(all);
  const std::string tail = readFile(contents("Resources/Tail"));
  EXPECT_TRUE(tail.starts_with(records({"Demo", "", "", "7"})));
  EXPECT_TRUE(tail.ends_with(records({"0", "GU.p2.l2", "4"}) + "<GU>"));
  EXPECT_EQ(readFile(made_.release + "/Quillory-JRE-17-archive.p2.l2"), "<JRE>");
  EXPECT_EQ(readFile(made_.release + "/Quillory-Demo-3-archive.p2.l2"), "<App>");
}

TEST_F(AssembleBundle, LeavesADynamicUrlToTheParameters) {
  config_.update.urlKind = UpdateUrlKind::kDynamic;
  config_.jvm.forceSpawn = true;
  config_.parameters = {{"mine", "1"}};
  assemble(parts());
  EXPECT_EQ(
      readFile(contents("Resources/AppParams.excludefromsigning")),
      paramsMarker() + records({"5", "jre_name", "JRE", "update_url", "https://example.com/u/",
                                "force_spawn", "true", "error_dialog", "true", "mine", "1"}));
  EXPECT_NE(readFile(contents("Resources/Tail")).find(records({"perm_user", "", "", "D"})),
            std::string::npos);
}

TEST_F(AssembleBundle, LeavesItToTheConfigurationWhetherFailuresAreTold) {
  config_.parameters = {{"error_dialog", "false"}};
  assemble(parts());
  EXPECT_EQ(readFile(contents("Resources/AppParams.excludefromsigning")),
            paramsMarker() + records({"2", "jre_name", "JRE", "error_dialog", "false"}));
}

TEST_F(AssembleBundle, MakesTheProgramsExecutable) {
  assemble(parts());
  for (const char* program : {"MacOS/Demo", "Resources/elev_mac"}) {
    struct stat info {};
    ASSERT_EQ(stat(contents(program).c_str(), &info), 0) << program;
    EXPECT_EQ(info.st_mode & 0100U, 0100U) << program;
  }
  EXPECT_EQ(readFile(contents("Resources/elev_mac")), "<elev_mac>");
}

TEST_F(AssembleBundle, MakesTheReleaseFiles) {
  assemble(parts());
  EXPECT_EQ(readFile(made_.release + "/Quillory-Quillory-7-archive.p2.l2"), "<GU>");
  EXPECT_EQ(readFile(made_.release + "/Quillory-Quillory-version.txt"), "7\n");
  EXPECT_EQ(readFile(made_.release + "/Quillory-Demo-3-archive.p2.l2"), "<App>");
  EXPECT_EQ(readFile(made_.release + "/Quillory-Demo-version.txt"), "3\n");
}

}  // namespace
}  // namespace quillory::pack
