#include "packager/commands/bundle_lint.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "tests/harness/child_process.h"
#include "tests/packager/hello_config.h"
#include "tests/packager/mach_o_bytes.h"
#include "tests/packager/rules_of.h"

namespace quillory::pack {
namespace {

namespace fs = std::filesystem;
using namespace std::string_literals;
using testing::bigEndian;
using testing::Names;
using testing::rulesOf;
using testing::writeFile;

using LintOfBundles = testing::HelloConfig;

TEST_F(LintOfBundles, LintApplicationPathsKeepsThePlacesOfTheInstallation) {
  ContentTree tree("application");
  for (const char* path : {"App.p2", "App.p2.l2", "lib/App.p2", "App.p2.old"}) {
    tree.addBytes("x", path);
  }
  EXPECT_EQ(rulesOf(lintApplicationPaths(tree)), (Names{"path-taken", "path-taken"}));
  EXPECT_EQ(rulesOf(lintApplicationPaths(ContentTree("application"))), Names{});
}

TEST_F(LintOfBundles, LintFilesTakesAGoodConfiguration) {
  writeFile(dir_ / "splash.png",
            "\x89PNG\r\n\x1a\n\0\0\0\x0dIHDR"s + bigEndian(3) + bigEndian(5) + "\x08\6\0\0\0"s);
  writeFile(dir_ / "icon.png",
            "\x89PNG\r\n\x1a\n\0\0\0\x0dIHDR"s + bigEndian(256) + bigEndian(256));
  writeFile(dir_ / "cacerts", "x");
  fs::create_symlink("nowhere", dir_ / "link");
  config_.application.splash = "splash.png";
  config_.application.icon = "icon.png";
  config_.application.files = {{"cacerts", ""}, {"link", ""}};
  config_.updater.cacerts = "cacerts";
  EXPECT_EQ(rulesOf(lintFiles(config_, {dir_ / "hello.jar"})), Names{});
}

TEST_F(LintOfBundles, LintFilesNamesTheLineOfEveryFileThatIsNotThere) {
  config_.application.splash = "splash.png";
  config_.application.icon = "icon.png";
  config_.application.files = {{"data", ""}};
  config_.updater.cacerts = "cacerts";
  const Findings findings = lintFiles(config_, {dir_ / "hello.jar"});
  std::vector<unsigned> lines;
  for (const Finding& finding : findings) {
    EXPECT_EQ(finding.rule, "missing-file");
    lines.push_back(finding.place.line);
  }
  EXPECT_EQ(lines, (std::vector<unsigned>{7, 8, 9, 12}));
}

TEST_F(LintOfBundles, LintFilesLooksIntoPictures) {
  writeFile(dir_ / "text", "text");
  config_.application.splash = "text";
  config_.application.icon = "text";
  const Findings findings = lintFiles(config_, {dir_ / "hello.jar"});
  ASSERT_EQ(rulesOf(findings), (Names{"picture", "picture"}));
  EXPECT_EQ(findings[0].what, dir_ / "text" + " is neither a PNG nor a JPEG picture");
  EXPECT_EQ(findings[1].what, dir_ / "text" + " is neither an icns nor a PNG picture");
}

TEST_F(LintOfBundles, LintFilesSaysWhereNoRuntimeDoesWhatTheManifestAsksFor) {
  writeFile(dir_ / "manifest", "Add-Opens: java.base/java.lang\n");
  ASSERT_EQ(testing::runChild(
                {"jar", "--update", "--file", dir_ / "hello.jar", "--manifest", dir_ / "manifest"})
                .exitStatus,
            0);
  EXPECT_EQ(rulesOf(lintFiles(config_, {dir_ / "hello.jar"})), (Names{"no-effect"}));
  config_.runtime.source = RuntimeSource::kJlink;
  EXPECT_EQ(rulesOf(lintFiles(config_, {dir_ / "hello.jar"})), Names{});
}

TEST_F(LintOfBundles, LintFilesLooksForTheMainClassInAllJars) {
  writeFile(dir_ / "broken.jar", "text");
  const std::string updater = QUILLORY_UPDATER_JAR;
  EXPECT_EQ(rulesOf(lintFiles(config_, {updater, dir_ / "hello.jar"})), Names{});
  EXPECT_EQ(rulesOf(lintFiles(config_, {dir_ / "hello.jar", updater})), Names{});
  EXPECT_EQ(rulesOf(lintFiles(config_, {updater})), Names{"main-class"});
  EXPECT_EQ(rulesOf(lintFiles(config_, {updater, dir_ / "broken.jar"})), Names{"jar"})
      << "nobody knows what is in it";
  fs::copy_file(dir_ / "hello.jar", dir_ / "a:b.jar");
  EXPECT_EQ(rulesOf(lintFiles(config_, {dir_ / "a:b.jar"})), Names{"name-colon"});
}

}  // namespace
}  // namespace quillory::pack
