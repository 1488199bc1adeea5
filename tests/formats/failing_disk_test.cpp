// Streams that fail behind some bytes, which only Linux can make of a function.
#include <gtest/gtest.h>

#include <cerrno>
#include <cstdio>

#include "formats/extraction.h"
#include "support/owned.h"
#include "tests/formats/archive_parts.h"
#include "tests/harness/captured_log.h"

namespace quillory {
namespace {

using testing::ArchiveSite;
using testing::CapturedLog;
using testing::folderEntry;
using testing::records;
using testing::signatureBlock;

// A stream of `bytes` behind which the disk fails.
OwnedFile failingBehind(std::string& bytes) {
  const cookie_io_functions_t calls = {
      .read = [](void* cookie, char* buffer, std::size_t size) -> ssize_t {
        std::string& rest = *static_cast<std::string*>(cookie);
        if (rest.empty()) {
          errno = EIO;
          return -1;
        }
        const std::size_t count = rest.copy(buffer, size);
        rest.erase(0, count);
        return static_cast<ssize_t>(count);
      },
      .write = nullptr,
      .seek = nullptr,
      .close = nullptr};
  return OwnedFile(fopencookie(&bytes, "r", calls));
}

TEST(ExtractionOnAFailingDisk, DoesNotTakeItForTheEndOfTheArchive) {
  const ArchiveSite site;
  const CapturedLog log;
  const std::string whole =
      folderEntry("lib") + records({"0", "empty", "0"}) + signatureBlock("7", "ab");
  for (std::size_t length = 0; length < whole.size(); ++length) {
    SCOPED_TRACE(length);
    std::string bytes = whole.substr(0, length);
    const OwnedFile stream = failingBehind(bytes);
    ExtractionResult result;
    std::optional<MetSignature> signature;
    while (result.end == ExtractionEnd::kEntryDone)
      result = extractEntry({}, site.destDir(), stream.get(), signature, ArchiveTrust{});
    EXPECT_EQ(result.end, ExtractionEnd::kNotRead);
    EXPECT_EQ(result.reason, "the archive cannot be read");
  }
  EXPECT_TRUE(log.contains("[ExtractArchiveFile] Unable to read the archive on, behind lib\n"));
}

}  // namespace
}  // namespace quillory
