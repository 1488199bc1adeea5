#include "packager/content/content_copy.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "tests/harness/stand_in_program.h"
#include "tests/harness/temp_dir.h"

namespace quillory::pack {
namespace {

namespace fs = std::filesystem;
using testing::readFile;
using testing::TempDir;
using testing::writeFile;
using testing::writeProgram;

TEST(CopyContent, MakesTheFoldersAndFilesOfATree) {
  TempDir dir;
  writeProgram(dir / "source/run", "program");
  fs::create_directory(dir / "source/empty");
  ContentTree tree("application");
  tree.addFolderContent(dir / "source", "bin");
  tree.addBytes("made here", "data/notes.txt");
  copyContent(tree, dir / "to/copy");
  EXPECT_EQ(readFile(dir / "to/copy/bin/run"), "program");
  EXPECT_EQ(access((dir / "to/copy/bin/run").c_str(), X_OK), 0);
  EXPECT_TRUE(fs::is_directory(dir / "to/copy/bin/empty"));
  EXPECT_EQ(readFile(dir / "to/copy/data/notes.txt"), "made here");
}

TEST(CopyContent, SaysWhichFileItCannotCopy) {
  TempDir dir;
  writeFile(dir / "a", "x");
  ContentTree tree("application");
  tree.addFile(dir / "a", "a");
  fs::remove(dir / "a");
  try {
    copyContent(tree, dir / "copy");
    FAIL();
  } catch (const PackError& e) {
    EXPECT_EQ(e.finding().place.file, dir / "a");
  }
}

}  // namespace
}  // namespace quillory::pack
