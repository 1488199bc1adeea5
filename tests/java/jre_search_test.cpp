#include "java/jre_search.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "support/durable.h"
#include "tests/harness/captured_log.h"
#include "tests/harness/records.h"
#include "tests/harness/temp_dir.h"
#include "tests/java/jre_fixture.h"
#include "tests/support/recorded_shell.h"

namespace quillory {
namespace {

using namespace quillory::testing;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::StartsWith;
namespace fs = std::filesystem;

// A machine with a search path of its own, which holds no java, and an installed updater.
class SearchTest : public ::testing::Test {
 protected:
  void SetUp() override {
    fs::create_directories(dir_ / "tools");
    for (const char* const tool : {"sh", "which", "cp", "chmod", "dirname"})
      fs::create_symlink(fs::canonical("/usr/bin/" + std::string(tool)), tools_ + '/' + tool);
    installUpdater();
    question_.requiredJavaVersion = "8";
    question_.isCompatible = compatibilityClassOf(master_);
    question_.places = {applet_, autoTestJava_};
  }

  void installUpdater() {
    writeFile(master_ + "/Quillory-Quillory-7-complete/QuilloryLaunch",
              records({"3", "Main", "OnUpdate", "App", "icns", "0", "0", "0", "0", "0",
                       "example.Compatibility"}));
  }

  // The answer of `which java` is a link in the path that leads to `java`.
  void putInPath(const std::string& java) { fs::create_symlink(java, tools_ + "/java"); }

  SystemJreSearch searchWhole() {
    const ScopedEnvironment path("PATH", tools_);
    return copySystemJre(master_, question_);
  }
  /// The folder of the copy, or "".
  std::string search() {
    const SystemJreSearch search = searchWhole();
    EXPECT_FALSE(search.isCutShort);
    return search.copy.value_or("");
  }

  TempDir dir_;
  std::string tools_ = dir_ / "tools";
  std::string master_ = dir_ / "master";
  std::string system_ = dir_ / "system/jre8";
  std::string applet_ = dir_ / "Applet.plugin";
  std::string autoTestJava_ = dir_ / "auto/Contents/Home/bin/java";
  SystemJreQuestion question_;
  CapturedLog log_;
};

using CopySystemJre = SearchTest;

TEST_F(CopySystemJre, CopiesTheJreOfTheJavaInThePath) {
  writeJavaHome(system_);
  fs::create_symlink("rt.jar", system_ + "/lib/link.jar");
  putInPath(system_ + "/bin/java");
  const std::string copy = search();
  EXPECT_THAT(copy, StartsWith(master_ + "/QuilloryTemp-"));
  EXPECT_EQ(modeOf(copy + "/bin/java"), 0755U);
  EXPECT_EQ(readFile(copy + "/lib/link.jar"), "classes");
  EXPECT_FALSE(fs::is_symlink(copy + "/lib/link.jar")) << "links are copied as what they lead to";
  EXPECT_TRUE(fs::exists(system_ + "/bin/java")) << "the system's own stays";
}

TEST_F(CopySystemJre, LogsItsWay) {
  writeJavaHome(system_);
  putInPath(system_ + "/bin/java");
  const std::string copy = search();
  const std::string java = system_ + "/bin/java";
  const std::string text = log_.text();
  std::size_t at = 0;
  for (const std::string& part :
       {"[JRESearch] 'which java' returned '" + tools_ + "/java'\n",
        "[JRESearch] Followed link " + tools_ + "/java -> " + java + "\n",
        std::string("[JRESearch] Searching for 'bin' occurrence\n"),
        std::string("[JRESearch] Done searching for 'bin'\n"),
        "[JRESearch] Trimmed possibleJavaExe is " + system_ + "/\n",
        "[JRESearch] Removed final slash: possibleJavaExe is " + system_ + "\n",
        "[JRESearch] Final possibleJavaExe is " + system_ + "\n",
        "[JRESearch] Looking at JRE " + java + "\n",
        std::string("[Extractor] Checking JRE version requirements: 8 vs required 8\n"),
        std::string("[Extractor] Checking JRE version requirements: 8 vs required 8\n"),
        "[JRESearch] JRE unpack200 exists " + system_ + "/bin/unpack200\n",
        std::string("[JRESearch] JRE is valid, copying...\n"),
        "[JRESearch] Running cp -LRf \"" + system_ + "\" \"" + copy + "\"\n",
        "[JRESearch] Running chmod -R 755 \"" + copy + "/bin\"\n"}) {
    at = text.find(part, at);
    ASSERT_NE(at, std::string::npos) << part;
    at += part.size();
  }
}

TEST_F(CopySystemJre, AsksTheCompatibilityClassOfTheNewestUpdater) {
  writeJavaHome(system_);
  writeScript(
      system_ + "/bin/java",
      "case \"$1\" in -version) echo 'java version \"1.8.0\"' ;; *) printf '%s|' \"$@\" > " +
          (dir_ / "asked") + "; exit 72 ;; esac");
  putInPath(system_ + "/bin/java");
  EXPECT_THAT(search(), Not(IsEmpty()));
  EXPECT_THAT(readFile(dir_ / "asked"),
              StartsWith("-cp||example.Compatibility|" + master_ +
                         "/Quillory-Quillory-7-complete/QYLaunchProperties-"));
}

TEST_F(CopySystemJre, AsksTheNewestUpdaterThatIsWholeInAHardenedBundle) {
  writeJavaHome(system_);
  putInPath(system_ + "/bin/java");
  std::vector<std::string> asked;
  question_.isCompatible = [&asked](const std::string& updater, const std::string&) {
    asked.push_back(updater);
    return false;
  };
  fs::create_directories(master_ + "/Quillory-Quillory-9-complete");
  writeFile(master_ + "/Quillory-Quillory-8-complete/QuilloryLaunch", "");
  search();
  question_.onlyWhole = true;
  search();
  EXPECT_THAT(asked, ElementsAre("Quillory-Quillory-9-complete", "Quillory-Quillory-7-complete"));
  fs::remove_all(master_ + "/Quillory-Quillory-7-complete");
  EXPECT_TRUE(searchWhole().isCutShort);
}

TEST_F(CopySystemJre, RefusesWhatTheCompatibilityClassRefuses) {
  for (const int status : {0, 1, 71, 73}) {
    writeJavaHome(system_);
    writeScript(system_ + "/bin/java", javaScript("1.8.0", status));
    fs::remove(tools_ + "/java");
    putInPath(system_ + "/bin/java");
    EXPECT_EQ(search(), "") << status;
    EXPECT_EQ(log_.messages().back(), "[JRESearch] JRE failed compatibility test\n");
  }
}

TEST_F(CopySystemJre, RefusesWhenTheCompatibilityClassIsKilled) {
  writeJavaHome(system_);
  writeScript(system_ + "/bin/java",
              "case \"$1\" in -version) echo 'java version \"1.8.0\"' ;; *) kill -9 $$ ;; esac");
  putInPath(system_ + "/bin/java");
  EXPECT_EQ(search(), "");
}

TEST_F(CopySystemJre, AsksAboutTheJavaThatItFound) {
  writeJavaHome(system_);
  putInPath(system_ + "/bin/java");
  std::vector<std::string> asked;
  question_.isCompatible = [&](const std::string& updater, const std::string& java) {
    asked = {updater, java};
    return false;
  };
  EXPECT_EQ(search(), "");
  EXPECT_THAT(asked, ElementsAre("Quillory-Quillory-7-complete", system_ + "/bin/java"));
}

TEST_F(CopySystemJre, IsCutShortWithoutAnUpdaterToAsk) {
  writeJavaHome(system_);
  putInPath(system_ + "/bin/java");
  fs::remove_all(master_);
  fs::create_directories(master_);
  const SystemJreSearch search = searchWhole();
  EXPECT_TRUE(search.isCutShort);
  EXPECT_EQ(search.copy, std::nullopt);
  EXPECT_EQ(log_.messages().back(), "[JRESearch] " + std::string(30, '*') +
                                        " No latest App version even after download!\n");
}

TEST_F(CopySystemJre, TakesTheAppletPluginWhenThePathHasNoJava) {
  writeJavaHome(applet_ + "/Contents/Home");
  const std::string copy = search();
  EXPECT_TRUE(log_.contains("[JRESearch] 'which java' returned ''\n"));
  EXPECT_TRUE(
      log_.contains("[JRESearch] A JRE does not seem to exist here.\n"
                    "[JRESearch] Looking at JRE " +
                    applet_ + "/Contents/Home/bin/java\n"));
  EXPECT_FALSE(log_.contains("Looking at JRE /bin/java"));
  EXPECT_TRUE(fs::exists(copy + "/Contents/Home/bin/java"));
}

TEST_F(CopySystemJre, TakesTheAppletPluginForAJavaWithoutUnpack200) {
  writeJavaHome(system_);
  fs::remove(system_ + "/bin/unpack200");
  putInPath(system_ + "/bin/java");
  writeJavaHome(applet_ + "/Contents/Home");
  EXPECT_TRUE(fs::exists(search() + "/Contents/Home/bin/java"));
}

TEST_F(CopySystemJre, TakesTheAppletPluginForAJavaThatIsTooOld) {
  writeJavaHome(system_, "1.7.0_80");
  putInPath(system_ + "/bin/java");
  writeJavaHome(applet_ + "/Contents/Home", "1.8.0");
  EXPECT_TRUE(fs::exists(search() + "/Contents/Home/bin/java"));
  EXPECT_TRUE(log_.contains("7 vs required 8\n"));
}

TEST_F(CopySystemJre, FindsNothingOnAMachineWithoutJava) {
  EXPECT_EQ(search(), "");
  EXPECT_EQ(log_.messages().back(), "[JRESearch] JRE does not exist or does not have unpack200\n");
  EXPECT_THAT(listTree(master_), Not(::testing::Contains(HasSubstr("Temp"))));
}

TEST_F(CopySystemJre, FindsNothingWhereBothPlacesAreTooOld) {
  writeJavaHome(system_, "1.7.0_80");
  putInPath(system_ + "/bin/java");
  writeJavaHome(applet_ + "/Contents/Home", "1.6.0_65");
  EXPECT_EQ(search(), "");
}

TEST_F(CopySystemJre, TakesTheAutoTestJavaInsteadOfThePath) {
  writeJavaHome(system_);
  putInPath(system_ + "/bin/java");
  writeJavaHome(dir_ / "auto/Contents/Home");
  writeFile(dir_ / "auto/Contents/Home/mark", "auto test");
  question_.isAutoTest = true;
  const std::string copy = search();
  EXPECT_TRUE(log_.contains("AutoTesting - will fake possible jave exe to '" + autoTestJava_ +
                            "'\n[JRESearch] 'which java' returned '" + autoTestJava_ + "'\n"));
  EXPECT_EQ(readFile(copy + "/mark"), "auto test");
}

TEST_F(CopySystemJre, CopiesAFolderThatAShellWouldExpand) {
  system_ = dir_ / "sys $HOME `touch bad` \"q\"/jre";
  writeJavaHome(system_);
  putInPath(system_ + "/bin/java");
  const std::string copy = search();
  EXPECT_TRUE(fs::exists(copy + "/lib/rt.jar"));
  EXPECT_EQ(modeOf(copy + "/bin/java"), 0755U);
  EXPECT_TRUE(log_.contains("[JRESearch] Running cp -LRf \"" + system_ + "\" \"" + copy + "\"\n"));
  EXPECT_FALSE(fs::exists("bad"));
}

TEST_F(CopySystemJre, DoesNotUseACopyWhoseCopyingWasKilled) {
  writeJavaHome(system_);
  putInPath(system_ + "/bin/java");
  // As system() tells it: of the shell that became cp, and of one that had cp as its child.
  static constexpr int kKilled = 9;
  static constexpr int kKilledBelowTheShell = (128 + 9) << 8;
  for (const int status : {kKilled, kKilledBelowTheShell}) {
    const RecordedShell shell(status);
    const SystemJreSearch found = searchWhole();
    EXPECT_FALSE(found.copy.has_value());
    EXPECT_FALSE(found.isCutShort);
  }
  // What could not be read is cp's own to tell, and the rest is used.
  const RecordedShell shell(1 << 8);
  EXPECT_TRUE(searchWhole().copy.has_value());
}

TEST_F(CopySystemJre, CopiesOnceMoreWhereSomethingCouldNotBeCopied) {
  writeJavaHome(system_);
  fs::create_symlink("nowhere", system_ + "/lib/broken");
  putInPath(system_ + "/bin/java");
  const std::string copy = search();
  EXPECT_TRUE(fs::exists(copy + "/lib/rt.jar"));
  EXPECT_FALSE(fs::exists(copy + "/jre")) << "not into what the first one has left";
  const std::string line = "[JRESearch] Running cp -LRf \"" + system_ + "\" \"" + copy + "\"\n";
  EXPECT_EQ(std::count(log_.messages().begin(), log_.messages().end(), line), 2);
}

TEST_F(CopySystemJre, FlushesTheCopyBeforeItIsMovedToItsPlace) {
  writeJavaHome(system_);
  putInPath(system_ + "/bin/java");
  static std::vector<std::string> flushed;
  flushed.clear();
  const ScopedReplace recorded(
      durableCalls.flushTree, +[](int, const std::string& path) {
        flushed.push_back(path);
        return 0;
      });
  const std::string copy = search();
  EXPECT_THAT(flushed, ::testing::ElementsAre(copy));
}

TEST_F(CopySystemJre, TakesNoFolderOfTheWholeSystemForAJre) {
  question_.isAutoTest = true;
  for (const char* prefix : {"", "/usr", "/usr/local", "/opt/homebrew", "/opt/local"}) {
    question_.places.autoTestJava = std::string(prefix) + "/bin/quillory-no-such-java";
    EXPECT_EQ(search(), "");
  }
  for (const char* prefix : {"", "/usr", "/usr/local", "/opt/homebrew", "/opt/local"})
    EXPECT_FALSE(log_.contains("Looking at JRE " + std::string(prefix) + "/bin/java"));
  question_.places.autoTestJava = "/usr/lib/bin/quillory-no-such-java";
  EXPECT_EQ(search(), "");
  EXPECT_TRUE(log_.contains("Looking at JRE /usr/lib/bin/java")) << "an ordinary folder";
}

TEST_F(CopySystemJre, EndsWhereLinksLeadInCircles) {
  // Relative targets are taken as read: from this folder they name each other.
  const fs::path before = fs::current_path();
  fs::current_path(dir_.path());
  fs::create_symlink("b", "a");
  fs::create_symlink("a", "b");
  EXPECT_THAT(jreFolderOfJava("a"), ::testing::AnyOf("a", "b"));
  fs::current_path(before);
  const auto isFollowing = [](const std::string& message) {
    return message.starts_with("[JRESearch] Followed link ");
  };
  EXPECT_EQ(std::count_if(log_.messages().begin(), log_.messages().end(), isFollowing), 64);
}

TEST(JreFolderOfJava, CutsAtTheLastBin) {
  static constexpr struct {
    const char* java;
    const char* folder;
  } kCases[] = {{"/nowhere/usr/bin/java", "/nowhere/usr"},
                {"/opt/cabinet/java", "/opt/ca"},
                {"/opt/bin/jre/bin/java", "/opt/bin/jre"},
                {"/opt/jre/java", "/opt/jre/java"},
                {"/opt/jre//bin/java", "/opt/jre/"},
                {"/bin/quillory-no-such-java", ""},
                {"bin/java", ""},
                {"", ""}};
  for (const auto& [java, folder] : kCases) EXPECT_EQ(jreFolderOfJava(java), folder) << java;
}

TEST(JreFolderOfJava, YieldsUsrForAToolOfTheSystem) {
  // A plain file of every system, as a `java` there would be.
  EXPECT_EQ(jreFolderOfJava("/usr/bin/env"), "/usr");
}

TEST(JreFolderOfJava, TakesARelativeTargetAsItIsRead) {
  TempDir dir;
  fs::create_symlink("../lib/jvm/bin/java", dir / "java");
  EXPECT_EQ(jreFolderOfJava(dir / "java"), "../lib/jvm");
}

TEST(JreFolderOfJava, LogsNoTrimmingWithoutBin) {
  CapturedLog log;
  jreFolderOfJava("/opt/jre/java");
  EXPECT_EQ(log.text(),
            "[JRESearch] Searching for 'bin' occurrence\n[JRESearch] Done searching for 'bin'\n"
            "[JRESearch] Final possibleJavaExe is /opt/jre/java\n");
}

}  // namespace
}  // namespace quillory
