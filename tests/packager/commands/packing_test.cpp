#include "packager/commands/packing.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <filesystem>
#include <sstream>
#include <thread>

#include "packager/report/findings.h"
#include "tests/harness/child_process.h"
#include "tests/harness/records.h"
#include "tests/harness/temp_dir.h"
#include "tests/packager/openssl.h"

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

TEST(PackAll, StopsTheOthersWhenOneFails) {
  TempDir dir;
  ContentTree endless("endless"), bad("bad");
  writeFile(dir / "vanishing", "x");
  bad.addFile(dir / "vanishing", "a");
  fs::remove(dir / "vanishing");
  // Content without an end: a pipe that somebody fills, of the length that the tree says.
  ASSERT_EQ(mkfifo((dir / "pipe").c_str(), 0600), 0);
  writeFile(dir / "stand-in", "x");
  endless.addFile(dir / "stand-in", "b");
  fs::remove(dir / "stand-in");
  fs::create_symlink(dir / "pipe", dir / "stand-in");
  std::atomic<bool> ended = false;
  std::thread filler([&] {
    const int end = open((dir / "pipe").c_str(), O_WRONLY);
    const std::string block(65536, 'x');
    while (write(end, block.data(), block.size()) > 0) {
    }
    ended = true;
    close(end);
  });
  std::ostringstream out, err;
  Reporter reporter(out, err, {});
  std::signal(SIGPIPE, SIG_IGN);
  EXPECT_THROW(packAll({{&endless, dir / "endless.p2.l2"}, {&bad, dir / "bad.p2.l2"}},
                       {0, nullptr, Salt::kRandom}, reporter),
               PackError);
  filler.join();
  std::signal(SIGPIPE, SIG_DFL);
  EXPECT_TRUE(ended);
}

TEST(PackAll, SignsWhereThereIsAKey) {
  TempDir dir;
  ContentTree tree("tree");
  tree.addBytes("1", "a");
  const SigningKey key = SigningKey::load(testing::madeKey());
  std::ostringstream out, err;
  Reporter reporter(out, err, {});
  packAll({{&tree, dir / "signed.p2.l2"}}, {0, &key, Salt::kDerived}, reporter);
  const std::string plain = runChild({"xz", "--format=lzma", "-dc", dir / "signed.p2.l2"}).out;
  const std::string content = records({"0", "a", "1"}) + "1";
  const std::string block = records({"0", "qyArcSpBlock_DigitalSignature1", "1"});
  EXPECT_EQ(plain.substr(0, content.size() + block.size()), content + block);
}

// A jar of an application, say, which is quick to compress.
std::string jarOf(std::size_t size) {
  std::string bytes;
  for (int i = 0; bytes.size() < size; ++i) {
    const std::string line = "class number " + std::to_string(i) + ", and what is in it\n";
    for (int repeated = 0; repeated < 500; ++repeated) bytes += line;
  }
  return bytes;
}

TEST(PackAll, CompressesAnewOnlyThePieceThatHasChanged) {
  TempDir dir;
  std::ostringstream out, err;
  Reporter reporter(out, err, {});
  const auto packed = [&](const std::string& jar, PackCache* cache) {
    ContentTree tree("application");
    tree.addBytes(std::string(1'000, 'x'), "a");
    tree.addBytes(jar, "app.jar");
    PackingJob job{&tree, dir / "app.p2.l2", ArchiveIdentity{"App", "1", "any"}};
    packAll({job}, {0, nullptr, Salt::kRandom, cache}, reporter);
    return testing::readFile(job.output);
  };
  const auto kept = [&] {
    return std::distance(fs::directory_iterator(dir / "cache"), fs::directory_iterator());
  };
  PackCache cache(dir / "cache");
  const std::string jar = jarOf(9 << 20);
  EXPECT_TRUE(packed(jar, &cache) == packed(jar, nullptr));
  const auto first = kept();
  ASSERT_GE(first, 6) << "the archive and its pieces";
  const std::string changed = jar + "changed";
  EXPECT_TRUE(packed(changed, &cache) == packed(changed, nullptr));
  EXPECT_LE(kept() - first, 4) << "the archive, its jar's length, one piece, and the end";
}

}  // namespace
}  // namespace quillory::pack
