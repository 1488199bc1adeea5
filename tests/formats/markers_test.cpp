#include "formats/markers.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <string>

#include "support/owned.h"
#include "tests/harness/captured_log.h"
#include "tests/harness/page_example.h"
#include "tests/harness/stream_of.h"
#include "tests/harness/temp_dir.h"

namespace quillory {
namespace {

using testing::CapturedLog;
using testing::pageExample;
using testing::readFile;
using testing::StreamOf;

std::string markerOfTails() {
  const OwnedText marker(allocAndInitMarker());
  return {marker.get(), kTailMarkerLength};
}

std::string markerOfParams() {
  const OwnedText marker(allocAndInitParamsMarker());
  return {marker.get(), kParamsMarkerLength};
}

std::uint32_t scan(std::FILE* stream, const std::string& marker) {
  return scanToMarker(stream, marker.data(), static_cast<int>(marker.size()), "Test");
}

TEST(AllocAndInitMarker, GivesTheBytesOfThePage) {
  EXPECT_EQ(markerOfTails(), pageExample("formats/record-stream.md", 1));
  for (const char byte : markerOfTails()) EXPECT_LT(static_cast<unsigned char>(byte), 0x80);
}

TEST(AllocAndInitParamsMarker, GivesTheBytesOfThePage) {
  EXPECT_EQ(markerOfParams(), pageExample("formats/record-stream.md", 2));
}

// The launcher searches itself, so that no eight bytes of a marker may stand in a program that can
// make one. This program can, and was built as the launcher is.
TEST(AllocAndInitMarker, LeavesNoMarkerInTheExecutable) {
  const std::string program = readFile(QUILLORY_THIS_PROGRAM);
  ASSERT_NE(program.find("1d432a505b7a1f64"), std::string::npos) << "the digits are there";
  for (const std::string& marker : {markerOfTails(), markerOfParams()}) {
    for (std::size_t at = 0; at < marker.size(); at += 8)
      EXPECT_EQ(program.find(marker.substr(at, 8)), std::string::npos) << "bytes from " << at;
  }
}

TEST(ScanToMarker, LeavesAPipeBehindTheMarkerToo) {
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  const OwnedFile reader(fdopen(ends[0], "rb"));
  const std::string bytes = std::string(1000, '.') + markerOfTails() + "next";
  ASSERT_EQ(write(ends[1], bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
  close(ends[1]);
  EXPECT_EQ(scan(reader.get(), markerOfTails()), 1128U);
  char next[5] = "";
  EXPECT_EQ(std::fread(next, 1, 4, reader.get()), 4U);
  EXPECT_STREQ(next, "next");
}

TEST(ScanToMarker, CountsToTheByteBehindTheMarker) {
  StreamOf stream(std::string(1000, '.') + markerOfTails() + "next");
  EXPECT_EQ(scan(stream.get(), markerOfTails()), 1128U);
  EXPECT_EQ(std::ftell(stream.get()), 1128);
}

TEST(ScanToMarker, CountsFromWhereItBegins) {
  StreamOf stream("....abc");
  std::fseek(stream.get(), 2, SEEK_SET);
  EXPECT_EQ(scan(stream.get(), "abc"), 5U);
}

TEST(ScanToMarker, FindsBytesAbove7F) {
  StreamOf stream("..." + markerOfParams() + "...");
  EXPECT_EQ(scan(stream.get(), markerOfParams()), 67U);
}

TEST(ScanToMarker, FindsOneMarkerAfterTheOther) {
  StreamOf stream("abc.abc");
  EXPECT_EQ(scan(stream.get(), "abc"), 3U);
  EXPECT_EQ(scan(stream.get(), "abc"), 4U);
}

// Long files are read in blocks, between which a marker may lie.
TEST(ScanToMarker, FindsAMarkerWhereverItLies) {
  const std::string marker = markerOfTails();
  for (const std::size_t block : {1U << 12, 1U << 16, 1U << 17}) {
    for (std::size_t before = block - marker.size() - 1; before <= block + 1; ++before) {
      StreamOf stream(std::string(before, '.') + marker + "next");
      EXPECT_EQ(scan(stream.get(), marker), before + marker.size());
      EXPECT_EQ(std::ftell(stream.get()), static_cast<long>(before + marker.size()));
    }
  }
}

// No back-tracking, by intent: the mismatching byte is not tried as a first byte.
TEST(ScanToMarker, MissesAMarkerBehindItsOwnFirstByte) {
  CapturedLog log;
  const std::string marker = markerOfTails();
  StreamOf stream(marker.substr(0, 1) + marker);
  EXPECT_EQ(scan(stream.get(), marker), kMarkerNotFound);
}

TEST(ScanToMarker, MissesAMarkerInsideAPartialMatch) {
  CapturedLog log;
  StreamOf stream("aabaabaac");
  EXPECT_EQ(scan(stream.get(), "aabaac"), kMarkerNotFound);
}

TEST(ScanToMarker, FindsAMarkerBehindABrokenOffPair) {
  StreamOf stream("aaab");  // The pair "aa" is given up at its second byte; "ab" is whole.
  EXPECT_EQ(scan(stream.get(), "ab"), 4U);
}

TEST(ScanToMarker, ReadsNothingForAnEmptyMarker) {
  StreamOf stream("abc");
  EXPECT_EQ(scanToMarker(stream.get(), "", 0, "Test"), 0U);
  EXPECT_EQ(std::ftell(stream.get()), 0);
}

TEST(ScanToMarker, LogsThatThereIsNone) {
  CapturedLog log;
  StreamOf stream("abc");
  EXPECT_EQ(scan(stream.get(), "abd"), kMarkerNotFound);
  EXPECT_EQ(log.text(), "Could not find marker: Test\n");
}

TEST(ScanToMarker, MissesAMarkerCutAnywhereOrChangedAnywhere) {
  CapturedLog log;
  const std::string marker = markerOfTails();
  for (std::size_t at = 0; at < marker.size(); ++at) {
    SCOPED_TRACE(at);
    StreamOf cut(marker.substr(0, at));
    EXPECT_EQ(scan(cut.get(), marker), kMarkerNotFound);
    std::string changed = marker;
    changed[at] = static_cast<char>(changed[at] ^ 0x80);
    StreamOf other(changed);
    EXPECT_EQ(scan(other.get(), marker), kMarkerNotFound);
  }
}

}  // namespace
}  // namespace quillory
