#include "packager/bytes/byte_sinks.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "packager/report/findings.h"
#include "tests/harness/child_process.h"
#include "tests/harness/file_size_limit.h"
#include "tests/harness/temp_dir.h"

namespace quillory::pack {
namespace {

namespace fs = std::filesystem;
using testing::FileSizeLimit;
using testing::modeOf;
using testing::readFile;
using testing::runChild;
using testing::TempDir;
using testing::writeFile;

// More than any buffer between a writer and the disk.
const std::string kLarge(3000000, 'x');

// What `run` throws, as people read it; "" when it throws nothing.
template <typename Run>
std::string errorOf(Run run) {
  try {
    run();
  } catch (const PackError& e) {
    return asText(e.finding());
  }
  return "";
}

class FullSink : public ByteSink {
 public:
  void write(std::string_view) override { throw PackError("the disk is full"); }
};

TEST(StringSink, KeepsEverythingInOrder) {
  StringSink sink;
  EXPECT_EQ(sink.bytes(), "");
  sink.write("one");
  sink.write("");
  sink.write(std::string_view("\0two", 4));
  EXPECT_EQ(sink.bytes(), std::string("one\0two", 7));
}

TEST(FileSink, ReportsWhereItCannotWrite) {
  EXPECT_THROW(FileSink("/nonexistent/file"), PackError);
}

TEST(FileSink, GetsItsNameOnlyWithCommit) {
  TempDir dir;
  FileSink sink(dir / "file");
  sink.write("one ");
  sink.write("two");
  EXPECT_FALSE(fs::exists(dir / "file"));
  sink.commit();
  EXPECT_EQ(readFile(dir / "file"), "one two");
}

TEST(FileSink, LeavesWhatWasThereWhenItIsNotCommitted) {
  TempDir dir;
  writeFile(dir / "file", "before");
  { FileSink(dir / "file").write(kLarge); }
  EXPECT_EQ(readFile(dir / "file"), "before");
  EXPECT_EQ(std::distance(fs::directory_iterator(dir.path()), {}), 1);
}

TEST(FileSink, LeavesWhatWasThereWhenTheDiskIsFull) {
  TempDir dir;
  writeFile(dir / "file", "before");
  {
    const FileSizeLimit full(1000);
    EXPECT_THROW(FileSink(dir / "file").write(kLarge), PackError);
    // So little that it is written at the end only.
    FileSink sink(dir / "file");
    sink.write(std::string(1001, 'x'));
    EXPECT_THROW(sink.commit(), PackError);
  }
  EXPECT_EQ(readFile(dir / "file"), "before");
  EXPECT_EQ(std::distance(fs::directory_iterator(dir.path()), {}), 1);
}

TEST(FileSink, MakesAFileOfTheModeThatIsAskedFor) {
  TempDir dir;
  const mode_t before = umask(022);
  FileSink open(dir / "open"), closed(dir / "closed", 0600);
  open.commit();
  closed.commit();
  umask(before);
  EXPECT_EQ(modeOf(dir / "open"), 0644u);
  EXPECT_EQ(modeOf(dir / "closed"), 0600u);
}

TEST(FileSink, ReplacesALinkAndNoFolder) {
  TempDir dir;
  writeFile(dir / "target", "before");
  fs::create_symlink("target", dir / "link");
  writeWholeFile(dir / "link", "new");
  EXPECT_FALSE(fs::is_symlink(dir / "link"));
  EXPECT_EQ(readFile(dir / "target"), "before");
  fs::create_directory(dir / "folder");
  EXPECT_THROW(FileSink(dir / "folder"), PackError);
}

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

TEST(LzmaSinkAdapter, HasTheDictionaryOfItsLevel) {
  // Properties, and the size of the dictionary: 256 KiB, 8 MiB and 64 MiB, as those of xz.
  const std::pair<int, std::string> cases[] = {
      {0, {"\x5d\0\0\x04\0", 5}}, {6, {"\x5d\0\0\x80\0", 5}}, {9, {"\x5d\0\0\0\x04", 5}}};
  for (const auto& [level, header] : cases) {
    StringSink packed;
    LzmaSinkAdapter lzma(level, packed);
    lzma.finish();
    EXPECT_EQ(packed.bytes().substr(0, 5), header) << level;
  }
}

TEST(LzmaSinkAdapter, RefusesLevelsThatThereAreNot) {
  StringSink packed;
  LzmaSinkAdapter lzma(10, packed);
  const std::string error = "error: compressing failed: the compression level is not 0 to 9";
  EXPECT_EQ(errorOf([&] { lzma.write("x"); }), error);
  EXPECT_EQ(errorOf([&] { lzma.finish(); }), error);
}

TEST(LzmaSinkAdapter, PassesOnWhatTheNextSinkThrows) {
  FullSink full;
  LzmaSinkAdapter lzma(0, full);
  EXPECT_EQ(errorOf([&] {
              lzma.write("x");
              lzma.finish();
            }),
            "error: the disk is full");
}

TEST(CopyFileInto, CopiesFilesOfEverySizeAndCountsTheirBytes) {
  TempDir dir;
  for (const std::size_t size : {0u, 1u, 262143u, 262144u, 262145u, 3000000u}) {
    const std::string content = kLarge.substr(0, size);
    writeFile(dir / "file", content);
    StringSink sink;
    EXPECT_EQ(copyFileInto(sink, dir / "file"), size);
    EXPECT_TRUE(sink.bytes() == content) << size;
  }
}

TEST(CopyFileInto, NamesTheFileThatCannotBeRead) {
  TempDir dir;
  StringSink sink;
  EXPECT_EQ(errorOf([&] { copyFileInto(sink, dir / "missing"); }),
            dir / "missing" + ": error: cannot be opened: No such file or directory");
  EXPECT_EQ(errorOf([&] { copyFileInto(sink, dir.str()); }),
            dir.str() + ": error: cannot be read: Is a directory");
}

TEST(CopyFileInto, PassesOnWhatTheSinkThrows) {
  TempDir dir;
  writeFile(dir / "file", "x");
  FullSink full;
  EXPECT_EQ(errorOf([&] { copyFileInto(full, dir / "file"); }), "error: the disk is full");
}

TEST(IsFile, IsTrueForFilesAndLinksToThem) {
  TempDir dir;
  writeFile(dir / "file", "");
  fs::create_directory(dir / "folder");
  fs::create_symlink("file", dir / "link");
  fs::create_symlink("missing", dir / "nowhere");
  fs::create_symlink("folder", dir / "to-folder");
  EXPECT_TRUE(isFile(dir / "file"));
  EXPECT_TRUE(isFile(dir / "link"));
  for (const char* name : {"folder", "to-folder", "nowhere", "missing", "file/inside"}) {
    EXPECT_FALSE(isFile(dir / name)) << name;
  }
}

TEST(ReadWholeFile, ReportsWhatIsNotThere) {
  EXPECT_THROW(readWholeFile("/nonexistent/file"), PackError);
  EXPECT_THROW(readWholeFile("/"), PackError);
}

TEST(ReadWholeFile, StopsAtADeviceWithoutAnEnd) {
  try {
    readWholeFile("/dev/zero");
    FAIL();
  } catch (const PackError& e) {
    EXPECT_EQ(asText(e.finding()),
              "/dev/zero: error: is larger than 64 MiB, or has no end\n  -> name another file");
  }
}

TEST(ReadBeginningOf, ReadsNoMoreThanIsAskedFor) {
  TempDir dir;
  writeFile(dir / "file", "content");
  EXPECT_EQ(readBeginningOf(dir / "file", 3), "con");
  EXPECT_EQ(readBeginningOf(dir / "file", 0), "");
  EXPECT_EQ(readBeginningOf(dir / "file", 7), "content");
  EXPECT_EQ(readBeginningOf(dir / "file", 8), "content");
  EXPECT_EQ(readBeginningOf("/dev/zero", 1 << 20), std::string(1 << 20, '\0'));
  EXPECT_THROW(readBeginningOf("/nonexistent/file", 1), PackError);
}

TEST(ReadWholeFile, ReturnsEveryByte) {
  TempDir dir;
  const std::string content("a\0b\r\n\xff", 6);
  writeFile(dir / "file", content);
  EXPECT_EQ(readWholeFile(dir / "file"), content);
}

TEST(WriteWholeFile, ReplacesAFileAsAWholeOrNotAtAll) {
  TempDir dir;
  const std::string content("a\0b\r\n\xff", 6);
  writeFile(dir / "file", "something longer");
  writeWholeFile(dir / "file", content, 0600);
  EXPECT_EQ(readFile(dir / "file"), content);
  EXPECT_EQ(modeOf(dir / "file"), 0600u);
  const FileSizeLimit full(1000);
  EXPECT_THROW(writeWholeFile(dir / "file", kLarge), PackError);
  EXPECT_EQ(readFile(dir / "file"), content);
}

}  // namespace
}  // namespace quillory::pack
