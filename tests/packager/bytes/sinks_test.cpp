// Byte sinks, the pipeline, and folders for unfinished work.
#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <sstream>

#include "packager/bytes/byte_sinks.h"
#include "packager/bytes/pipelined_sink.h"
#include "packager/bytes/work_folder.h"
#include "packager/commands/packing.h"
#include "packager/report/findings.h"
#include "tests/harness/child_process.h"
#include "tests/harness/records.h"
#include "tests/harness/temp_dir.h"

namespace quillory::pack {
namespace {

namespace fs = std::filesystem;
using testing::readFile;
using testing::records;
using testing::runChild;
using testing::TempDir;
using testing::writeFile;

TEST(LzmaSinkAdapter, WritesWhatXzUnpacks) {
  TempDir dir;
  FileSink file(dir / "packed");
  LzmaSinkAdapter lzma(6, file);
  lzma.write("hello ");
  lzma.write("world\n");
  lzma.finish();
  file.commit();
  EXPECT_EQ(runChild({"xz", "--format=lzma", "-dc", dir / "packed"}).out, "hello world\n");
}

TEST(FileSink, ReportsWhereItCannotWrite) {
  EXPECT_THROW(FileSink("/nonexistent/file"), PackError);
}

TEST(ReadWholeFile, ReportsWhatIsNotThere) {
  EXPECT_THROW(readWholeFile("/nonexistent/file"), PackError);
  EXPECT_THROW(readWholeFile("/"), PackError);
}

TEST(PipelinedSink, HandsOverEverythingInOrder) {
  StringSink end;
  std::string expected;
  {
    PipelinedSink pipe(end);
    for (int i = 0; i < 200000; ++i) {
      const std::string piece = std::to_string(i) + ',';
      pipe.write(piece);
      expected += piece;
    }
    pipe.finish();
  }
  EXPECT_EQ(end.bytes(), expected);
}

TEST(PipelinedSink, TakesNothingAtAll) {
  StringSink end;
  PipelinedSink pipe(end);
  pipe.finish();
  EXPECT_EQ(end.bytes(), "");
}

class FailingSink : public ByteSink {
 public:
  void write(std::string_view) override { throw PackError("the disk is full"); }
};

TEST(PipelinedSink, ThrowsWhatTheNextSinkThrewAndDoesNotHang) {
  FailingSink end;
  PipelinedSink pipe(end);
  const std::string block(100000, 'x');
  EXPECT_THROW(
      {
        for (int i = 0; i < 1000; ++i) {
          pipe.write(block);
        }
      },
      PackError);
  PipelinedSink atTheEnd(end);
  atTheEnd.write("x");
  EXPECT_THROW(atTheEnd.finish(), PackError);
}

TEST(PipelinedSink, CanBeLeftInTheMiddle) {
  const std::string block(1000000, 'x');
  StringSink end;
  {
    PipelinedSink pipe(end);
    pipe.write(block);
    pipe.write("the rest");
  }
  // The block may have come through before, but nothing is sent after it.
  EXPECT_TRUE(end.bytes().empty() || end.bytes() == block) << end.bytes().size();
}

TEST(WorkFolder, IsGoneWithEverythingInIt) {
  TempDir dir;
  {
    WorkFolder work(dir / "new/dist");
    writeFile(work / "a/b", "x");
    EXPECT_TRUE(fs::exists(work / "a/b"));
  }
  EXPECT_TRUE(fs::is_empty(dir / "new/dist"));
}

TEST(WorkFolder, ReportsWhereItCannotBe) {
  EXPECT_THROW(WorkFolder("/proc/nonexistent"), PackError);
}

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
