#include "update/base_files.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "formats/sha256.h"
#include "tests/harness/temp_dir.h"

namespace quillory::update {
namespace {

using testing::TempDir;
using testing::writeFile;
namespace fs = std::filesystem;

BaseFile baseFile(const std::string& path, const std::string& content) {
  return {path, static_cast<std::int64_t>(content.size()), sha256Hex(content)};
}

// The content, or "<why there is none>".
std::string contentOf(const BaseFiles& files, const BaseFile& file) {
  std::string content;
  const std::string fault = files.read(file, [&](std::string_view bytes) {
    content.append(bytes);
    return true;
  });
  return fault.empty() ? content : '<' + fault + '>';
}

TEST(BaseFiles, AreReadFromTheFolderAndTheFoldersInIt) {
  TempDir dir;
  const std::string large(700'000, 'x');
  writeFile(dir / "a/b/c", "deep");
  writeFile(dir / "large", large);
  const BaseFiles files(dir.path());
  EXPECT_EQ(contentOf(files, baseFile("a/b/c", "deep")), "deep");
  EXPECT_EQ(contentOf(files, baseFile("large", large)), large);
  EXPECT_EQ(files.differenceOf(baseFile("a/b/c", "deep")), "");
}

TEST(BaseFiles, StopWhenNoMoreIsWanted) {
  TempDir dir;
  const std::string large(700'000, 'x');
  writeFile(dir / "large", large);
  std::size_t taken = 0;
  EXPECT_EQ(BaseFiles(dir.path())
                .read(baseFile("large", large),
                      [&](std::string_view bytes) {
                        taken += bytes.size();
                        return false;
                      }),
            "");
  EXPECT_LT(taken, large.size());
}

TEST(BaseFiles, AreNotWhatHasAnotherLengthOrContent) {
  TempDir dir;
  writeFile(dir / "file", "content");
  const BaseFiles files(dir.path());
  EXPECT_EQ(contentOf(files, baseFile("file", "contents")),
            "<file: it has another length than it was installed with>");
  EXPECT_EQ(files.differenceOf(baseFile("file", "conten")),
            "file: it has another length than it was installed with");
  // Reading does not hash; that is asked for when it matters.
  EXPECT_EQ(contentOf(files, baseFile("file", "c0ntent")), "content");
  EXPECT_EQ(files.differenceOf(baseFile("file", "c0ntent")),
            "file: it has another content than it was installed with");
  EXPECT_EQ(contentOf(files, baseFile("missing", "x")), "<missing: No such file or directory>");
  EXPECT_EQ(contentOf(files, baseFile("no/file", "x")), "<no/file: No such file or directory>");
}

TEST(BaseFiles, AreNeverBehindALink) {
  TempDir dir;
  writeFile(dir / "outside/file", "x");
  writeFile(dir / "inside/file", "x");
  fs::create_symlink("file", dir / "inside/link");
  fs::create_symlink("../outside", dir / "inside/folder");
  fs::create_symlink("inside", dir / "other");
  const BaseFiles files(dir / "inside");
  EXPECT_EQ(contentOf(files, baseFile("file", "x")), "x");
  EXPECT_EQ(contentOf(files, baseFile("link", "x"))[0], '<');
  EXPECT_EQ(contentOf(files, baseFile("folder/file", "x"))[0], '<');
  EXPECT_EQ(contentOf(BaseFiles(dir / "other"), baseFile("file", "x")),
            "<the folder of the installed version cannot be opened>");
}

TEST(BaseFiles, AreNoPipesAndNoFoldersAndNothingWaits) {
  TempDir dir;
  ASSERT_EQ(mkfifo((dir / "pipe").c_str(), 0600), 0);
  fs::create_directory(dir / "folder");
  const BaseFiles files(dir.path());
  EXPECT_EQ(contentOf(files, baseFile("pipe", "x")), "<pipe: it is no plain file>");
  EXPECT_EQ(contentOf(files, baseFile("folder", "x")), "<folder: it is no plain file>");
}

TEST(BaseFiles, StayThoseOfTheFolderThatWasOpened) {
  TempDir dir;
  writeFile(dir / "now/file", "x");
  const BaseFiles files(dir / "now");
  fs::rename(dir / "now", dir / "before");
  writeFile(dir / "now/file", "y");
  EXPECT_EQ(contentOf(files, baseFile("file", "x")), "x");
}

}  // namespace
}  // namespace quillory::update
