#include "packager/bytes/byte_sinks.h"

#include <gtest/gtest.h>

#include "packager/report/findings.h"
#include "tests/harness/child_process.h"
#include "tests/harness/temp_dir.h"

namespace quillory::pack {
namespace {

using testing::runChild;
using testing::TempDir;

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

}  // namespace
}  // namespace quillory::pack
