#include "java/jre_download.h"

#include <gmock/gmock.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "support/clock.h"
#include "tests/harness/captured_log.h"
#include "tests/harness/page_example.h"
#include "tests/harness/records.h"
#include "tests/harness/scoped_replace.h"
#include "tests/harness/stream_of.h"
#include "tests/harness/temp_dir.h"
#include "tests/java/jre_fixture.h"

namespace quillory {
namespace {

using namespace quillory::testing;
using ::testing::ElementsAre;
using ::testing::ExitedWithCode;
using ::testing::IsEmpty;
using ::testing::StartsWith;
namespace fs = std::filesystem;

TEST(ReadJreVersion, EndsAtALineEndASpaceOrTheEndOfTheFile) {
  for (const char* const content :
       {"1.8.0_202", "1.8.0_202\n", "1.8.0_202\r\n", "1.8.0_202 x", "1.8.0_202\nmore\n"}) {
    StreamOf file(content);
    EXPECT_EQ(readJreVersion(file.get()), "1.8.0_202") << content;
  }
}

TEST(ReadJreVersion, ReadsTheExampleOfTheFormatPage) {
  StreamOf file(pageExample("formats/version-file.md"));
  EXPECT_EQ(readJreVersion(file.get()), "1.8.0_202");
}

TEST(ReadJreVersion, IsEmptyForAnEmptyFileOrNone) {
  for (const char* const content : {"", "\n", " 8"}) {
    StreamOf file(content);
    EXPECT_EQ(readJreVersion(file.get()), "");
  }
  EXPECT_EQ(readJreVersion(nullptr), "");
}

TEST(ReadJreVersion, EchoesEveryCharacter) {
  CapturedLog log;
  StreamOf file("1.8\n");
  readJreVersion(file.get());
  EXPECT_THAT(log.messages(), ElementsAre("[JREDownload] Extracting version: ", "1", ".", "8",
                                          "\n[JREDownload] Spaces in version file, assuming EOF\n",
                                          "\n", "[JREDownload] JRE Version is 1.8\n"));
}

TEST(ReadJreVersion, SaysNothingOfSpacesAtTheEndOfTheFile) {
  CapturedLog log;
  StreamOf file("8");
  readJreVersion(file.get());
  EXPECT_THAT(log.messages(), ElementsAre("[JREDownload] Extracting version: ", "8", "\n",
                                          "[JREDownload] JRE Version is 8\n"));
}

TEST(ReadJreVersion, AcceptsFiftyCharacters) {
  const std::string fifty(50, '7');
  for (const char* const end : {"", "\n", " "}) {
    StreamOf file(fifty + end);
    EXPECT_EQ(readJreVersion(file.get()), fifty);
  }
}

TEST(ReadJreVersionDeathTest, EndsTheProcessAtTheFiftyFirst) {
  StreamOf file(std::string(51, '7'));
  EXPECT_EXIT(
      {
        logToStandardError();
        readJreVersion(file.get());
      },
      ExitedWithCode(1), "\n\\[JREDownload\\] Version invalid \\(too long\\)\n");
}

class DownloadTest : public ::testing::Test {
 protected:
  void SetUp() override {
    request_.masterFolder = dir_ / "master";
    request_.versionFileFolder = dir_ / "master/Quillory-Quillory-7-complete";
    fs::create_directories(request_.versionFileFolder);
    request_.jreName = "JRE";
    request_.updateUrl = "http://localhost/updates/";
    request_.lzmaTool = dir_ / "lzma64";
    request_.display = splashDisplay();
    // Stands in for the LZMA tool: "compressed" is what has this first line.
    writeScript(request_.lzmaTool,
                "echo \"$@\" > \"$0.arguments\"\n[ \"$1\" = d ] || exit 2\n"
                "[ \"$(head -c 5 \"$2\")\" = LZMA: ] || exit 1\ntail -c +6 \"$2\" > \"$3\"");
  }

  void serveVersion(const std::string& content) {
    server_.files()["http://localhost/updates/Quillory-JRE-version.txt"] = content;
  }
  void serveArchive(const std::string& version, const std::string& content) {
    server_.files()["http://localhost/updates/Quillory-JRE-" + version + "-archive.p2.l2"] =
        content;
  }
  std::string versionFile() const {
    return request_.versionFileFolder + "/Quillory-JRE-version.txt";
  }

  // Everything in the master folder but the updater's.
  std::vector<std::string> leftBehind() const {
    std::vector<std::string> entries;
    for (const fs::directory_entry& entry : fs::directory_iterator(request_.masterFolder))
      if (entry.path() != request_.versionFileFolder) entries.push_back(entry.path().string());
    return entries;
  }

  // The death tests fork, so that what the child leaves in the folder can be looked at.
  void expectFailure(const std::string& message) {
    EXPECT_EXIT(
        {
          logToStandardError();
          logSplashToStandardError();
          downloadJre(request_);
        },
        ExitedWithCode(1), message);
    EXPECT_THAT(leftBehind(), IsEmpty());
  }

  TempDir dir_;
  FakeServer server_;
  SplashWatch splash_;
  JreRequest request_;
};

using DownloadJre = DownloadTest;
using DownloadJreDeathTest = DownloadTest;

TEST_F(DownloadJre, UnpacksTheArchiveOfTheVersionFile) {
  serveVersion("1.8.0_202\n");
  serveArchive("1.8.0_202", "LZMA:" + jreArchive());
  const DownloadedJre jre = downloadJre(request_);
  EXPECT_EQ(jre.version, "1.8.0_202");
  EXPECT_THAT(jre.folder, StartsWith(request_.masterFolder + "/QuilloryTemp-"));
  EXPECT_THAT(
      listTree(jre.folder),
      ElementsAre("Contents/", "Contents/Home/", "Contents/Home/bin/", "Contents/Home/bin/java",
                  "Contents/Home/bin/unpack200", "Contents/Home/lib/",
                  "Contents/Home/lib/classes.jsa", "Contents/Home/lib/jli/",
                  "Contents/Home/lib/jli/libjli.dylib", "Contents/Home/lib/rt.jar",
                  "Contents/Home/lib/security/", "Contents/Home/lib/security/cacerts",
                  "Contents/MacOS/", "Contents/MacOS/libjli.dylib"));
  EXPECT_EQ(readFile(dir_ / "lzma64.arguments"),
            "d " + jre.folder + "/JREArchive.p2.l2 " + jre.folder + "/JREArchive.p2\n");
}

TEST_F(DownloadJre, AsksForTheVersionAndTheArchive) {
  const ScopedReplace clock(
      timeCalls.nowMillis, +[]() -> std::uint64_t { return 1234567890123; });
  serveVersion("8");
  serveArchive("8", "LZMA:" + jreArchive());
  downloadJre(request_);
  EXPECT_THAT(server_.requests(),
              ElementsAre("http://localhost/updates/Quillory-JRE-version.txt?time=1234567890123",
                          "http://localhost/updates/Quillory-JRE-8-archive.p2.l2"));
  EXPECT_EQ(readFile(versionFile()), "8") << "stored in the updater's folder";
}

TEST_F(DownloadJre, LogsItsWay) {
  serveVersion("8");
  serveArchive("8", "LZMA:" + jreArchive());
  CapturedLog log;
  const DownloadedJre jre = downloadJre(request_);
  const std::string text = log.text();
  std::size_t at = 0;
  for (const std::string& part :
       {std::string("[JREDownload] Failed to pick up any existing system JRE, will download\n"),
        std::string("[JREDownload] Fetching JRE Version from http://localhost/updates/"
                    "Quillory-JRE-version.txt?time="),
        "[JREDownload] JRE version downloaded OK [" + versionFile() + "]\n",
        std::string("[JREDownload] Extracting version: 8\n[JREDownload] JRE Version is 8\n"),
        std::string("[JREDownload] Downloading JRE\n"),
        std::string("[JREDownload] JRE Downloaded OK, will extract\n"),
        std::string("[JREDownload] Decompressing JRE archive\n"),
        "[JREDownload] Extracting JRE archive to " + jre.folder + "\n",
        std::string("[JREDownload] Done extracting JRE archive\n"),
        std::string("[JREDownload] Regenerating jsa...\n"),
        std::string("[Spawner] Appended argument -Xshare:dump\n"),
        std::string("[JREDownload] Downloaded JRE is now ready.\n")}) {
    at = text.find(part, at);
    ASSERT_NE(at, std::string::npos) << part;
    at += part.size();
  }
}

TEST_F(DownloadJre, ShowsTheSplashWithAnIndefiniteBar) {
  splash::setProgress(splash::kProgressHidden);
  serveVersion("8");
  serveArchive("8", "LZMA:" + jreArchive());
  downloadJre(request_);
  EXPECT_THAT(splash_.calls(), ElementsAre("show", "animate", "show"));
}

TEST_F(DownloadJre, LeavesTheSplashAloneWhenSilent) {
  splash::setProgress(splash::kProgressHidden);
  request_.display = {};
  serveVersion("8");
  serveArchive("8", "LZMA:" + jreArchive());
  downloadJre(request_);
  EXPECT_THAT(splash_.calls(), IsEmpty());
  EXPECT_EQ(splash::progress(), splash::kProgressHidden);
}

TEST_F(DownloadJre, AcceptsAVersionOfFiftyCharacters) {
  const std::string fifty(50, '1');
  serveVersion(fifty + "\n");
  serveArchive(fifty, "LZMA:" + jreArchive());
  EXPECT_EQ(downloadJre(request_).version, fifty);
}

TEST_F(DownloadJreDeathTest, EndsWithoutAVersionFile) {
  expectFailure("\\[JREDownload\\] Failed to download JRE version file\n");
}

TEST_F(DownloadJreDeathTest, TakesTheSplashDownWhenTheVersionDoesNotCome) {
  expectFailure("splash: show\n(.|\n)*splash: close\n(.|\n)*Failed to download JRE version file\n");
}

TEST_F(DownloadJreDeathTest, NeverTakesAnOldVersionFileForANewOne) {
  writeFile(versionFile(), "8");
  serveArchive("8", "LZMA:" + jreArchive());
  expectFailure("Failed to download JRE version file\n");
  EXPECT_FALSE(fs::exists(versionFile()));
}

TEST_F(DownloadJreDeathTest, EndsAtAVersionOfFiftyOneCharacters) {
  serveVersion(std::string(51, '1'));
  expectFailure("\\[JREDownload\\] Version invalid \\(too long\\)\n");
}

TEST_F(DownloadJreDeathTest, RefusesAVersionThatLeavesTheFolder) {
  for (const std::string& version : {std::string("../../etc"), std::string("8/x"), std::string("/"),
                                     std::string(".."), std::string("8\0x", 3)}) {
    serveVersion(version);
    expectFailure("\\[JREDownload\\] JRE version '.*' cannot be part of a folder name\n");
  }
}

TEST_F(DownloadJreDeathTest, TakesAPageForAVersionThatNoArchiveHas) {
  serveVersion("<!DOCTYPE html>\n<html><body>It works!</body></html>\n");
  expectFailure("JRE Version is <!DOCTYPE\n(.|\n)*\\[JREDownload\\] Failed to download JRE\n");
}

TEST_F(DownloadJreDeathTest, EndsWithoutAnArchive) {
  serveVersion("8");
  expectFailure("\\[JREDownload\\] Failed to download JRE\n");
}

TEST_F(DownloadJreDeathTest, TakesTheSplashDownWhenTheArchiveDoesNotCome) {
  serveVersion("8");
  expectFailure(
      "splash: show\n(.|\n)*splash: show\n(.|\n)*splash: close\n(.|\n)*Failed to download JRE\n");
}

TEST_F(DownloadJreDeathTest, LeavesTheSplashAloneWhenSilentAndNothingComes) {
  request_.display = {};
  EXPECT_EXIT(
      {
        logToStandardError();
        logSplashToStandardError();
        downloadJre(request_);
      },
      ExitedWithCode(1),
      ::testing::AllOf(::testing::HasSubstr("Failed to download JRE version file"),
                       ::testing::Not(::testing::HasSubstr("splash: "))));
}

TEST_F(DownloadJreDeathTest, EndsWhenTheArchiveCannotBeDecompressed) {
  serveVersion("8");
  for (const char* const content : {"", "garbage", "<html></html>"}) {
    serveArchive("8", content);
    expectFailure("\\[JREDownload\\] Failed to decompress JRE archive\n");
  }
}

TEST_F(DownloadJreDeathTest, EndsWithoutADecompressionTool) {
  serveVersion("8");
  serveArchive("8", "LZMA:" + jreArchive());
  request_.lzmaTool = dir_ / "no such tool";
  expectFailure("\\[JREDownload\\] Failed to decompress JRE archive\n");
}

TEST_F(DownloadJreDeathTest, EndsWhenAKilledToolLeftNothing) {
  serveVersion("8");
  serveArchive("8", "LZMA:" + jreArchive());
  writeScript(request_.lzmaTool, "kill -9 $$");
  EXPECT_EXIT(
      {
        logToStandardError();
        downloadJre(request_);
      },
      ExitedWithCode(1), "\\[ExtractArchive\\] Failed to extract archive - couldn't open file ");
}

TEST_F(DownloadJreDeathTest, EndsWithoutAVersionEvenWhenAnArchiveCame) {
  serveVersion("");
  serveArchive("", "LZMA:" + jreArchive());
  expectFailure(
      "\\[JREDownload\\] Downloaded JRE is now ready\\.\n(.|\n)*"
      "\\[JREDownload\\] Failed to detect or download a JRE \\(no jre version\\)\n");
}

TEST_F(DownloadJreDeathTest, TreatsAVersionFileThatCannotBeOpenedAsEmpty) {
  serveArchive("", "LZMA:" + jreArchive());
  // A socket: it is there, and cannot be opened.
  const ScopedReplace transport(
      downloadCalls.downloadFile, +[](const char* url, const char* destPath) {
        if (std::string(url).find("version.txt") == std::string::npos) {
          writeFile(destPath, "LZMA:" + jreArchive());
          return 1;
        }
        sockaddr_un address = {};
        address.sun_family = AF_UNIX;
        std::string(destPath).copy(address.sun_path, sizeof address.sun_path - 1);
        EXPECT_EQ(bind(socket(AF_UNIX, SOCK_STREAM, 0), reinterpret_cast<sockaddr*>(&address),
                       sizeof address),
                  0);
        return 1;
      });
  expectFailure(
      "\\[JREDownload\\] \\*{26} Unable to open version file! \\[6\\]\n(.|\n)*"
      "\\(no jre version\\)\n");
}

TEST_F(DownloadJreDeathTest, EndsWhenTheSignatureDoesNotHold) {
  serveVersion("8");
  const std::string unsignedArchive = jreArchive();
  const std::string entries = unsignedArchive.substr(0, unsignedArchive.size() - 1);
  serveArchive("8", "LZMA:" + entries + brokenSignature(entries.size()));
  expectFailure("\\[JREDownload\\] The downloaded archive holds no usable JRE\n");
}

TEST_F(DownloadJreDeathTest, EndsWhenTheArchiveHoldsNoJava) {
  serveVersion("8");
  serveArchive("8", "LZMA:" + fileEntry("Contents/readme", "hello") + records({""}));
  expectFailure("\\[JREDownload\\] The downloaded archive holds no usable JRE\n");
}

TEST_F(DownloadJreDeathTest, SucceedsAtALaterStart) {
  serveVersion("8");
  serveArchive("8", "garbage");
  expectFailure("Failed to decompress JRE archive\n");
  serveArchive("8", "LZMA:" + jreArchive());
  EXPECT_EQ(downloadJre(request_).version, "8");
}

}  // namespace
}  // namespace quillory
