#include "java/jre_bundle.h"

#include <gmock/gmock.h>

#include <cerrno>
#include <filesystem>
#include <string>
#include <vector>

#include "support/exchange.h"
#include "support/folder_listing.h"
#include "tests/harness/captured_log.h"
#include "tests/harness/scoped_replace.h"
#include "tests/harness/temp_dir.h"
#include "tests/java/jre_fixture.h"

namespace quillory {
namespace {

using namespace quillory::testing;
using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::IsEmpty;
namespace fs = std::filesystem;

class BundleTest : public ::testing::Test {
 protected:
  std::string prepare() { return prepareJreBundle(bundle_); }

  void writeBundle() {
    writeJavaHome(home_);
    writeFile(home_ + "/lib/jli/libjli.dylib", "library");
    writeFile(bundle_ + "/Contents/Info.plist", "plist");
    fs::create_directories(bundle_ + "/Contents/MacOS");
    fs::create_symlink("../Home/lib/jli/libjli.dylib", executable_);
  }

  std::vector<std::string> commands() const {
    static constexpr char kTag[] = "[LNS] Running ";
    std::vector<std::string> found;
    for (const std::string& message : log_.messages())
      if (message.starts_with(kTag)) found.push_back(message.substr(sizeof kTag - 1));
    return found;
  }

  TempDir dir_;
  std::string alias_ = dir_ / "Quillory-JRE-8-complete";
  std::string bundle_ = alias_ + ".plugin";
  std::string home_ = bundle_ + "/Contents/Home";
  std::string executable_ = bundle_ + "/Contents/MacOS/libjli.dylib";
  CapturedLog log_;
};

using PrepareJreBundle = BundleTest;
using ShapeJreBundle = BundleTest;
using IsHalfMade = BundleTest;

TEST_F(PrepareJreBundle, MovesTheHomeToTheAliasAndLinksToIt) {
  writeBundle();
  EXPECT_EQ(prepare(), alias_);
  EXPECT_THAT(listTree(dir_.str()),
              ElementsAreArray({
                  std::string("Quillory-JRE-8-complete.plugin/"),
                  std::string("Quillory-JRE-8-complete.plugin/Contents/"),
                  "Quillory-JRE-8-complete.plugin/Contents/Home -> " + alias_,
                  std::string("Quillory-JRE-8-complete.plugin/Contents/Info.plist"),
                  std::string("Quillory-JRE-8-complete.plugin/Contents/MacOS/"),
                  std::string("Quillory-JRE-8-complete.plugin/Contents/MacOS/libjli.dylib -> "
                              "../Home/lib/jli/libjli.dylib"),
                  std::string("Quillory-JRE-8-complete/"),
                  std::string("Quillory-JRE-8-complete/bin/"),
                  std::string("Quillory-JRE-8-complete/bin/java"),
                  std::string("Quillory-JRE-8-complete/bin/unpack200"),
                  std::string("Quillory-JRE-8-complete/lib/"),
                  std::string("Quillory-JRE-8-complete/lib/jli/"),
                  std::string("Quillory-JRE-8-complete/lib/jli/libjli.dylib"),
                  std::string("Quillory-JRE-8-complete/lib/jspawnhelper"),
                  std::string("Quillory-JRE-8-complete/lib/rt.jar"),
                  std::string("Quillory-JRE-8-complete/lib/security/"),
                  std::string("Quillory-JRE-8-complete/lib/security/cacerts"),
              }));
  EXPECT_EQ(readFile(executable_), "library") << "the relative link leads through the home";
}

TEST_F(PrepareJreBundle, LogsTheCommandsThatItStandsFor) {
  writeBundle();
  prepare();
  const std::string home = '"' + home_ + '"';
  const std::string executable = '"' + executable_ + '"';
  EXPECT_THAT(commands(),
              ElementsAre("ls \"" + bundle_ + "/Contents/MacOS\"\n",
                          "/usr/bin/readlink " + executable + '\n',
                          "mv " + home + "/* \"" + alias_ + "\"\n", "rm " + home + "/.* \n",
                          "rmdir " + home + '\n', "ln -s \"" + alias_ + "\" " + home + '\n',
                          "rm " + executable + '\n',
                          "ln -s \"../Home/lib/jli/libjli.dylib\" " + executable + '\n',
                          "chmod a+x \"" + alias_ + "/lib/jspawnhelper\"\n"));
}

TEST_F(PrepareJreBundle, LogsWhatItFound) {
  writeBundle();
  prepare();
  const std::string text = log_.text();
  std::size_t at = 0;
  for (const std::string& part :
       {std::string("OSX JRE initialisation"), "[OSX JRE] Alias JRE path is " + alias_ + "\n",
        std::string("[LNS] Running ls "), std::string("[LNS] Got executable name: libjli.dylib\n"),
        std::string("[LNS] Got target path: ../Home/lib/jli/libjli.dylib\n"),
        std::string("[LNS] Detected JRE bundle\n"), std::string("[LNS] Running mv "),
        std::string("[LNS] Running chmod a+x "), std::string("OSX JRE initialisation")}) {
    at = text.find(part, at);
    ASSERT_NE(at, std::string::npos) << part;
    at += part.size();
  }
}

TEST_F(PrepareJreBundle, KeepsExecuteBitsAndGivesThemToTheSpawnHelper) {
  writeBundle();
  fs::permissions(home_ + "/bin/java", fs::perms(0755));
  fs::permissions(home_ + "/lib/jspawnhelper", fs::perms(0640));
  prepare();
  EXPECT_EQ(modeOf(alias_ + "/bin/java"), 0755U);
  EXPECT_EQ(modeOf(alias_ + "/lib/jspawnhelper"), 0751U);
}

TEST_F(PrepareJreBundle, LeavesAFileAloneThatTheSpawnHelperIsALinkTo) {
  writeBundle();
  const std::string other = dir_ / "other";
  writeFile(other, "a file of somebody else's");
  fs::permissions(other, fs::perms(0640));
  fs::remove(home_ + "/lib/jspawnhelper");
  fs::create_symlink(other, home_ + "/lib/jspawnhelper");
  prepare();
  EXPECT_EQ(modeOf(other), 0640U);
}

TEST_F(PrepareJreBundle, LeavesTheSameWhenItIsRunTwice) {
  writeBundle();
  prepare();
  const std::vector<std::string> once = listTree(dir_.str());
  EXPECT_EQ(prepare(), alias_);
  EXPECT_EQ(listTree(dir_.str()), once);
  EXPECT_EQ(fs::read_symlink(home_), alias_);
}

TEST_F(PrepareJreBundle, PointsAHomeFromElsewhereAtTheAlias) {
  writeBundle();
  prepare();
  fs::remove(home_);
  writeFile(dir_ / "elsewhere/precious", "kept");
  fs::create_directory_symlink(dir_ / "elsewhere", home_);
  prepare();
  EXPECT_EQ(fs::read_symlink(home_), alias_);
  EXPECT_EQ(readFile(dir_ / "elsewhere/precious"), "kept");
  EXPECT_FALSE(fs::exists(alias_ + "/precious"));
}

TEST_F(PrepareJreBundle, MovesOnlyTheInnerJreOfAJdk) {
  writeJavaHome(home_ + "/jre");
  writeFile(home_ + "/bin/javac", "compiler");
  prepare();
  EXPECT_TRUE(log_.contains("[LNS] Detected subJRE in JDK bundle\n"));
  EXPECT_EQ(fs::read_symlink(home_ + "/jre"), alias_);
  EXPECT_EQ(readFile(home_ + "/bin/javac"), "compiler");
  EXPECT_TRUE(fs::exists(alias_ + "/bin/java"));
  EXPECT_FALSE(fs::exists(alias_ + "/jre"));
  EXPECT_TRUE(fs::exists(home_ + "/jre/lib/rt.jar"));

  const std::vector<std::string> once = listTree(dir_.str());
  prepare();
  EXPECT_EQ(listTree(dir_.str()), once);
}

TEST_F(PrepareJreBundle, MakesABundleOfAPlainJavaHome) {
  writeJavaHome(bundle_);
  prepare();
  EXPECT_THAT(fs::read_symlink(home_), alias_);
  EXPECT_TRUE(fs::is_directory(bundle_ + "/Contents/MacOS"));
  EXPECT_TRUE(fs::exists(alias_ + "/bin/java"));
  EXPECT_TRUE(fs::exists(alias_ + "/lib/rt.jar"));
  EXPECT_FALSE(fs::exists(bundle_ + "/bin"));

  const std::vector<std::string> once = listTree(dir_.str());
  prepare();
  EXPECT_EQ(listTree(dir_.str()), once);
}

TEST_F(PrepareJreBundle, GoesOnWithThePlainJavaHomeOfAStartThatWasKilled) {
  writeJavaHome(bundle_);
  fs::create_directories(home_);
  prepare();
  EXPECT_THAT(fs::read_symlink(home_), alias_);
  EXPECT_TRUE(fs::exists(alias_ + "/bin/java"));
  EXPECT_TRUE(fs::exists(alias_ + "/lib/rt.jar"));
  EXPECT_FALSE(fs::exists(bundle_ + "/bin"));
}

TEST_F(PrepareJreBundle, MovesOnlyTheInnerJreOfAPlainJdkHome) {
  writeJavaHome(bundle_);
  writeJavaHome(bundle_ + "/jre");
  prepare();
  EXPECT_EQ(fs::read_symlink(home_ + "/jre"), alias_);
  EXPECT_TRUE(fs::exists(home_ + "/bin/java"));
  EXPECT_TRUE(fs::exists(alias_ + "/bin/java"));
}

TEST_F(PrepareJreBundle, DropsHiddenEntriesOfTheHome) {
  writeBundle();
  writeFile(home_ + "/.DS_Store", "x");
  writeFile(home_ + "/.a", "x");
  writeFile(home_ + "/.cache/deep/file", "x");
  fs::create_symlink(dir_.path(), home_ + "/.link");
  prepare();
  EXPECT_EQ(fs::read_symlink(home_), alias_);
  EXPECT_FALSE(fs::exists(alias_ + "/.DS_Store"));
  EXPECT_FALSE(fs::exists(alias_ + "/.a"));
  EXPECT_TRUE(fs::exists(alias_ + "/bin/java"));
}

TEST_F(PrepareJreBundle, ReplacesWhatTheAliasHolds) {
  writeBundle();
  writeFile(alias_ + "/lib/old.jar", "old");
  writeFile(alias_ + "/bin", "a file where a folder comes");
  prepare();
  EXPECT_FALSE(fs::exists(alias_ + "/lib/old.jar"));
  EXPECT_TRUE(fs::exists(alias_ + "/bin/java"));
  EXPECT_EQ(fs::read_symlink(home_), alias_);
}

TEST_F(PrepareJreBundle, LinksAnExecutableThatIsAFileToThePluginLibraryFirst) {
  writeBundle();
  fs::remove(executable_);
  writeFile(executable_, "stub");
  writeFile(home_ + "/lib/libnpjp2.dylib", "plug-in");
  prepare();
  EXPECT_TRUE(log_.contains("[LNS] Got target path: \n"));
  EXPECT_EQ(fs::read_symlink(executable_), alias_ + "/lib/libnpjp2.dylib");
}

TEST_F(PrepareJreBundle, LinksAnExecutableThatIsAFileToTheLaunchLibraryNext) {
  writeBundle();
  fs::remove(executable_);
  writeFile(executable_, "stub");
  prepare();
  EXPECT_EQ(fs::read_symlink(executable_), alias_ + "/lib/jli/libjli.dylib");
}

TEST_F(PrepareJreBundle, WarnsWhenThereIsNothingToLinkTo) {
  writeBundle();
  fs::remove(executable_);
  fs::remove_all(home_ + "/lib/jli");
  writeFile(executable_, "stub");
  prepare();
  EXPECT_TRUE(log_.contains("[WARNING] Unable to find a link target for the JRE bundle!\n"));
  EXPECT_FALSE(fs::exists(fs::symlink_status(executable_)));
}

TEST_F(PrepareJreBundle, GivesABundleWithoutAnExecutableALinkOfTheTargetsName) {
  writeBundle();
  fs::remove(executable_);
  prepare();
  EXPECT_TRUE(log_.contains("[LNS] Got executable name: \n"));
  EXPECT_TRUE(log_.contains("[LNS] Running ln -s \"" + alias_ + "/lib/jli/libjli.dylib\" \"" +
                            bundle_ + "/Contents/MacOS/\"\n"));
  EXPECT_THAT(listTree(bundle_ + "/Contents/MacOS"),
              ElementsAre("libjli.dylib -> " + alias_ + "/lib/jli/libjli.dylib"));
}

TEST_F(PrepareJreBundle, MakesNoFolderForAnExecutable) {
  writeBundle();
  fs::remove_all(bundle_ + "/Contents/MacOS");
  prepare();
  EXPECT_TRUE(log_.contains("[LNS] Running ln -s \"" + alias_ + "/lib/jli/libjli.dylib\" \"" +
                            bundle_ + "/Contents/MacOS/\"\n"));
  EXPECT_FALSE(fs::exists(bundle_ + "/Contents/MacOS"));
  EXPECT_EQ(fs::read_symlink(home_), alias_);
}

TEST_F(PrepareJreBundle, LeavesSeveralExecutablesAsTheyAre) {
  writeBundle();
  writeFile(bundle_ + "/Contents/MacOS/another", "x");
  prepare();
  EXPECT_TRUE(log_.contains("[LNS] Got executable name: another\nlibjli.dylib\n"));
  // The command is told even where it would name no file.
  EXPECT_TRUE(log_.contains("[LNS] Running ln -s \"" + alias_ + "/lib/jli/libjli.dylib\" \"" +
                            bundle_ + "/Contents/MacOS/another\nlibjli.dylib\"\n"));
  EXPECT_THAT(listTree(bundle_ + "/Contents/MacOS"),
              ElementsAre("another", "libjli.dylib -> ../Home/lib/jli/libjli.dylib"));
}

TEST_F(PrepareJreBundle, DoesNotCountHiddenExecutables) {
  writeBundle();
  writeFile(bundle_ + "/Contents/MacOS/.DS_Store", "x");
  prepare();
  EXPECT_TRUE(log_.contains("[LNS] Got executable name: libjli.dylib\n"));
}

TEST_F(PrepareJreBundle, GoesOnWithoutAHome) {
  fs::create_directories(bundle_ + "/Contents");
  EXPECT_EQ(prepare(), alias_);
  EXPECT_EQ(fs::read_symlink(home_), alias_);
  EXPECT_THAT(listTree(alias_), IsEmpty());
}

TEST_F(PrepareJreBundle, GoesOnWithoutABundle) {
  EXPECT_EQ(prepare(), alias_);
  EXPECT_FALSE(fs::exists(bundle_));
}

TEST_F(PrepareJreBundle, LeavesAPathWithoutTheSuffixAlone) {
  for (const char* const path : {"", "/", ".plugin", "/.plugin", "plain"})
    EXPECT_EQ(prepareJreBundle(path), path);
  writeJavaHome(dir_ / "plain");
  const std::vector<std::string> before = listTree(dir_.str());
  prepareJreBundle(dir_ / "plain");
  EXPECT_EQ(listTree(dir_.str()), before);
}

TEST_F(PrepareJreBundle, TakesNamesThatAShellWouldExpand) {
  for (const char* const name : {"a b", "$HOME", "`touch bad`", "q\"x", "back\\slash", "*"}) {
    SCOPED_TRACE(name);
    alias_ = dir_.str() + '/' + name + "/JRE";
    bundle_ = alias_ + ".plugin";
    home_ = bundle_ + "/Contents/Home";
    executable_ = bundle_ + "/Contents/MacOS/libjli.dylib";
    writeBundle();
    EXPECT_EQ(prepare(), alias_);
    EXPECT_EQ(fs::read_symlink(home_), alias_);
    EXPECT_TRUE(fs::exists(alias_ + "/bin/java"));
  }
  EXPECT_FALSE(fs::exists("bad"));
}

TEST_F(ShapeJreBundle, KeepsTheContentAwayFromTheAliasUntilItIsPublished) {
  writeBundle();
  const ShapedJre jre = shapeJreBundle(bundle_);
  EXPECT_EQ(jre.alias, alias_);
  EXPECT_THAT(listTree(alias_), IsEmpty());
  EXPECT_TRUE(fs::exists(jre.content + "/bin/java"));
  EXPECT_EQ(fs::read_symlink(home_), alias_);

  publishJre(jre);
  EXPECT_TRUE(fs::exists(home_ + "/bin/java"));
  EXPECT_FALSE(fs::exists(fs::symlink_status(jre.content)));
  EXPECT_EQ(modeOf(alias_), 0777U);
}

TEST_F(ShapeJreBundle, LogsAndLeavesWhatThePreparationDoes) {
  writeBundle();
  prepare();
  const std::vector<std::string> tree = listTree(dir_.str());
  const std::string text = log_.text();
  fs::remove_all(alias_);
  fs::remove_all(bundle_);

  const CapturedLog again;
  writeBundle();
  publishJre(shapeJreBundle(bundle_));
  EXPECT_EQ(listTree(dir_.str()), tree);
  EXPECT_EQ(again.text(), text);
}

TEST_F(ShapeJreBundle, ReplacesTheWholeAlias) {
  for (const bool canExchange : {true, false}) {
    SCOPED_TRACE(canExchange);
    const ScopedReplace exchange(
        exchangeCalls.exchange,
        canExchange ? exchangeCalls.exchange : +[](const char*, const char*) { return EINVAL; });
    fs::remove_all(bundle_);
    writeBundle();
    writeFile(dir_ / "elsewhere/precious", "kept");
    writeFile(alias_ + "/.old", "old");
    fs::create_directory_symlink(dir_ / "elsewhere", alias_ + "/out");
    const ShapedJre jre = shapeJreBundle(bundle_);
    EXPECT_TRUE(fs::exists(alias_ + "/.old")) << "it works until then";
    publishJre(jre);
    EXPECT_FALSE(fs::exists(alias_ + "/.old"));
    EXPECT_TRUE(fs::exists(alias_ + "/bin/java"));
    EXPECT_EQ(readFile(dir_ / "elsewhere/precious"), "kept");
    EXPECT_FALSE(fs::exists(fs::symlink_status(jre.content)));
    EXPECT_FALSE(fs::exists(fs::symlink_status(alias_ + "/out")));
  }
}

TEST_F(ShapeJreBundle, TakesAnAliasThatIsALinkAway) {
  writeBundle();
  writeFile(dir_ / "elsewhere/precious", "kept");
  fs::create_directory_symlink(dir_ / "elsewhere", alias_);
  publishJre(shapeJreBundle(bundle_));
  EXPECT_FALSE(fs::is_symlink(alias_));
  EXPECT_TRUE(fs::exists(alias_ + "/bin/java"));
  EXPECT_THAT(namesIn(dir_ / "elsewhere"), ElementsAre("precious"));
}

TEST_F(ShapeJreBundle, GoesOnWhereItWasCutShort) {
  writeBundle();
  shapeJreBundle(bundle_);
  publishJre(shapeJreBundle(bundle_));
  EXPECT_TRUE(fs::exists(alias_ + "/bin/java"));
  EXPECT_EQ(listTree(bundle_ + "/Contents").size(), 4U) << "Home, Info.plist, MacOS and its link";
}

TEST_F(IsHalfMade, TellsWhatWasPublished) {
  writeBundle();
  EXPECT_TRUE(isHalfMade(bundle_)) << "a bundle without an alias";
  writeFile(alias_ + "/bin/java", "moved before the rest of the home");
  EXPECT_TRUE(isHalfMade(alias_));
  prepare();
  EXPECT_FALSE(isHalfMade(alias_));
  const std::string home = bundle_ + "/Contents/Home";
  fs::remove(home);
  EXPECT_TRUE(isHalfMade(alias_)) << "without the link that the JVM is loaded through";
  fs::remove_all(bundle_);
  EXPECT_FALSE(isHalfMade(alias_)) << "somebody has put it there";
}

TEST_F(IsHalfMade, TellsTheHomeOfAJdkFromOneThatWasNotMoved) {
  writeJavaHome(home_ + "/jre");
  EXPECT_TRUE(isHalfMade(alias_));
  prepare();
  EXPECT_FALSE(isHalfMade(alias_));
}

}  // namespace
}  // namespace quillory
