#include "java/jre_download.h"

#include <gmock/gmock.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "support/clock.h"
#include "support/log.h"
#include "support/platform.h"
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
using ::testing::ContainsRegex;
using ::testing::ElementsAre;
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

TEST(ReadJreVersion, TakesATabForAPartOfTheVersion) {
  CapturedLog log;
  StreamOf file("1\t8\v\f9 x");
  EXPECT_EQ(readJreVersion(file.get()), "1\t8\v\f9");
}

TEST(ReadJreVersion, AcceptsFiftyCharacters) {
  const std::string fifty(50, '7');
  for (const char* const end : {"", "\n", " "}) {
    StreamOf file(fifty + end);
    EXPECT_EQ(readJreVersion(file.get()), fifty);
  }
}

TEST(ReadJreVersion, RefusesTheFiftyFirst) {
  CapturedLog log;
  StreamOf file(std::string(51, '7'));
  EXPECT_EQ(readJreVersion(file.get()), std::nullopt);
  EXPECT_EQ(log.messages().back(), "\n[JREDownload] Version invalid (too long)\n");
}

class DownloadTest : public ::testing::Test {
 protected:
  void SetUp() override {
    fs::create_directories(server_.versionFileFolder);
    // Stands in for the LZMA tool: "compressed" is what has this first line.
    writeScript(tools_.lzmaTool,
                "echo \"$@\" > \"$0.arguments\"\n[ \"$1\" = d ] || exit 2\n"
                "[ \"$(head -c 5 \"$2\")\" = LZMA: ] || exit 1\ntail -c +6 \"$2\" > \"$3\"");
  }

  void serveVersion(const std::string& content) {
    net_.files()["http://localhost/updates/Quillory-JRE-version.txt"] = content;
  }
  void serveArchive(const std::string& version, const std::string& content) {
    net_.files()["http://localhost/updates/Quillory-JRE-" + version + "-archive.p2.l2"] = content;
  }
  std::string versionFile() const {
    return server_.versionFileFolder + "/Quillory-JRE-version.txt";
  }

  // Everything in the master folder but the updater's.
  std::vector<std::string> leftBehind() const {
    std::vector<std::string> entries;
    for (const fs::directory_entry& entry : fs::directory_iterator(place_.masterFolder))
      if (entry.path() != server_.versionFileFolder) entries.push_back(entry.path().string());
    return entries;
  }

  std::optional<FetchedJre> tryToDownload() {
    const JreOutcome<FetchedJre> outcome = downloadJre(place_, server_, tools_, display_);
    exitStatus_ = outcome.exitStatus;
    return outcome.provided;
  }
  /// What is downloaded; nothing is not expected.
  FetchedJre download() {
    const std::optional<FetchedJre> jre = tryToDownload();
    EXPECT_TRUE(jre.has_value());
    return jre.value_or(FetchedJre{});
  }
  /// Nothing comes, the log says `message`, and nothing stays.
  void expectFailure(const std::string& message) {
    CapturedLog log;
    EXPECT_EQ(tryToDownload(), std::nullopt);
    EXPECT_THAT(log.text(), ContainsRegex(message));
    EXPECT_THAT(leftBehind(), IsEmpty());
    EXPECT_EQ(exitStatus_, kExitFailure);
  }

  TempDir dir_;
  FakeServer net_;
  SplashWatch splash_;
  JrePlace place_ = {dir_ / "master", *JreName::make("JRE", "")};
  JreServer server_ = {"http://localhost/updates/", dir_ / "master/Quillory-Quillory-7-complete"};
  ArchiveTools tools_ = {.lzmaTool = dir_ / "lzma64"};
  FetchDisplay display_ = splashDisplay();
  int exitStatus_ = -1;  ///< of the last outcome
};

using DownloadJre = DownloadTest;

TEST_F(DownloadJre, UnpacksTheArchiveOfTheVersionFile) {
  serveVersion("1.8.0_202\n");
  serveArchive("1.8.0_202", "LZMA:" + jreArchive());
  const FetchedJre jre = download();
  EXPECT_EQ(jre.version, "1.8.0_202");
  EXPECT_THAT(jre.folder, StartsWith(place_.masterFolder + "/QuilloryTemp-"));
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
  download();
  EXPECT_THAT(net_.requests(),
              ElementsAre("http://localhost/updates/Quillory-JRE-version.txt?time=1234567890123",
                          "http://localhost/updates/Quillory-JRE-8-archive.p2.l2"));
  EXPECT_EQ(readFile(versionFile()), "8") << "stored in the updater's folder";
}

TEST_F(DownloadJre, LogsItsWay) {
  serveVersion("8");
  serveArchive("8", "LZMA:" + jreArchive());
  CapturedLog log;
  const FetchedJre jre = download();
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
  download();
  EXPECT_THAT(splash_.calls(), ElementsAre("show", "animate", "show"));
}

TEST_F(DownloadJre, LeavesTheSplashAloneWhenSilent) {
  splash::setProgress(splash::kProgressHidden);
  display_ = {};
  serveVersion("8");
  serveArchive("8", "LZMA:" + jreArchive());
  download();
  EXPECT_THAT(splash_.calls(), IsEmpty());
  EXPECT_EQ(splash::progress(), splash::kProgressHidden);
}

TEST_F(DownloadJre, AcceptsAVersionOfFiftyCharacters) {
  const std::string fifty(50, '1');
  serveVersion(fifty + "\n");
  serveArchive(fifty, "LZMA:" + jreArchive());
  EXPECT_EQ(download().version, fifty);
}

TEST_F(DownloadJre, EndsWithoutAVersionFile) {
  expectFailure("\\[JREDownload\\] Failed to download JRE version file\n");
}

TEST_F(DownloadJre, TakesTheSplashDownWhenTheVersionDoesNotCome) {
  const SplashInTheLog splash;
  expectFailure("splash: show\n(.|\n)*splash: close\n(.|\n)*Failed to download JRE version file\n");
}

TEST_F(DownloadJre, NeverTakesAnOldVersionFileForANewOne) {
  writeFile(versionFile(), "8");
  serveArchive("8", "LZMA:" + jreArchive());
  expectFailure("Failed to download JRE version file\n");
  EXPECT_FALSE(fs::exists(versionFile()));
}

TEST_F(DownloadJre, EndsAtAVersionOfFiftyOneCharacters) {
  serveVersion(std::string(51, '1'));
  expectFailure("\\[JREDownload\\] Version invalid \\(too long\\)\n");
}

TEST_F(DownloadJre, RefusesAVersionThatLeavesTheFolder) {
  for (const std::string& version : {std::string("../../etc"), std::string("8/x"), std::string("/"),
                                     std::string(".."), std::string("8\0x", 3)}) {
    serveVersion(version);
    expectFailure("\\[JREDownload\\] JRE version '.*' cannot be part of a folder name\n");
  }
}

TEST_F(DownloadJre, TakesAPageForAVersionThatNoArchiveHas) {
  serveVersion("<!DOCTYPE html>\n<html><body>It works!</body></html>\n");
  expectFailure("JRE Version is <!DOCTYPE\n(.|\n)*\\[JREDownload\\] Failed to download JRE\n");
}

TEST_F(DownloadJre, EndsWithoutAnArchive) {
  serveVersion("8");
  expectFailure("\\[JREDownload\\] Failed to download JRE\n");
}

TEST_F(DownloadJre, TakesTheSplashDownWhenTheArchiveDoesNotCome) {
  const SplashInTheLog splash;
  serveVersion("8");
  expectFailure(
      "splash: show\n(.|\n)*splash: show\n(.|\n)*splash: close\n(.|\n)*Failed to download JRE\n");
}

TEST_F(DownloadJre, LeavesTheSplashAloneWhenSilentAndNothingComes) {
  display_ = {};
  expectFailure("\\[JREDownload\\] Failed to download JRE version file\n");
  EXPECT_THAT(splash_.calls(), IsEmpty());
}

TEST_F(DownloadJre, EndsWhenTheArchiveCannotBeDecompressed) {
  serveVersion("8");
  for (const char* const content : {"", "garbage", "<html></html>"}) {
    serveArchive("8", content);
    expectFailure("\\[JREDownload\\] Failed to decompress JRE archive\n");
  }
}

TEST_F(DownloadJre, EndsWithoutADecompressionTool) {
  serveVersion("8");
  serveArchive("8", "LZMA:" + jreArchive());
  tools_.lzmaTool = dir_ / "no such tool";
  expectFailure("\\[JREDownload\\] Failed to decompress JRE archive\n");
}

TEST_F(DownloadJre, EndsWhenAKilledToolLeftNothing) {
  serveVersion("8");
  serveArchive("8", "LZMA:" + jreArchive());
  writeScript(tools_.lzmaTool, "kill -9 $$");
  expectFailure("\\[ExtractArchive\\] Failed to extract archive - couldn't open file ");
}

TEST_F(DownloadJre, SaysInClearWordsThatAWebPageCame) {
  const std::string words = "\\[JREDownload\\] A web page came in the place of the version file\\.";
  for (const char* page : {"<!DOCTYPE html>\n<html>", "\xEF\xBB\xBF \r\n\t<html>", "<", "<a>x"}) {
    SCOPED_TRACE(page);
    serveVersion(page);
    expectFailure(words + "(.|\n)*\\[JREDownload\\] Failed to download JRE\n");
  }
  serveVersion("<html><head><title>Welcome</title></head><body></body></html>");
  expectFailure("Version invalid \\(too long\\)\n(.|\n)*" + words);

  serveVersion("1<8");
  CapturedLog log;
  tryToDownload();
  EXPECT_FALSE(log.contains("A web page came"));
}

TEST_F(DownloadJre,
       WaitsForTheVersionFileNotForLongAndForTheArchiveAsLongAsItTakesUpToFourGigabytes) {
  static std::vector<DownloadLimits> limits;
  limits.clear();
  const ScopedReplace transport(
      platformCalls.downloadFile,
      +[](const char*, const char* destPath, const DownloadLimits& itsLimits) {
        limits.push_back(itsLimits);
        writeFile(destPath, "8");
        return 1;
      });
  expectFailure("Failed to decompress JRE archive\n");
  ASSERT_EQ(limits.size(), 2U);
  EXPECT_EQ(limits[0].maxBytes, 65536);
  EXPECT_EQ(limits[0].totalSeconds, 20);
  EXPECT_EQ(limits[1].maxBytes, 4294967296);
  EXPECT_EQ(limits[1].totalSeconds, 0);
}

TEST_F(DownloadJre, ShowsTheSplashBeforeItSaysWhatItFetches) {
  const SplashInTheLog splash;
  serveVersion("8");
  expectFailure(
      "splash: show\n\\[JREDownload\\] Fetching JRE Version from (.|\n)*"
      "splash: show\n\\[JREDownload\\] Downloading JRE\n");
}

TEST_F(DownloadJre, AsksForNamesThatAnAddressCannotHold) {
  place_.name = *JreName::make("My JR\xC3\x89", "");
  net_.files()["http://localhost/updates/Quillory-My%20JR%C3%89-version.txt"] = "\xC3\xBC";
  expectFailure(
      "JRE archive is at "
      "http://localhost/updates/Quillory-My%20JR%C3%89-%C3%BC-archive.p2.l2\n");
}

TEST_F(DownloadJre, EndsWithoutAVersionEvenWhenAnArchiveCame) {
  serveVersion("");
  serveArchive("", "LZMA:" + jreArchive());
  expectFailure(
      "\\[JREDownload\\] Downloaded JRE is now ready\\.\n(.|\n)*"
      "\\[JREDownload\\] Failed to detect or download a JRE \\(no jre version\\)\n");
}

TEST_F(DownloadJre, TreatsAVersionFileThatCannotBeOpenedAsEmpty) {
  serveArchive("", "LZMA:" + jreArchive());
  // A socket: it is there, and cannot be opened.
  const ScopedReplace transport(
      platformCalls.downloadFile,
      +[](const char* url, const char* destPath, const DownloadLimits&) {
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

TEST_F(DownloadJre, EndsWhenTheSignatureDoesNotHold) {
  serveVersion("8");
  const std::string unsignedArchive = jreArchive();
  const std::string entries = unsignedArchive.substr(0, unsignedArchive.size() - 1);
  serveArchive("8", "LZMA:" + entries + brokenSignature(entries.size()));
  expectFailure("\\[JREDownload\\] The downloaded archive holds no usable JRE\n");
}

TEST_F(DownloadJre, EndsWhenTheArchiveHoldsNoJava) {
  serveVersion("8");
  serveArchive("8", "LZMA:" + fileEntry("Contents/readme", "hello") + records({""}));
  expectFailure("\\[JREDownload\\] The downloaded archive holds no usable JRE\n");
}

TEST_F(DownloadJre, SucceedsAtALaterStart) {
  serveVersion("8");
  serveArchive("8", "garbage");
  expectFailure("Failed to decompress JRE archive\n");
  serveArchive("8", "LZMA:" + jreArchive());
  EXPECT_EQ(download().version, "8");
}

}  // namespace
}  // namespace quillory
