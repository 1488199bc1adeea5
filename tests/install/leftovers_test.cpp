#include "install/leftovers.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "support/folder_listing.h"
#include "tests/harness/captured_log.h"
#include "tests/harness/temp_dir.h"

namespace quillory::testing {
namespace {

namespace fs = std::filesystem;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class Leftovers : public ::testing::Test {
 protected:
  void clear() { clearLeftovers(master_.str()); }

  TempDir master_;
  TempDir elsewhere_;
  CapturedLog log_;
};

TEST_F(Leftovers, AreNoneInAnOrdinaryInstallation) {
  for (const char* const name :
       {"Quillory-Quillory-7-complete/QuilloryLaunch", "Quillory-JRE-8-complete/bin/java",
        "Quillory-JRE-8-complete.plugin/Contents/Info.plist", "QYAppsSharedConfig/x", "logs/x",
        "Quillory-Quillory-7-complete/Quillory-JRE-version.txt",
        "Quillory-App-3-complete/bin/own.part", "Quillory-App-3-complete/.unfinished-own"})
    writeFile(master_ / name, "");
  EXPECT_FALSE(hasLeftovers(master_.str()));
  clear();
  EXPECT_EQ(log_.text(), "");
  EXPECT_TRUE(fs::exists(master_ / "Quillory-App-3-complete/bin/own.part"));
  EXPECT_TRUE(fs::exists(master_ / "Quillory-App-3-complete/.unfinished-own"));
}

TEST_F(Leftovers, AreTemporaryFolders) {
  writeFile(master_ / "QuilloryTemp-1700000000-12-app/deep/file", "");
  EXPECT_TRUE(hasLeftovers(master_.str()));
  clear();
  EXPECT_FALSE(hasLeftovers(master_.str()));
  EXPECT_TRUE(fs::is_empty(master_.path()));
  EXPECT_EQ(log_.text(), "[Extractor] Removed " + (master_ / "QuilloryTemp-1700000000-12-app") +
                             ", which an earlier start had left\n");
}

TEST_F(Leftovers, AreNothingOfAnotherName) {
  const std::vector<std::string> names = {
      "QuilloryTemp-",      "QuilloryTemp--2-app",  "QuilloryTemp-1-2-app2", "QuilloryTemp-1-2",
      "QuilloryTemp-1-app", "QuilloryTemp-x-2-app", "XQuilloryTemp-1-2-app"};
  for (const std::string& name : names) writeFile(master_ / (name + "/file"), "");
  EXPECT_FALSE(hasLeftovers(master_.str()));
  clear();
  EXPECT_EQ(namesIn(master_.str()).size(), names.size());
}

TEST_F(Leftovers, AreWhatWasSetAside) {
  writeFile(master_ / ".replaced/Quillory-App-3-complete/file", "old");
  EXPECT_TRUE(hasLeftovers(master_.str()));
  clear();
  EXPECT_THAT(namesIn(master_.str()), ElementsAre("Quillory-App-3-complete"));
}

TEST_F(Leftovers, AreUnfinishedFilesOfComponents) {
  const std::string jre = master_ / "Quillory-JRE-8-complete";
  const std::string gu = master_ / "Quillory-Quillory-7-complete";
  for (const std::string& file :
       {jre + "/bin/.unfinished-Ab12Cd", jre + "/bin/.java-4711", jre + "/bin/java",
        jre + "/bin/.java-x", jre + "/lib/security/.unfinished-Ab12Cd",
        jre + "/lib/security/cacerts", gu + "/Quillory-JRE-version.txt.4711.part",
        gu + "/Quillory-JRE-version.txt.x.part", gu + "/QuilloryLaunch"})
    writeFile(file, "");
  clear();
  EXPECT_THAT(namesIn(jre + "/bin"), ElementsAre(".java-x", "java"));
  EXPECT_THAT(namesIn(jre + "/lib/security"), ElementsAre("cacerts"));
  EXPECT_THAT(namesIn(gu), ElementsAre("Quillory-JRE-version.txt.x.part", "QuilloryLaunch"));
}

TEST_F(Leftovers, AreNeverReachedThroughALink) {
  writeFile(elsewhere_ / ".unfinished-Ab12Cd", "kept");
  writeFile(elsewhere_ / "bin/.unfinished-Ab12Cd", "kept");
  writeFile(elsewhere_ / "security/.unfinished-Ab12Cd", "kept");
  fs::create_directory_symlink(elsewhere_.path(), master_ / "QuilloryTemp-1-2-app");
  fs::create_directory_symlink(elsewhere_.path(), master_ / "Quillory-A-1-complete");
  fs::create_directory(master_ / "Quillory-B-1-complete");
  fs::create_directory_symlink(elsewhere_ / "bin", master_ / "Quillory-B-1-complete/bin");
  fs::create_directory_symlink(elsewhere_.path(), master_ / "Quillory-B-1-complete/lib");
  writeFile(master_ / "Quillory-C-1-complete/bin/x", "");
  fs::create_symlink(elsewhere_ / ".unfinished-Ab12Cd",
                     master_ / "Quillory-C-1-complete/bin/.unfinished-Ab12Cd");
  clear();
  EXPECT_EQ(readFile(elsewhere_ / ".unfinished-Ab12Cd"), "kept");
  EXPECT_EQ(readFile(elsewhere_ / "bin/.unfinished-Ab12Cd"), "kept");
  EXPECT_EQ(readFile(elsewhere_ / "security/.unfinished-Ab12Cd"), "kept");
}

}  // namespace
}  // namespace quillory::testing
