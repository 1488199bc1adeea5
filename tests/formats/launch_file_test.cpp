#include "formats/launch_file.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>

#include "formats/record_stream.h"
#include "tests/harness/captured_log.h"
#include "tests/harness/page_example.h"
#include "tests/harness/records.h"
#include "tests/harness/stream_of.h"

namespace quillory {
namespace {

using ::quillory::testing::CapturedLog;
using ::quillory::testing::pageExample;
using ::quillory::testing::records;
using ::quillory::testing::StreamOf;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

std::string headerBytes() {
  return records(
      {"6", "com.example.Main", "com.example.Update", "demo", "demo.icns", "1", "256", "64"});
}

/// Records 13 to 18.
std::string trailerBytes() {
  return records({"Compatible", "PostInstall", "PreUninstall", "2", "-Da=1", "-Db=2", "1"});
}

TEST(ReadLaunchHeader, ReadsTheFirstEightRecordsInOrder) {
  const StreamOf stream(headerBytes() + records({"next"}));
  const LaunchHeader header = readLaunchHeader(stream.get());
  EXPECT_EQ(header.version, 6);
  EXPECT_EQ(header.mainClass, "com.example.Main");
  EXPECT_EQ(header.mainClassOnUpdate, "com.example.Update");
  EXPECT_EQ(header.appName, "demo");
  EXPECT_EQ(header.icns, "demo.icns");
  EXPECT_TRUE(header.urlRequired);
  EXPECT_EQ(header.jvmMemory, 256);
  EXPECT_EQ(header.jvmStack, 64);
  EXPECT_EQ(readText(stream.get(), "what follows"), "next");
}

TEST(ReadLaunchHeader, TakesAnyBytesButZeroInTexts) {
  const StreamOf stream(records({"6", "a\nb\tc", "\xff\xfe", "d e", "", "true", "-1", "x"}));
  const LaunchHeader header = readLaunchHeader(stream.get());
  EXPECT_EQ(header.mainClass, "a\nb\tc");
  EXPECT_EQ(header.mainClassOnUpdate, "\xff\xfe");
  EXPECT_EQ(header.appName, "d e");
  EXPECT_EQ(header.icns, "");
  EXPECT_FALSE(header.urlRequired);
  EXPECT_EQ(header.jvmMemory, -1);
  EXPECT_EQ(header.jvmStack, 0);
}

TEST(ReadLaunchHeader, ReadsWhatIsThereOfAFileCutAnywhere) {
  const std::string whole = headerBytes();
  for (std::size_t length = 0; length < whole.size(); ++length) {
    SCOPED_TRACE(length);
    const StreamOf stream(whole.substr(0, length));
    const LaunchHeader header = readLaunchHeader(stream.get());
    EXPECT_TRUE(std::string("com.example.Main").starts_with(header.mainClass));
    EXPECT_TRUE(std::string("demo").starts_with(header.appName));
    EXPECT_TRUE(isAtEnd(stream.get()));
  }
}

TEST(ReadLaunchEntries, ReadsAsManyAsTheCountSays) {
  const StreamOf stream(records({"a", "", "c", "d"}));
  EXPECT_THAT(readLaunchEntries(stream.get(), 3, "entry"), ElementsAre("a", "", "c"));
  EXPECT_EQ(readText(stream.get(), "what follows"), "d");
}

TEST(ReadLaunchEntries, ReadsNothingForACountOfZeroOrLess) {
  const StreamOf stream(records({"a"}));
  EXPECT_THAT(readLaunchEntries(stream.get(), 0, "entry"), IsEmpty());
  EXPECT_THAT(readLaunchEntries(stream.get(), -5, "entry"), IsEmpty());
  EXPECT_EQ(readText(stream.get(), "what follows"), "a");
}

TEST(ReadLaunchEntries, EndsWhereTheFileEndsWhateverTheCountClaims) {
  const StreamOf stream(records({"a", "b"}));
  EXPECT_THAT(readLaunchEntries(stream.get(), 2'000'000'000'000L, "entry"), ElementsAre("a", "b"));
}

TEST(ReadLaunchEntries, KeepsALastEntryWithoutItsTerminator) {
  const StreamOf stream(records({"a"}) + "tail");
  EXPECT_THAT(readLaunchEntries(stream.get(), 5, "entry"), ElementsAre("a", "tail"));
}

TEST(ReadLaunchTrailer, ReadsAsFarAsTheVersionHasRecords) {
  static constexpr struct {
    int version;
    bool hasClass;
    const char* next;  // the first value that is left unread
  } kCases[] = {{-1, false, "Compatible"},
                {2, false, "Compatible"},
                {3, true, "PostInstall"},
                {4, true, "2"},
                {5, true, "1"},
                {6, true, "end"},
                {7, true, "end"}};
  for (const auto& [version, hasClass, next] : kCases) {
    SCOPED_TRACE(version);
    const StreamOf stream(trailerBytes() + records({"end"}));
    const LaunchTrailer trailer = readLaunchTrailer(stream.get(), version);
    EXPECT_EQ(trailer.hasCompatibilityClass, hasClass);
    EXPECT_EQ(trailer.compatibilityClass, hasClass ? "Compatible" : "");
    EXPECT_EQ(readText(stream.get(), "what follows"), next);
  }
}

TEST(ReadLaunchTrailer, LogsTheCompatibilityClass) {
  const CapturedLog log;
  const StreamOf stream(trailerBytes());
  readLaunchTrailer(stream.get(), 6);
  EXPECT_THAT(log.messages(), ElementsAre("[Extractor] Read JRE compatibility class Compatible\n"));
}

TEST(ReadLaunchTrailer, HasAnEmptyCompatibilityClassWhereTheRecordIsEmpty) {
  const StreamOf stream(records({""}));
  const LaunchTrailer trailer = readLaunchTrailer(stream.get(), 3);
  EXPECT_TRUE(trailer.hasCompatibilityClass);
  EXPECT_EQ(trailer.compatibilityClass, "");
}

TEST(ReadLaunchTrailer, DoesNotLoopOverOptionsThatAreNotThere) {
  const StreamOf stream(records({"Compatible", "", "", "9000000000000000000", "-Da=1"}));
  EXPECT_EQ(readLaunchTrailer(stream.get(), 6).compatibilityClass, "Compatible");
  EXPECT_TRUE(isAtEnd(stream.get()));
}

TEST(LaunchFilePage, ShowsAFileThatIsReadAsItSays) {
  const StreamOf stream(pageExample("formats/launch-file.md"));
  const LaunchHeader header = readLaunchHeader(stream.get());
  EXPECT_EQ(header.version, 6);
  EXPECT_EQ(header.mainClass, "com.example.hello.Hello");
  EXPECT_EQ(header.appName, "hello");
  EXPECT_EQ(header.jvmMemory, 256);
  EXPECT_EQ(header.jvmStack, 0);
  const long pathCount = readLong(stream.get(), "Classpath Count");
  EXPECT_THAT(readLaunchEntries(stream.get(), pathCount, ""),
              ElementsAre("hello.jar", "lib/a.jar"));
  const long extraCount = readLong(stream.get(), "Extra Args Count");
  EXPECT_THAT(readLaunchEntries(stream.get(), extraCount, ""), ElementsAre("--console"));
  EXPECT_EQ(readLaunchTrailer(stream.get(), header.version).compatibilityClass, "");
  EXPECT_TRUE(isAtEnd(stream.get()));
}

}  // namespace
}  // namespace quillory
