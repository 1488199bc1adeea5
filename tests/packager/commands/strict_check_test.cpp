// "verify --strict" with a copy of the whole program beside stand-ins for what it packs.
#include "packager/commands/strict_check.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "tests/harness/child_process.h"
#include "tests/packager/finished_bundle.h"

namespace quillory::testing {
namespace {

namespace fs = std::filesystem;
using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::Not;

class VerifyStrictly : public FinishedBundle {
 protected:
  VerifyStrictly() {
    fs::create_directories(project_ / "programs");
    fs::copy_file(QUILLORY_PACK, project_ / "programs/quillory-pack");
    for (const char* name : {"launcher", "lzma64"}) {
      fs::copy_file(project_ / name, fs::path(project_ / "programs") / name);
    }
  }
  ChildResult verify(const std::string& bundle) const {
    return runChild({project_ / "programs/quillory-pack", "verify", "--strict", bundle});
  }
  std::string contents(const std::string& inside) const { return bundle_ + "/Contents/" + inside; }
  // What is wrong with the bundle, which then is so no longer.
  void expectComplaint(const std::string& file, const std::string& bytes, const std::string& what) {
    const bool isNew = !fs::exists(file);
    const std::string before = isNew ? "" : readFile(file);
    writeFile(file, bytes);
    const ChildResult result = verify(bundle_);
    EXPECT_EQ(result.exitStatus, 1) << file;
    EXPECT_THAT(result.err, AllOf(HasSubstr(what), HasSubstr("[not-ours]"), HasSubstr("NOT good")));
    if (isNew) {
      fs::remove(file);
    } else {
      writeFile(file, before);
    }
  }
};

TEST_F(VerifyStrictly, FindsABundleOfThisInstallationGood) {
  const ChildResult result = verify(bundle_);
  EXPECT_EQ(result.exitStatus, 0) << result.err;
  EXPECT_THAT(result.err, HasSubstr("no signature of ours covers Info.plist, the launcher"));
  EXPECT_THAT(result.err, Not(HasSubstr("--strict")));
  fs::create_directory(contents("_CodeSignature"));
  writeFile(contents("_CodeSignature/CodeResources"), "x");
  EXPECT_EQ(verify(bundle_).exitStatus, 0) << "a signature of the system's stands there";
}

TEST_F(VerifyStrictly, FindsEveryFileThatIsNotAsItWouldBe) {
  expectComplaint(contents("MacOS/Hello"), readFile(contents("MacOS/Hello")) + "x",
                  "launcher is not the one that this program packs");
  std::string tailBytes = readFile(tail());
  tailBytes.replace(tailBytes.find("ELF, too"), 8, "ELF, tow");
  expectComplaint(tail(), tailBytes, "lzma64 is not the one that this program packs");
  expectComplaint(contents("Resources/elev_mac"), "\x7F\x45LF",
                  "there is no elev_mac of our own to compare it with");
  writeFile(project_ / "programs/elev_mac", "another");
  expectComplaint(contents("Resources/elev_mac"), "\x7F\x45LF",
                  "elev_mac is not the one that this program packs");
  for (const char* file : {"MacOS/more", "Frameworks/libx.dylib", "Resources/more", "../beside"}) {
    expectComplaint(contents(file), "x", "no bundle of ours has such a file");
    fs::remove(contents("Frameworks"));
  }
}

TEST_F(VerifyStrictly, FindsAnInfoPlistThatSaysMoreOrSomethingElse) {
  const std::string plist = readFile(contents("Info.plist"));
  const std::string environment =
      "\t<key>LSEnvironment</key>\n\t<dict>\n\t\t<key>DYLD_INSERT_LIBRARIES</key>\n"
      "\t\t<string>/tmp/x</string>\n\t</dict>\n</dict>\n</plist>\n";
  const std::string end = "</dict>\n</plist>\n";
  ASSERT_TRUE(plist.ends_with(end));
  expectComplaint(contents("Info.plist"), plist.substr(0, plist.size() - end.size()) + environment,
                  "Info.plist is not as this program writes it");
  std::string other = plist;
  other.replace(other.find("<string>Hello</string>\n\t<key>CFBundlePackageType"), 22,
                "<string>Other</string>");
  expectComplaint(contents("Info.plist"), other,
                  "Info.plist names another application or version than the tail");
}

TEST_F(VerifyStrictly, ComparesALauncherWithItsTail) {
  std::string config = project_.config(kRuntime);
  config.replace(config.find("[bundle]\n"), 9, "[bundle]\ntail = \"executable\"\n");
  const std::string bundle = bundleOf(project_, config);
  EXPECT_EQ(verify(bundle).exitStatus, 0) << verify(bundle).err;
  const std::string file = bundle + "/Contents/MacOS/Hello";
  std::string bytes = readFile(file);
  writeFile(file, bytes.insert(24, "x"));
  EXPECT_THAT(verify(bundle).err, HasSubstr("launcher is not the one that this program packs"));
}

}  // namespace
}  // namespace quillory::testing
