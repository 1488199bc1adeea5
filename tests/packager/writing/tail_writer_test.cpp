#include "packager/writing/tail_writer.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "formats/markers.h"
#include "packager/report/findings.h"
#include "tests/harness/page_example.h"
#include "tests/harness/records.h"
#include "tests/harness/temp_dir.h"

namespace quillory::pack {
namespace {

using testing::pageExample;
using testing::records;
using testing::TempDir;
using testing::writeFile;

TEST(WriteTail, GivesTheExampleOfThePage) {
  TempDir dir;
  writeFile(dir / "tool", "#!");
  StringSink bytes;
  writeTailRecords(bytes, {"Demo", "3", "", "7", "1500", "", "1", "perm_user", "-quiet", "8", "D"});
  writeTailEntry(bytes, {"lzma64", dir / "tool"});
  EXPECT_EQ(bytes.bytes(), pageExample("formats/wrapper-tail.md"));
}

TEST(WriteTail, WritesAnEntryWithoutASourceAsAnEmptyFile) {
  StringSink bytes;
  writeTailEntry(bytes, {"verpatch.exe", ""});
  EXPECT_EQ(bytes.bytes(), records({"0", "verpatch.exe", "0"}));
}

TEST(WriteTail, HasRoomForLongKeysAndUrls) {
  StringSink bytes;
  TailRecords tail;
  tail.signaturePublicKey = std::string(8190, 'a');
  tail.updateUrl = std::string(4998, 'u');
  writeTailRecords(bytes, tail);
  tail.signaturePublicKey += 'a';
  EXPECT_THROW(writeTailRecords(bytes, tail), PackError);
}

TEST(TailMarker, HasTheBytesOfThePage) {
  EXPECT_EQ(tailMarker(), pageExample("formats/record-stream.md", 1));
}

TEST(WriteTail, WritesEveryRecordInItsPlace) {
  StringSink bytes;
  TailRecords tail;
  tail.appName = "1";
  tail.appVersion = "2";
  tail.jreVersion = "3";
  tail.guVersion = "4";
  tail.minSplashMs = "5";
  tail.signaturePublicKey = "6";
  tail.canOverrideSplash = "7";
  tail.installType = "8";
  tail.silentParameter = "9";
  tail.requiredJavaVersion = "10";
  tail.updateUrl = "11";
  writeTailRecords(bytes, tail);
  EXPECT_EQ(bytes.bytes(), records({"1", "2", "3", "4", "5", "6", "7", "8", "9", "10", "11"}));
}

TEST(WriteTail, NoticesAFileThatIsNotAsLongAsTheSystemSays) {
  StringSink bytes;
  // Files whose content is made when they are read: of the first the system says 0 bytes, of the
  // second a whole page.
  int found = 0;
  for (const char* path : {"/proc/self/status", "/sys/kernel/uevent_seqnum"}) {
    if (std::filesystem::exists(path)) {
      EXPECT_THROW(writeTailEntry(bytes, {"lzma64", path}), PackError) << path;
      ++found;
    }
  }
  if (found == 0) {
    GTEST_SKIP() << "no such file on this system";
  }
}

TEST(WriteTail, NamesASourceThatHasGone) {
  TempDir dir;
  StringSink bytes;
  try {
    writeTailEntry(bytes, {"lzma64", dir / "gone"});
    FAIL() << "nothing was thrown";
  } catch (const PackError& error) {
    EXPECT_EQ(error.finding().place.file, dir / "gone");
  }
}

TEST(GuardBeforeMarker, IsAByteWhereTheEndLooksLikeABeginningOfTheMarker) {
  TempDir dir;
  const std::string marker = tailMarker();
  const auto guardFor = [&](const std::string& executable) {
    writeFile(dir / "launcher", executable);
    return guardBeforeMarker(dir / "launcher");
  };
  for (std::size_t length = 1; length < marker.size(); ++length) {
    EXPECT_EQ(guardFor("code" + marker.substr(0, length)), "\xFF") << length;
  }
  EXPECT_EQ(guardFor(marker.substr(0, 3)), "\xFF") << "nothing but a beginning";
  EXPECT_EQ(guardFor(std::string(1000000, 'c') + marker.substr(0, 1)), "\xFF");
  for (const std::string& other : {std::string(), std::string("code"), std::string(1000000, 'c'),
                                   marker.substr(0, 5) + "code"}) {
    EXPECT_EQ(guardFor(other), "") << other.size();
  }
  EXPECT_EQ(marker.find('\xFF'), std::string::npos);
}

}  // namespace
}  // namespace quillory::pack
