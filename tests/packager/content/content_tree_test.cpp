#include "packager/content/content_tree.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "tests/harness/temp_dir.h"
#include "tests/packager/paths_of.h"
#include "tests/packager/rules_of.h"

namespace quillory::pack {
namespace {

namespace fs = std::filesystem;
using testing::findingOf;
using testing::hasRule;
using testing::pathsOf;
using testing::rulesOf;
using testing::TempDir;
using testing::writeFile;

TEST(ContentTree, ReplaceFileKeepsThePath) {
  const TempDir dir;
  writeFile(dir / "in/a", "one");
  writeFile(dir / "other", "four");
  ContentTree tree("application");
  tree.addFolderContent(dir / "in", "");
  tree.replaceFile(dir / "other", "a");
  EXPECT_EQ(tree.entries().at("a").source, dir / "other");
  EXPECT_EQ(tree.totalBytes(), 4u);
  EXPECT_THROW(tree.replaceFile(dir / "missing", "a"), PackError);
}

TEST(ContentTree, GathersAFolderSortedWithFoldersBeforeTheirContent) {
  TempDir dir;
  writeFile(dir / "src/b/two", "22");
  writeFile(dir / "src/a", "1");
  fs::create_directories(dir / "src/empty");
  ContentTree tree("application");
  tree.addFolderContent(dir / "src", "lib");
  EXPECT_EQ(pathsOf(tree),
            (std::vector<std::string>{"lib", "lib/a", "lib/b", "lib/b/two", "lib/empty"}));
  EXPECT_EQ(tree.totalBytes(), 3u);
  EXPECT_TRUE(tree.check().empty());
}

TEST(ContentTree, KnowsWhereEachKindOfEntryComesFrom) {
  TempDir dir;
  writeFile(dir / "file", "content");
  ContentTree tree("application");
  tree.addFile(dir / "file", "a/file");
  tree.addBytes("bytes", "b");
  tree.addFolder("c");
  tree.addFolder("");
  ASSERT_EQ(pathsOf(tree), (std::vector<std::string>{"a/file", "b", "c"}));
  const ContentEntry& file = tree.entries().at("a/file");
  EXPECT_EQ(file.kind, ContentEntry::Kind::kFile);
  EXPECT_EQ(file.source, dir / "file");
  EXPECT_EQ(file.size, 7u);
  const ContentEntry& bytes = tree.entries().at("b");
  EXPECT_EQ(bytes.kind, ContentEntry::Kind::kBytes);
  EXPECT_EQ(bytes.bytes, "bytes");
  EXPECT_EQ(bytes.size, 5u);
  EXPECT_EQ(tree.entries().at("c").kind, ContentEntry::Kind::kFolder);
  EXPECT_EQ(tree.totalBytes(), 12u);
  EXPECT_EQ(tree.name(), "application");
}

TEST(ContentTree, NamesTheFileThatIsMissing) {
  ContentTree tree("application");
  EXPECT_THROW(tree.addFile("/nonexistent/file", "file"), PackError);
  EXPECT_THROW(tree.addFolderContent("/nonexistent", ""), PackError);
}

// As many folders, one inside the other, as `levels` says, with a file in the last one: its path.
std::string makeDeepFolders(const std::string& top, int levels) {
  std::string path;
  for (int i = 0; i < levels; ++i) {
    path += "d/";
  }
  writeFile(top + '/' + path + "file", "x");
  return path + "file";
}

TEST(ContentTree, GathersFoldersOf64Levels) {
  TempDir dir;
  const std::string deepest = makeDeepFolders(dir / "src", 64);
  ContentTree tree("application");
  tree.addFolderContent(dir / "src", "");
  EXPECT_TRUE(tree.contains(deepest));
  EXPECT_EQ(rulesOf(tree.check()), std::vector<std::string>{});
}

TEST(ContentTree, RefusesFoldersOf65Levels) {
  TempDir dir;
  const std::string deepest = makeDeepFolders(dir / "src", 65);
  ContentTree tree("application");
  tree.addFolderContent(dir / "src", "");
  EXPECT_FALSE(tree.contains(deepest));
  ASSERT_EQ(rulesOf(tree.check()), std::vector<std::string>{"link-loop"});
  const Finding finding = tree.check()[0];
  EXPECT_EQ(finding.what, "the folders go deeper than 64 levels");
  EXPECT_EQ(finding.severity, Severity::kError);
  EXPECT_EQ(finding.place.file + "/file", dir / "src/" + deepest);
}

TEST(ContentTree, StoresLinksAsCopiesAndSaysSoOnce) {
  TempDir dir;
  writeFile(dir / "src/file", "content");
  fs::create_directory(dir / "elsewhere");
  writeFile(dir / "elsewhere/inside", "x");
  fs::create_symlink("file", dir / "src/link");
  fs::create_symlink(dir / "elsewhere", dir / "src/folder");
  ContentTree tree("runtime");
  tree.addFolderContent(dir / "src", "");
  EXPECT_EQ(pathsOf(tree), (std::vector<std::string>{"file", "folder", "folder/inside", "link"}));
  EXPECT_EQ(tree.entries().at("link").size, 7u);
  EXPECT_EQ(tree.entries().at("folder").kind, ContentEntry::Kind::kFolder);
  const Findings findings = tree.check();
  EXPECT_EQ(rulesOf(findings), std::vector<std::string>{"link"});
  EXPECT_EQ(findings[0].what,
            "2 symbolic links are stored as copies in the runtime, because archives hold no links");
}

TEST(ContentTree, NamesTheFirstLinkOfOneOrMany) {
  TempDir dir;
  writeFile(dir / "src/file", "x");
  fs::create_symlink("file", dir / "src/link");
  ContentTree one("runtime");
  one.addFolderContent(dir / "src", "");
  EXPECT_EQ(asText(findingOf(one.check(), "link")),
            dir / "src/link" +
                ": note: a symbolic link is stored as copies in the runtime, because archives "
                "hold no links [link]");
  fs::create_symlink("file", dir / "src/another");
  ContentTree two("runtime");
  two.addFolderContent(dir / "src", "");
  EXPECT_EQ(findingOf(two.check(), "link").place.file, dir / "src/another");
}

TEST(ContentTree, RefusesALinkThatLeadsNowhere) {
  TempDir dir;
  fs::create_directory(dir / "src");
  fs::create_symlink("missing", dir / "src/link");
  ContentTree tree("application");
  tree.addFolderContent(dir / "src", "");
  EXPECT_EQ(findingOf(tree.check(), "dangling-link").place.file, dir / "src/link");
}

TEST(ContentTree, RefusesALinkThatLeadsBackToAFolderAboveIt) {
  TempDir dir;
  writeFile(dir / "src/a/file", "x");
  fs::create_symlink("..", dir / "src/a/up");
  ContentTree tree("application");
  tree.addFolderContent(dir / "src", "");
  EXPECT_TRUE(hasRule(tree.check(), "link-loop"));
}

TEST(ContentTree, NamesTheLinkThatLeadsBackAndFollowsNoMoreOfThem) {
  TempDir dir;
  fs::create_directory(dir / "src");
  fs::create_symlink(".", dir / "src/a");
  fs::create_symlink(".", dir / "src/b");
  ContentTree itself("application");
  itself.addFolderContent(dir / "src", "");
  EXPECT_EQ(rulesOf(itself.check()), (std::vector<std::string>{"link-loop", "link"}));
  EXPECT_EQ(findingOf(itself.check(), "link-loop").place.file, dir / "src/a");
  // Folders that all lead to all others, with far more paths than can be walked.
  for (int from = 0; from < 30; ++from) {
    const std::string folder = dir / "many/" + std::to_string(from);
    fs::create_directories(folder);
    for (int to = 0; to < 30; ++to) {
      if (to != from) {
        fs::create_symlink("../" + std::to_string(to), folder + "/to" + std::to_string(to));
      }
    }
  }
  ContentTree many("application");
  many.addFile(dir / "many", "many");
  EXPECT_TRUE(hasRule(many.check(), "link-loop"));
  EXPECT_TRUE(many.contains("many/29")) << "what is no link is still gathered";
}

TEST(ContentTree, TakesAFolderTwiceThatIsNotAboveItself) {
  TempDir dir;
  writeFile(dir / "src/b/file", "x");
  fs::create_symlink("b", dir / "src/a");
  ContentTree tree("application");
  tree.addFolderContent(dir / "src", "");
  EXPECT_EQ(pathsOf(tree), (std::vector<std::string>{"a", "a/file", "b", "b/file"}));
  EXPECT_EQ(rulesOf(tree.check()), std::vector<std::string>{"link"});
}

TEST(ContentTree, LeavesAFolderAgainBeforeTheNextOne) {
  TempDir dir;
  // A link from one folder to its neighbour leads nowhere above itself.
  writeFile(dir / "src/a/file", "x");
  fs::create_directory(dir / "src/b");
  fs::create_symlink("../a", dir / "src/b/link");
  ContentTree tree("application");
  tree.addFolderContent(dir / "src", "");
  EXPECT_TRUE(tree.contains("b/link/file"));
  EXPECT_EQ(rulesOf(tree.check()), std::vector<std::string>{"link"});
}

TEST(ContentTree, KnowsAFileByWhateverName) {
  TempDir dir;
  writeFile(dir / "src/sub/file", "x");
  writeFile(dir / "other", "x");
  fs::create_hard_link(dir / "src/sub/file", dir / "hard");
  fs::create_symlink("hard", dir / "soft");
  ContentTree tree("application");
  tree.addFolderContent(dir / "src", "");
  EXPECT_EQ(tree.sourceOf(dir / "soft"), dir / "src/sub/file");
  EXPECT_EQ(tree.sourceOf(dir / "src/../src/sub"), dir / "src/sub");
  EXPECT_EQ(tree.sourceOf(dir / "src"), dir / "src");
  EXPECT_EQ(tree.sourceOf(dir / "other"), "");
  EXPECT_EQ(tree.sourceOf(dir / "missing"), "");
}

TEST(ContentTree, RefusesWhatIsNeitherFileNorFolder) {
  TempDir dir;
  fs::create_directory(dir / "src");
  ASSERT_EQ(mkfifo((dir / "src/pipe").c_str(), 0600), 0);
  ContentTree tree("application");
  tree.addFolderContent(dir / "src", "");
  EXPECT_EQ(findingOf(tree.check(), "not-a-file").place.file, dir / "src/pipe");
}

TEST(ContentTree, WarnsOfModesThatAreLost) {
  TempDir dir;
  writeFile(dir / "tool", "x");
  fs::permissions(dir / "tool", fs::perms(04755));
  ContentTree tree("application");
  tree.addFile(dir / "tool", "tool");
  EXPECT_EQ(findingOf(tree.check(), "mode").severity, Severity::kWarning);
}

TEST(ContentTree, SaysNothingOfTheModesOfFolders) {
  TempDir dir;
  writeFile(dir / "src/file", "x");
  fs::permissions(dir / "src", fs::perms(02775));
  ContentTree tree("application");
  tree.addFile(dir / "src", "src");
  EXPECT_EQ(rulesOf(tree.check()), std::vector<std::string>{});
}

TEST(ContentTree, RefusesTwoFilesForOnePath) {
  ContentTree tree("application");
  tree.addBytes("1", "lib/a.jar");
  tree.addBytes("2", "lib/a.jar");
  EXPECT_EQ(rulesOf(tree.check()), std::vector<std::string>{"same-path"});
  ContentTree folders("application");
  folders.addFolder("lib");
  folders.addFolder("lib");
  EXPECT_TRUE(folders.check().empty());
}

TEST(ContentTree, RefusesAFileInThePlaceOfAFolder) {
  ContentTree tree("runtime");
  tree.addFolder("lib");
  tree.addBytes("x", "lib");
  ASSERT_EQ(rulesOf(tree.check()), std::vector<std::string>{"same-path"});
  EXPECT_EQ(tree.check()[0].what, "two files of the runtime would be stored as \"lib\"");
  EXPECT_EQ(tree.entries().at("lib").kind, ContentEntry::Kind::kFolder) << "the first one stays";
}

}  // namespace
}  // namespace quillory::pack
