// What "cmake --install" makes, where there is nothing else: a root folder with the system's
// programs and this installation in it, but neither sources nor build.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <set>

#include "tests/harness/child_process.h"
#include "tests/harness/private_root.h"

namespace quillory::testing {
namespace {

namespace fs = std::filesystem;
using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::IsSupersetOf;
using ::testing::Not;

constexpr char kManualPages[] = "share/man/man1";
constexpr char kDocuments[] = "share/doc/quillory";

// Everything below a folder, as paths relative to it; folders end with a slash.
std::set<std::string> treeOf(const fs::path& folder) {
  std::set<std::string> paths;
  for (const fs::directory_entry& entry : fs::recursive_directory_iterator(folder)) {
    paths.insert(fs::relative(entry.path(), folder).string() + (entry.is_directory() ? "/" : ""));
  }
  return paths;
}

void install(const std::string& prefix) {
  const ChildResult result =
      runChild({QUILLORY_CMAKE, "--install", QUILLORY_BUILD_DIR, "--prefix", prefix});
  ASSERT_EQ(result.exitStatus, 0) << result.err;
}

ChildResult uninstall(const std::string& prefix) {
  return runChild({QUILLORY_SOURCE_DIR "/scripts/install.sh", "--prefix", prefix, "--uninstall"});
}

ChildResult runWith(const std::string& variable, const std::string& value,
                    const std::vector<std::string>& command) {
  ChildOptions options;
  options.environment = {{variable, value}};
  return runChild(command, options);
}

bool isThere(const std::string& program) {
  return runChild({"sh", "-c", "command -v " + program}).exitStatus == 0;
}

class Installation : public ::testing::Test {
 protected:
  void SetUp() override { install(prefix_); }

  std::string installed(const std::string& path) const { return prefix_ + '/' + path; }

  TempDir folder_;
  const std::string prefix_ = folder_ / "prefix";
};

TEST_F(Installation, HasEverythingWhereASystemLooksForIt) {
  EXPECT_THAT(treeOf(prefix_), IsSupersetOf({"bin/quillory-pack",
                                             "bin/lzma64",
                                             "share/quillory/launcher",
                                             "share/quillory/elev_mac",
                                             "share/quillory/class-lists/javafx.classlist",
                                             "share/quillory/class-lists/swing.classlist",
                                             "share/quillory/updater.jar",
                                             "share/quillory/quillory-update-window",
                                             "share/quillory/quillory-api.jar",
                                             "share/quillory/quillory-api-sources.jar",
                                             "share/quillory/quillory-api-javadoc.jar",
                                             "share/quillory/quillory-update",
                                             "share/man/man1/quillory-pack.1",
                                             "share/man/man1/lzma64.1",
                                             "share/man/man1/quillory-update.1",
                                             "share/bash-completion/completions/quillory-pack",
                                             "share/zsh/site-functions/_quillory-pack",
                                             "share/fish/vendor_completions.d/quillory-pack.fish",
                                             "share/doc/quillory/README.md",
                                             "share/doc/quillory/docs/formats/archive.md"}));
}

TEST_F(Installation, HasTheProgramsForMacsThatWereBuilt) {
  const fs::path built = fs::path(QUILLORY_BUILD_DIR).parent_path() / "macos/bin";
  for (const char* program :
       {"launcher", "lzma64", "elev_mac", "quillory-update", "quillory-update-window"}) {
    EXPECT_EQ(fs::exists(installed("share/quillory/macos/") + program), fs::exists(built / program))
        << program;
  }
}

TEST_F(Installation, HasDocumentsThatLinkOnlyToWhatIsThere) {
  const ChildResult result = runChild(
      {"python3", "-B", QUILLORY_SOURCE_DIR "/tests/docs/named_pages.py", installed(kDocuments)});
  EXPECT_EQ(result.exitStatus, 0) << result.out;
}

TEST_F(Installation, HasManualPagesThatRenderWithoutAWarning) {
  for (const auto& [name, purpose] :
       {std::pair<std::string, std::string>{"quillory-pack", "packs "},
        {"lzma64", "packs "},
        {"quillory-update", "looks "}}) {
    const std::string page = installed(kManualPages) + '/' + name + ".1";
    const ChildResult shown = runWith("LC_ALL", "C.UTF-8", {"man", "--warnings", "-l", page});
    EXPECT_EQ(shown.exitStatus, 0);
    EXPECT_EQ(shown.err, "");
    EXPECT_THAT(shown.out, AllOf(HasSubstr("\nNAME\n       " + name + " - " + purpose),
                                 HasSubstr("\nEXIT STATUS\n"), HasSubstr("\nSEE ALSO\n")));
    if (isThere("mandoc")) {
      const ChildResult lint = runChild({"mandoc", "-T", "lint", "-W", "error", page});
      EXPECT_EQ(lint.exitStatus, 0) << lint.out << lint.err;
    }
  }
}

TEST_F(Installation, HasACompletionThatBashUses) {
  const ChildResult result = runChild(
      {"bash", "-c",
       "set -u; . \"$1\"; COMP_WORDS=(quillory-pack bun) COMP_CWORD=1; _quillory_pack; "
       "echo \"${COMPREPLY[*]}\"; COMP_WORDS=(quillory-pack bundle --target m) COMP_CWORD=3; "
       "_quillory_pack; echo \"${COMPREPLY[*]}\"",
       "bash", installed("share/bash-completion/completions/quillory-pack")});
  EXPECT_EQ(result.err, "");
  EXPECT_EQ(result.out, "bundle\nmacos\n");
}

TEST_F(Installation, HasACompletionThatZshUses) {
  if (!isThere("zsh")) GTEST_SKIP() << "there is no zsh";
  // Pressed tab: the first time, when the file is read, and once more.
  const ChildResult result = runWith(
      "HOME", folder_.str(),
      {"zsh", "-f", "-c",
       "fpath=($1 $fpath); autoload -U compinit && compinit -u -D; _describe() { print described "
       "}; "
       "words=(quillory-pack bun) CURRENT=2; $_comps[quillory-pack]; $_comps[quillory-pack]",
       "zsh", installed("share/zsh/site-functions")});
  EXPECT_EQ(result.err, "");
  EXPECT_EQ(result.out, "described\ndescribed\n");
}

TEST_F(Installation, HasACompletionThatFishUses) {
  if (!isThere("fish")) GTEST_SKIP() << "there is no fish";
  const ChildResult result =
      runWith("HOME", folder_.str(),
              {"fish", "--no-config", "-c",
               "source " + installed("share/fish/vendor_completions.d/quillory-pack.fish") +
                   "; complete -C 'quillory-pack bun'; complete -C 'quillory-pack bundle --tar'"});
  EXPECT_THAT(result.out, AllOf(HasSubstr("bundle\tmakes "), HasSubstr("--target")));
}

// The tree as it was before, with things of others in folders that the installation makes or uses.
TEST(Uninstall, RemovesWhatWasInstalledAndNothingElse) {
  const TempDir folder;
  const std::string prefix = folder / "prefix";
  fs::create_directories(prefix + "/bin");
  fs::create_directories(prefix + "/share/man");
  writeFile(prefix + "/bin/other", "other");
  const std::set<std::string> before = treeOf(folder.path());
  install(prefix);
  install(prefix);  // an update
  writeFile(prefix + "/share/quillory/mine", "mine");
  ChildResult result = uninstall(prefix);
  EXPECT_EQ(result.exitStatus, 0) << result.err;
  std::set<std::string> expected = before;
  expected.insert({"prefix/share/quillory/", "prefix/share/quillory/mine"});
  EXPECT_EQ(treeOf(folder.path()), expected);
  result = uninstall(prefix);
  EXPECT_EQ(result.exitStatus, 1);
  EXPECT_THAT(result.err, HasSubstr("nothing of ours is installed there"));
  EXPECT_EQ(treeOf(folder.path()), expected);
}

TEST(Uninstall, LeavesNothingWhereNothingWas) {
  const TempDir folder;
  install(folder / "new/prefix");
  EXPECT_THAT(treeOf(folder.path()), Not(IsEmpty()));
  EXPECT_EQ(uninstall(folder / "new/prefix").exitStatus, 0);
  EXPECT_THAT(treeOf(folder.path()), ::testing::ElementsAre("new/"));
}

TEST(InstalledQuilloryPack, PacksAnApplicationThatStartsWithoutSourcesAndBuild) {
  if (const std::string reason = PrivateRoot::whyImpossible(); !reason.empty()) {
    GTEST_SKIP() << reason;
  }
  const PrivateRoot root;
  install(root / "opt/quillory");
  root.makeUserFolder("/home/user/app");
  fs::copy_file(QUILLORY_HELLO_JAR, root / "home/user/app/hello.jar");
  // A program of somebody else's, of the launcher's name: it is not the one that is packed.
  writeFile(root / "opt/quillory/bin/launcher", "no launcher");
  ChildOptions options;
  options.limit = std::chrono::seconds(280);
  const auto run = [&](const std::string& script) {
    return root.runAsUser(
        {"sh", "-c", "set -e; cd ~/app; PATH=/opt/quillory/bin:$PATH; unset DISPLAY; " + script},
        options);
  };
  for (const std::string hidden : {QUILLORY_SOURCE_DIR, QUILLORY_BUILD_DIR}) {
    ASSERT_NE(run("test -e '" + hidden + "'").exitStatus, 0) << hidden << " is seen in there";
  }
  const ChildResult packed =
      run("quillory-pack init; quillory-pack keygen --bits 2048; "
          "quillory-pack bundle --compression 0; quillory-pack doctor dist/*.app");
  ASSERT_EQ(packed.exitStatus, 0) << packed.out << packed.err;
  const ChildResult started = run("dist/*.app/Contents/MacOS/* --close-after=1");
  EXPECT_EQ(started.exitStatus, 0) << started.err;
  EXPECT_THAT(started.out, HasSubstr("Hello from Java"));
  const ChildResult manual =
      run("man -M /opt/quillory/share/man quillory-pack | grep -c -- --target");
  EXPECT_EQ(manual.exitStatus, 0) << manual.err;
  EXPECT_EQ(run("lzma64 --help").exitStatus, 0);
}

}  // namespace
}  // namespace quillory::testing
