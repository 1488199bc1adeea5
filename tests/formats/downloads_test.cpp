#include "formats/downloads.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>

#include <filesystem>
#include <string>
#include <vector>

#include "support/clock.h"
#include "support/owned.h"
#include "support/platform.h"
#include "tests/harness/captured_log.h"
#include "tests/harness/scoped_replace.h"
#include "tests/harness/temp_dir.h"

namespace quillory {
namespace {

namespace fs = std::filesystem;
using testing::CapturedLog;
using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::IsEmpty;
using testing::readFile;
using testing::ScopedReplace;
using testing::TempDir;
using testing::writeFile;

std::vector<std::string> transfers;  // "<url> -> <path>", as the transport was asked for them

DownloadLimits transferLimits;  // of the last one

class RecordedTransfers {
 public:
  RecordedTransfers()
      : transport_(
            platformCalls.downloadFile,
            +[](const char* url, const char* destPath, const DownloadLimits& limits) {
              transfers.push_back(std::string(url) + " -> " + destPath);
              transferLimits = limits;
              return 1;
            }) {
    transfers.clear();
    transferLimits = {};
  }

 private:
  ScopedReplace<decltype(platformCalls.downloadFile)> transport_;
};

class FixedClock {
 public:
  FixedClock()
      : clock_(
            timeCalls.nowMillis, +[] { return std::uint64_t{1'700'000'000'123}; }) {}

 private:
  ScopedReplace<decltype(timeCalls.nowMillis)> clock_;
};

TEST(AllocTimeMillisString, IsTheClockAsDecimalTextInAZeroFilledBlock) {
  const FixedClock clock;
  const OwnedText text(allocTimeMillisString());
  EXPECT_STREQ(text.get(), "1700000000123");
  for (int i = 13; i < 101; ++i) EXPECT_EQ(text.get()[i], '\0');
}

TEST(AllocTimeMillisString, WritesEveryDigitOfTheLargestTime) {
  const ScopedReplace clock(
      timeCalls.nowMillis, +[] { return ~std::uint64_t{0}; });
  const OwnedText text(allocTimeMillisString());
  EXPECT_STREQ(text.get(), "18446744073709551615");
}

TEST(DownloadVersionFile, AsksForNameAndTimeAndStoresUnderTheName) {
  const RecordedTransfers recorded;
  const FixedClock clock;
  downloadVersionFile("/folder", "http://host/updates/", "GU");
  EXPECT_THAT(transfers,
              ElementsAre("http://host/updates/Quillory-GU-version.txt?time=1700000000123"
                          " -> /folder/Quillory-GU-version.txt"));
}

TEST(DownloadVersionFile, InsertsNoSeparatorBehindTheUpdateUrl) {
  const RecordedTransfers recorded;
  const FixedClock clock;
  downloadVersionFile("/folder/", "http://host/u?file=", "My App");
  EXPECT_THAT(transfers,
              ElementsAre("http://host/u?file=Quillory-My%20App-version.txt?time=1700000000123"
                          " -> /folder/Quillory-My App-version.txt"));
}

TEST(DownloadVersionFile, SkipsAnInvalidUpdateUrl) {
  const RecordedTransfers recorded;
  const CapturedLog log;
  downloadVersionFile("/folder", "http://no.invalid/any/path/", "GU");
  EXPECT_THAT(transfers, IsEmpty());
  EXPECT_THAT(log.messages(), ElementsAre("[Extractor] Invalid Update URL. Skipping...\n"));
}

TEST(DownloadVersionFile, TakesAMissingUpdateUrlForAnEmptyOne) {
  const RecordedTransfers recorded;
  const FixedClock clock;
  downloadVersionFile("/folder", nullptr, "GU");
  EXPECT_THAT(transfers, ElementsAre("Quillory-GU-version.txt?time=1700000000123"
                                     " -> /folder/Quillory-GU-version.txt"));
}

TEST(DownloadFile, ReturnsOneWhateverTheTransportSays) {
  const ScopedReplace transport(
      platformCalls.downloadFile,
      +[](const char*, const char*, const DownloadLimits&) { return 0; });
  EXPECT_EQ(downloadFile("http://host/", "/nonexistent/file"), 1);
}

TEST(DownloadFile, RemovesWhatAnEarlierStartLeftBeforeItBegins) {
  const TempDir folder;
  writeFile(folder / "file", "old");
  const ScopedReplace transport(
      platformCalls.downloadFile, +[](const char*, const char* destPath, const DownloadLimits&) {
        EXPECT_FALSE(fs::exists(destPath));
        return 1;
      });
  downloadFile("http://host/", (folder / "file").c_str());
  EXPECT_FALSE(fs::exists(folder / "file"));
}

TEST(DownloadFile, RemovesALinkAndNotWhatItLeadsTo) {
  const RecordedTransfers recorded;
  const TempDir folder;
  writeFile(folder / "elsewhere", "precious");
  fs::create_symlink(folder / "elsewhere", folder / "file");
  downloadFile("http://host/", (folder / "file").c_str());
  EXPECT_FALSE(fs::is_symlink(folder / "file"));
  EXPECT_EQ(readFile(folder / "elsewhere"), "precious");
}

TEST(DownloadFile, FailsAtOnceWhereThereIsNoTransport) {
  const TempDir folder;
  writeFile(folder / "file", "old");
  const ScopedReplace transport(platformCalls.downloadFile, nullptr);
  const CapturedLog log;
  EXPECT_EQ(downloadFile("http://host/", (folder / "file").c_str()), 1);
  EXPECT_FALSE(fs::exists(folder / "file"));
  EXPECT_THAT(log.messages(),
              ElementsAre("Download failed\n",
                          "[Download] Nothing came: there is no network here (http://host/)\n"));
}

TEST(DownloadFile, FailsAtOnceBelowTheUrlThatSwitchesUpdatesOff) {
  const RecordedTransfers transport;
  const CapturedLog log;
  EXPECT_EQ(downloadFile("http://no.invalid/Quillory-JRE-version.txt", "/nonexistent/file"), 1);
  EXPECT_THAT(transfers, IsEmpty());
  EXPECT_THAT(log.messages(), ElementsAre("Download failed\n",
                                          "[Download] Nothing came: updates are switched off "
                                          "(http://no.invalid/Quillory-JRE-version.txt)\n"));
}

TEST(DownloadFile, HasNoLimitsButThoseOfItsCaller) {
  const RecordedTransfers transport;
  downloadFile("http://host/", "/nonexistent/file");
  EXPECT_EQ(transferLimits.maxBytes, 0);
  EXPECT_EQ(transferLimits.totalSeconds, 0);
  downloadFile("http://host/", "/nonexistent/file", {7, 0.5});
  EXPECT_EQ(transferLimits.maxBytes, 7);
  EXPECT_EQ(transferLimits.totalSeconds, 0.5);
}

TEST(DownloadVersionFile, WaitsForASmallFileAndNotForLong) {
  const RecordedTransfers recorded;
  downloadVersionFile("/folder", "http://host/", "GU");
  EXPECT_EQ(transferLimits.maxBytes, 65536);
  EXPECT_EQ(transferLimits.totalSeconds, 20);
}

TEST(MayRedirect, NeverLeavesTheWebNorHttps) {
  static constexpr struct {
    const char* from;
    const char* to;
    bool isAllowed;
  } kCases[] = {{"http://a/", "http://b/", true},    {"http://a/", "https://a/", true},
                {"https://a/", "https://b/", true},  {"https://a/", "http://a/", false},
                {"HTTPS://a/", "http://a/", false},  {"https://a/", "HTTP://a/", false},
                {"https://a/", "HTTPS://a/", true},  {"http://a/", "file:///etc/x", false},
                {"http://a/", "ftp://a/", false},    {"https://a/", "data:,x", false},
                {"http://a/", "httpsx://a/", false}, {"http://a/", "", false},
                {"http://a/", "http", false}};
  for (const auto& [from, to, isAllowed] : kCases)
    EXPECT_EQ(mayRedirect(from, to), isAllowed) << from << " to " << to;
}

TEST(PartialDownloadPath, LiesBesideTheDestinationAndNamesTheProcess) {
  EXPECT_EQ(partialDownloadPath("/a/b"), "/a/b." + std::to_string(getpid()) + ".part");
}

TEST(KeepDownload, GivesTheFileItsFinalName) {
  for (const int status : {0, 200, 203, 299}) {
    SCOPED_TRACE(status);
    const TempDir folder;
    const std::string destination = folder / "file";
    writeFile(partialDownloadPath(destination), "new");
    EXPECT_TRUE(keepDownload(destination, status));
    EXPECT_EQ(readFile(destination), "new");
    EXPECT_FALSE(fs::exists(partialDownloadPath(destination)));
  }
}

TEST(KeepDownload, RemovesThePageOfAnError) {
  for (const int status : {100, 199, 300, 304, 401, 404, 500, 503, 999}) {
    SCOPED_TRACE(status);
    const TempDir folder;
    const std::string destination = folder / "file";
    writeFile(partialDownloadPath(destination), "<html>");
    EXPECT_FALSE(keepDownload(destination, status));
    EXPECT_TRUE(fs::is_empty(folder.path()));
  }
}

TEST(KeepDownload, LeavesNothingWhenTheFinalNameIsTaken) {
  const TempDir folder;
  const std::string destination = folder / "file";
  fs::create_directory(destination);
  writeFile(partialDownloadPath(destination), "new");
  EXPECT_FALSE(keepDownload(destination, 200));
  EXPECT_FALSE(fs::exists(partialDownloadPath(destination)));
}

TEST(KeepDownload, FailsWithoutAPartialFile) {
  const TempDir folder;
  EXPECT_FALSE(keepDownload(folder / "file", 200));
  EXPECT_TRUE(fs::is_empty(folder.path()));
}

TEST(DiscardDownload, RemovesThePartialFile) {
  const TempDir folder;
  const std::string destination = folder / "file";
  writeFile(partialDownloadPath(destination), "half");
  discardDownload(destination);
  EXPECT_TRUE(fs::is_empty(folder.path()));
  discardDownload(destination);
}

}  // namespace
}  // namespace quillory
