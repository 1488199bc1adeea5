#include "packager/commands/packing.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <sstream>

#include "packager/report/findings.h"
#include "tests/harness/child_process.h"
#include "tests/harness/records.h"
#include "tests/harness/temp_dir.h"

namespace quillory::pack {
namespace {

namespace fs = std::filesystem;
using testing::records;
using testing::runChild;
using testing::TempDir;
using testing::writeFile;

TEST(PackAll, PacksSeveralTreesAtATime) {
  TempDir dir;
  ContentTree one("one"), two("two");
  one.addBytes("1", "a");
  two.addBytes(std::string(3000000, 'x'), "b");
  std::ostringstream out, err;
  Reporter reporter(out, err, {});
  packAll({{&one, dir / "one.p2.l2"}, {&two, dir / "two.p2.l2"}}, {0, nullptr, Salt::kRandom},
          reporter);
  EXPECT_EQ(runChild({"xz", "--format=lzma", "-dc", dir / "one.p2.l2"}).out,
            records({"0", "a", "1"}) + "1" + records({""}));
  EXPECT_EQ(runChild({"xz", "--format=lzma", "-dc", dir / "two.p2.l2"}).out.size(),
            3000000u + records({"0", "b", "3000000", ""}).size());
}

TEST(PackAll, LeavesNothingWhenOneOfThemFails) {
  TempDir dir;
  writeFile(dir / "file", "x");
  ContentTree good("good"), bad("bad");
  good.addBytes(std::string(50000000, 'x'), "b");
  bad.addFile(dir / "file", "a");
  writeFile(dir / "file", "changed");
  fs::create_directory(dir / "out");
  std::ostringstream out, err;
  Reporter reporter(out, err, {});
  EXPECT_THROW(packAll({{&good, dir / "out/good"}, {&bad, dir / "out/bad"}},
                       {9, nullptr, Salt::kRandom}, reporter),
               PackError);
  EXPECT_TRUE(fs::is_empty(dir / "out"));
}

TEST(PackAll, NamesTheFileThatFailedAndNotTheArchivesThatWereStopped) {
  TempDir dir;
  writeFile(dir / "vanishing", "x");
  ContentTree stopped("stopped"), bad("bad");
  stopped.addBytes(std::string(50000000, 'x'), "b");
  bad.addFile(dir / "vanishing", "a");
  fs::remove(dir / "vanishing");
  std::ostringstream out, err;
  Reporter reporter(out, err, {});
  // The one that is stopped comes first, as the updater does.
  try {
    packAll({{&stopped, dir / "stopped.p2.l2"}, {&bad, dir / "bad.p2.l2"}},
            {9, nullptr, Salt::kRandom}, reporter);
    ADD_FAILURE() << "it was packed";
  } catch (const PackError& e) {
    EXPECT_EQ(e.finding().place.file, dir / "vanishing");
    EXPECT_STREQ(e.what(), "cannot be opened: No such file or directory");
  }
}

}  // namespace
}  // namespace quillory::pack
