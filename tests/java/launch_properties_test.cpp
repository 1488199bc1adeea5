#include "java/launch_properties.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstring>

#include "java/for_embedders.h"
#include "support/clock.h"
#include "support/exit_status.h"
#include "support/paths.h"
#include "support/platform.h"
#include "support/url_request.h"
#include "tests/harness/captured_log.h"
#include "tests/harness/file_size_limit.h"
#include "tests/harness/page_example.h"
#include "tests/harness/records.h"
#include "tests/harness/temp_dir.h"

namespace quillory {
namespace {

using namespace std::string_literals;
using ::quillory::testing::CapturedLog;
using ::quillory::testing::FileSizeLimit;
using ::quillory::testing::pageExample;
using ::quillory::testing::readFile;
using ::quillory::testing::records;
using ::quillory::testing::ScopedReplace;
using ::quillory::testing::TempDir;
using ::quillory::testing::writeFile;
using ::testing::Contains;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::SizeIs;

constexpr std::uint64_t kFiveHundredSeconds = 500'000'000;

/// What a block holds when it is written to a file.
std::string contentOf(const PropertyBlock& block) {
  return block.bytes().substr(0, propsLen(block));
}

/// A socket: it is there, and nobody, root included, can open it.
void makeUnopenable(const std::string& path) {
  sockaddr_un address = {};
  address.sun_family = AF_UNIX;
  ASSERT_LT(path.size(), sizeof address.sun_path);
  std::memcpy(address.sun_path, path.c_str(), path.size());
  const int file = socket(AF_UNIX, SOCK_STREAM, 0);
  ASSERT_EQ(bind(file, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
  close(file);
}

/// Time stands still, and waiting is only noted.
class LaunchProperties : public ::testing::Test {
 protected:
  LaunchProperties() { waits.clear(); }

  static inline std::vector<std::uint64_t> waits;
  static inline std::uint64_t now;
  static inline std::string fileToReplace;
  TempDir dir_;
  ScopedReplace<decltype(timeCalls.sleepMicros)> noWait_{
      timeCalls.sleepMicros, +[](std::uint64_t micros) { waits.push_back(micros); }};
  ScopedReplace<decltype(timeCalls.nowMillis)> clock_{timeCalls.nowMillis, +[] { return now; }};
  ScopedReplace<std::uint64_t> start_{now, std::uint64_t{1'700'000'000'123}};
};

using AddLaunchTimeProperties = LaunchProperties;
using ReadRememberedOptions = LaunchProperties;
using MakeLaunchPropertiesFile = LaunchProperties;
using WriteLaunchProperties = LaunchProperties;

LaunchFacts someFacts() {
  return {.updateUrl = "http://u/",
          .appFolder = "/m/App",
          .jreNameProperty = "JRE",
          .launchedFromDynprops = "/bin/launcher"};
}

TEST_F(AddLaunchTimeProperties, AddsTheFactsBehindWhatTheBlockHolds) {
  PropertyBlock block;
  addStaticProperty(block, "update_url", "first");
  addLaunchTimeProperties(someFacts(), block);
  EXPECT_EQ(contentOf(block) + '\0',
            records({"qystat_update_url", "first", "qystat_update_url", "http://u/",
                     "qystat_app_dir", "/m/App", "qystat_jre_name", "JRE",
                     "qystat_launched_from_dynprops", "/bin/launcher"}));
}

TEST_F(AddLaunchTimeProperties, AddsTheDynamicUrlOnlyWhenTheStaticOneIsTheLetterD) {
  static constexpr struct {
    const char* staticUrl;
    const char* dynamicUrl;
    bool isAdded;
  } kCases[] = {
      {"D", "http://d/", true},         {"D", "", true},           {"D", nullptr, false},
      {"D/", "http://d/", false},       {"d", "http://d/", false}, {"", "http://d/", false},
      {"http://u/", "http://d/", false}};
  for (const auto& [staticUrl, dynamicUrl, isAdded] : kCases) {
    SCOPED_TRACE(::testing::Message() << staticUrl << ' ' << (dynamicUrl ? dynamicUrl : "none"));
    LaunchFacts facts = someFacts();
    facts.updateUrl = staticUrl;
    if (dynamicUrl != nullptr) facts.dynamicUpdateUrl = dynamicUrl;
    PropertyBlock block;
    addLaunchTimeProperties(facts, block);
    EXPECT_EQ(block.bytes().find("qydyna_update_url"s) != std::string::npos, isAdded);
  }
}

TEST_F(AddLaunchTimeProperties, PutsTheDynamicUrlRightBehindTheStaticOne) {
  LaunchFacts facts = someFacts();
  facts.updateUrl = "D";
  facts.dynamicUpdateUrl = "http://d/";
  PropertyBlock block;
  addLaunchTimeProperties(facts, block);
  EXPECT_TRUE(contentOf(block).starts_with(
      records({"qystat_update_url", "D", "qydyna_update_url", "http://d/", "qystat_app_dir"})));
}

TEST_F(AddLaunchTimeProperties, AddsARequestedUrlLastAndLogsIt) {
  const ScopedReplace request(
      platformCalls.requestedUrl, +[] { return "demo://open?x=1"; });
  const CapturedLog log;
  PropertyBlock block;
  addLaunchTimeProperties(someFacts(), block);
  EXPECT_TRUE(contentOf(block).ends_with("qydyna_url_req\0demo://open?x=1"s));
  EXPECT_THAT(log.messages(),
              Contains("[Extractor] Setting URL request dynamic property to 'demo://open?x=1'\n"));
}

TEST_F(AddLaunchTimeProperties, AddsNoRequestWhereThereIsNone) {
  const ScopedReplace request(
      platformCalls.requestedUrl, +[]() -> const char* { return nullptr; });
  PropertyBlock block;
  addLaunchTimeProperties(someFacts(), block);
  EXPECT_EQ(contentOf(block).find("url_req"), std::string::npos);
}

TEST_F(ReadRememberedOptions, ReturnsTheOptionsAndAddsThemAsProperties) {
  writeFile(dir_ / "lso", records({"2", "-Xss4m", "-Dname=a b"}));
  const CapturedLog log;
  PropertyBlock block;
  EXPECT_THAT(readRememberedOptions(dir_ / "lso", block), ElementsAre("-Xss4m", "-Dname=a b"));
  EXPECT_EQ(contentOf(block) + '\0',
            records({"qystat_jvm_options_count", "2", "qystat_jvm_options_0", "-Xss4m",
                     "qystat_jvm_options_1", "-Dname=a b"}));
  EXPECT_THAT(
      log.messages(),
      ElementsAre("[Extractor] Checking LSO file\n", "[Extractor] Reading " + (dir_ / "lso") + "\n",
                  "[Extractor] JRE LSO file exists\n", "[Extractor] Found 2 JVM Options\n",
                  "[Extractor] Launch Prop: jvm_options_0 = -Xss4m\n",
                  "[Extractor] Launch Prop: jvm_options_1 = -Dname=a b\n"));
}

TEST_F(ReadRememberedOptions, AddsTheCountEvenWhenItIsZero) {
  writeFile(dir_ / "lso", records({"0", "-Xss4m"}));
  PropertyBlock block;
  EXPECT_THAT(readRememberedOptions(dir_ / "lso", block), IsEmpty());
  EXPECT_EQ(contentOf(block),
            "qystat_jvm_options_count\0"
            "0"s);
}

TEST_F(ReadRememberedOptions, LogsAnOptionOf99CharactersWholeAndALongerOneCut) {
  const std::string whole(99, 'a');
  const std::string longer(100, 'b');
  writeFile(dir_ / "lso", records({"2", whole, longer}));
  const CapturedLog log;
  PropertyBlock block;
  EXPECT_THAT(readRememberedOptions(dir_ / "lso", block), ElementsAre(whole, longer));
  EXPECT_THAT(log.messages(), Contains("[Extractor] Launch Prop: jvm_options_0 = " + whole + "\n"));
  EXPECT_THAT(
      log.messages(),
      Contains("[Extractor] Launch Prop: jvm_options_1 = " + longer.substr(0, 99) + "...\n"));
}

TEST_F(ReadRememberedOptions, EndsWhereTheFileEndsWhateverTheCountClaims) {
  writeFile(dir_ / "lso", records({"9000000000000000000", "-Da=1"}));
  PropertyBlock block;
  EXPECT_THAT(readRememberedOptions(dir_ / "lso", block), ElementsAre("-Da=1"));
}

TEST_F(ReadRememberedOptions, ReadsWhatIsThereOfAFileCutAnywhere) {
  const std::string whole = records({"2", "-Da=1", "-Db=2"});
  for (std::size_t length = 0; length < whole.size(); ++length) {
    SCOPED_TRACE(length);
    writeFile(dir_ / "lso", whole.substr(0, length));
    PropertyBlock block;
    const auto options = readRememberedOptions(dir_ / "lso", block);
    EXPECT_LE(options.size(), 2U);
    for (const std::string& option : options)
      EXPECT_TRUE("-Da=1"s.starts_with(option) || "-Db=2"s.starts_with(option)) << option;
  }
}

TEST_F(ReadRememberedOptions, LooksForNoneWithoutAPrivateRuntime) {
  const CapturedLog log;
  PropertyBlock block;
  EXPECT_THAT(readRememberedOptions("", block), IsEmpty());
  EXPECT_EQ(propsLen(block), 0U);
  const std::string stars(43, '*');
  EXPECT_EQ(log.text(), "[Extractor] Checking LSO file\n" + stars +
                            "\nNot a private JRE (no need to check for LSO file)\n" + stars + "\n");
}

TEST_F(ReadRememberedOptions, DoesNotWaitForAFileThatIsNotThere) {
  const CapturedLog log;
  PropertyBlock block;
  EXPECT_THAT(readRememberedOptions(dir_ / "lso", block), IsEmpty());
  EXPECT_EQ(propsLen(block), 0U);
  EXPECT_THAT(waits, IsEmpty());
  const std::string stars(43, '*');
  EXPECT_EQ(log.text(), "[Extractor] Checking LSO file\n[Extractor] Reading " + (dir_ / "lso") +
                            "\n" + stars + "\nJRE LSO file does not exist\n" + stars + "\n");
}

TEST_F(ReadRememberedOptions, TriesAFileThatCannotBeOpenedFiveTimesWith500SecondsAfterEach) {
  makeUnopenable(dir_ / "lso");
  const CapturedLog log;
  PropertyBlock block;
  EXPECT_THAT(readRememberedOptions(dir_ / "lso", block), IsEmpty());
  EXPECT_THAT(waits, SizeIs(5));
  EXPECT_THAT(waits, Each(kFiveHundredSeconds));
  EXPECT_TRUE(
      log.contains("[Extractor] LSO file does exist. Retrying (0)..."
                   "[Extractor] LSO file does exist. Retrying (1)..."
                   "[Extractor] LSO file does exist. Retrying (2)..."
                   "[Extractor] LSO file does exist. Retrying (3)..."
                   "[Extractor] LSO file does exist. Retrying (4)..."
                   "*******************************************\n"
                   "JRE LSO file does not exist\n"));
}

TEST_F(ReadRememberedOptions, GoesOnWhenARetrySucceeds) {
  fileToReplace = dir_ / "lso";
  makeUnopenable(fileToReplace);
  const ScopedReplace comesTrue(
      timeCalls.sleepMicros, +[](std::uint64_t micros) {
        waits.push_back(micros);
        unlink(fileToReplace.c_str());
        writeFile(fileToReplace, records({"1", "-Da=1"}));
      });
  const CapturedLog log;
  PropertyBlock block;
  EXPECT_THAT(readRememberedOptions(dir_ / "lso", block), ElementsAre("-Da=1"));
  EXPECT_THAT(waits, SizeIs(1));
  EXPECT_TRUE(log.contains("Retrying (1)...[Extractor] JRE LSO file exists\n"));
}

TEST_F(MakeLaunchPropertiesFile, NamesTheMillisecondsAndTheNumberOfEntries) {
  writeFile(dir_ / "one", "");
  char path[kPathCapacity];
  EXPECT_EQ(makeLaunchPropertiesFile(path, dir_.str().c_str()), path);
  // "." and ".." count.
  EXPECT_EQ(path, dir_ / "QYLaunchProperties-1700000000123-3");
}

TEST_F(MakeLaunchPropertiesFile, CountsNoEntriesInAFolderThatIsNotThere) {
  char path[kPathCapacity];
  makeLaunchPropertiesFile(path, (dir_ / "none").c_str());
  EXPECT_EQ(path, (dir_ / "none") + "/QYLaunchProperties-1700000000123-0");
}

TEST_F(MakeLaunchPropertiesFile, IsNewWhenTheClockOrTheFolderHasChanged) {
  char first[kPathCapacity];
  char second[kPathCapacity];
  EXPECT_STREQ(makeLaunchPropertiesFile(first, dir_.str().c_str()),
               makeLaunchPropertiesFile(second, dir_.str().c_str()));
  now += 1;
  EXPECT_STRNE(makeLaunchPropertiesFile(second, dir_.str().c_str()), first);
  now -= 1;
  writeFile(dir_ / "one", "");
  EXPECT_STRNE(makeLaunchPropertiesFile(second, dir_.str().c_str()), first);
}

TEST_F(MakeLaunchPropertiesFile, GivesAnEmptyPathWhenItDoesNotFit) {
  char path[kPathCapacity];
  EXPECT_STREQ(makeLaunchPropertiesFile(path, std::string(kPathCapacity, 'x').c_str()), "");
}

TEST_F(WriteLaunchProperties, WritesTheBlockWithoutItsEnd) {
  PropertyBlock block;
  addStaticProperty(block, "app_name", "Demo");
  const CapturedLog log;
  const std::string path = writeLaunchProperties(block, dir_.str()).value_or("none");
  EXPECT_EQ(path, dir_ / "QYLaunchProperties-1700000000123-2");
  EXPECT_EQ(readFile(path), "qystat_app_name\0Demo"s);
  EXPECT_THAT(log.messages(), ElementsAre("[Extractor] Writing launch properties file\n",
                                          "[Extractor] Writing launch properties to " + path + "\n",
                                          "[Extractor] Launch properties length is 20\n",
                                          "[Extractor] Writing to file\n",
                                          "[Extractor] Finished writing launch properties file\n"));
}

TEST_F(WriteLaunchProperties, WritesAnEmptyBlockAsAnEmptyFile) {
  EXPECT_EQ(readFile(writeLaunchProperties(PropertyBlock(), dir_.str()).value_or("none")), "");
}

TEST_F(WriteLaunchProperties, NeverCutsALargeBlock) {
  PropertyBlock block;
  const std::string large(3'000'000, 'x');
  addStaticProperty(block, "large", large);
  EXPECT_EQ(readFile(writeLaunchProperties(block, dir_.str()).value_or("none")),
            "qystat_large\0"s + large);
}

TEST_F(WriteLaunchProperties, ReplacesTheFileOfTheSameMillisecondAndFolder) {
  const std::string path = dir_ / "QYLaunchProperties-1700000000123-3";
  writeFile(path, "of the start before, and longer");
  PropertyBlock block;
  appendProp(block, "new");
  EXPECT_EQ(writeLaunchProperties(block, dir_.str()), path);
  EXPECT_EQ(readFile(path), "new");
}

TEST_F(WriteLaunchProperties, TriesAgainUnderAFreshNameAfter500Seconds) {
  fileToReplace = dir_ / "folder";  // Not there at first.
  const ScopedReplace comesTrue(
      timeCalls.sleepMicros, +[](std::uint64_t micros) {
        waits.push_back(micros);
        now += micros / 1000;
        mkdir(fileToReplace.c_str(), 0777);
      });
  PropertyBlock block;
  appendProp(block, "x");
  const CapturedLog log;
  const std::string path = writeLaunchProperties(block, fileToReplace).value_or("none");
  EXPECT_EQ(path, fileToReplace + "/QYLaunchProperties-1700000500123-2");
  EXPECT_EQ(readFile(path), "x");
  EXPECT_THAT(waits, ElementsAre(kFiveHundredSeconds));
  EXPECT_THAT(log.messages(), Contains("[Retry] Writing launch properties to " + fileToReplace +
                                       "/QYLaunchProperties-1700000000123-0\n"));
  EXPECT_THAT(log.messages(), Contains("[Retry] Writing launch properties to " + path + "\n"));
}

TEST_F(WriteLaunchProperties, GivesUpAfterFiveRetries) {
  const CapturedLog log;
  EXPECT_EQ(writeLaunchProperties(PropertyBlock(), dir_ / "none"), std::nullopt);
  EXPECT_THAT(waits, ElementsAreArray(std::vector<std::uint64_t>(5, 500'000'000)));
  const std::string retry = "[Retry] Writing launch properties to " + (dir_ / "none") +
                            "/QYLaunchProperties-1700000000123-0\n";
  EXPECT_THAT(log.text(), HasSubstr(retry + retry + retry + retry + retry + std::string(43, '*') +
                                    "\nUnable to write Launch Properties file! Cannot run!\n"));
}

std::vector<std::string> notices;

class RecordedNotices {
 public:
  RecordedNotices()
      : calls_(platformCalls.notice,
               NoticeCalls{.show = [](const char* text) { notices.emplace_back(text); },
                           .takeDown = [] { notices.emplace_back("down"); }}) {
    notices.clear();
  }

 private:
  ScopedReplace<NoticeCalls> calls_;
};

TEST_F(WriteLaunchProperties, ShowsOneNoticeForAllItsWaitsOnRequest) {
  const RecordedNotices recorded;
  writeLaunchProperties(PropertyBlock(), dir_ / "none");
  EXPECT_THAT(notices, IsEmpty());
  writeLaunchProperties(PropertyBlock(), dir_ / "none", true);
  EXPECT_THAT(notices,
              ElementsAre("The application cannot be started yet: no file can be made in this "
                          "folder.\n" +
                              (dir_ / "none") + "\nIt is tried again every few minutes.",
                          "down"));
  writeLaunchProperties(PropertyBlock(), dir_.str(), true);
  EXPECT_THAT(notices, SizeIs(2)) << "there was nothing to wait for";
}

TEST_F(ReadRememberedOptions, ShowsANoticeForItsWaitsOnRequest) {
  makeUnopenable(dir_ / "lso");
  const RecordedNotices recorded;
  PropertyBlock block;
  readRememberedOptions(dir_ / "lso", block);
  EXPECT_THAT(notices, IsEmpty());
  readRememberedOptions(dir_ / "lso", block, true);
  EXPECT_THAT(notices, ElementsAre("The application cannot be started yet: this file cannot be "
                                   "opened.\n" +
                                       (dir_ / "lso") + "\nIt is tried again every few minutes.",
                                   "down"));
}

TEST_F(WriteLaunchProperties, GivesUpWhenTheContentCannotBeWritten) {
  const std::string path = dir_ / "QYLaunchProperties-1700000000123-2";
  PropertyBlock block;
  addStaticProperty(block, "large", std::string(300'000, 'x'));
  const CapturedLog log;
  {
    const FileSizeLimit diskIsFull(200'000);
    EXPECT_EQ(writeLaunchProperties(block, dir_.str()), std::nullopt);
  }
  EXPECT_TRUE(log.contains("Unable to write Launch Properties file! Cannot run!\n"));
  EXPECT_EQ(access(path.c_str(), F_OK), -1);
}

// The folder may be open to everybody.
TEST_F(WriteLaunchProperties, ReplacesAPlantedLinkAndLeavesItsTargetAlone) {
  const std::string path = dir_ / "QYLaunchProperties-1700000000123-4";
  writeFile(dir_ / "victim", "precious");
  ASSERT_EQ(symlink((dir_ / "victim").c_str(), path.c_str()), 0);
  PropertyBlock block;
  appendProp(block, "new");
  EXPECT_EQ(writeLaunchProperties(block, dir_.str()), path);
  EXPECT_EQ(readFile(path), "new");
  EXPECT_EQ(readFile(dir_ / "victim"), "precious");
}

TEST_F(WriteLaunchProperties, LeavesAFileAloneThatHasASecondNameThere) {
  const std::string path = dir_ / "QYLaunchProperties-1700000000123-4";
  writeFile(dir_ / "victim", "precious");
  ASSERT_EQ(link((dir_ / "victim").c_str(), path.c_str()), 0);
  PropertyBlock block;
  appendProp(block, "new");
  EXPECT_EQ(writeLaunchProperties(block, dir_.str()), path);
  EXPECT_EQ(readFile(path), "new");
  EXPECT_EQ(readFile(dir_ / "victim"), "precious");
}

TEST(LaunchPropertiesPage, ShowsTheFileOfTheBlockThatItDescribes) {
  PropertyBlock block;
  addStaticProperty(block, "app_name", "Demo");
  addStaticProperty(block, "silent_parameter", "");
  addDynamicProperty(block, "url_req", "demo://x");
  EXPECT_EQ(pageExample("formats/launch-properties.md"), contentOf(block));
}

TEST(RememberedOptionsPage, ShowsAFileThatIsReadAsItSays) {
  const TempDir dir;
  writeFile(dir / "lso", pageExample("formats/remembered-options.md"));
  PropertyBlock block;
  EXPECT_THAT(readRememberedOptions(dir / "lso", block),
              ElementsAre("-Xss4m", "-Dsun.java2d.opengl=false"));
}

}  // namespace
}  // namespace quillory
