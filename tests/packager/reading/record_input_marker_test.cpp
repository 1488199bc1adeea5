// The marker as the launcher's search finds it, for who reads finished files.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "formats/markers.h"
#include "packager/reading/file_kind.h"
#include "packager/reading/params_view.h"
#include "packager/reading/record_input.h"
#include "packager/reading/tail_view.h"
#include "tests/harness/captured_log.h"
#include "tests/harness/page_example.h"
#include "tests/harness/records.h"
#include "tests/harness/stream_of.h"
#include "tests/harness/temp_dir.h"
#include "tests/packager/rules_of.h"

namespace quillory::pack {
namespace {

using testing::CapturedLog;
using testing::hasRule;
using ::testing::HasSubstr;
using testing::pageExample;
using testing::records;
using testing::rulesOf;
using testing::StreamOf;
using testing::TempDir;
using testing::writeFile;

constexpr std::size_t kBlock = 64 * 1024;

class FindMarker : public ::testing::Test {
 protected:
  // Where the reader stands behind the marker; -1 when it finds none.
  std::int64_t find(const std::string& bytes, const std::string& marker) {
    findings_.clear();
    writeFile(file_, bytes);
    RecordInput input(file_, findings_);
    return input.findMarker(marker) ? input.position() : -1;
  }

  TempDir dir_;
  std::string file_ = dir_ / "file";
  Findings findings_;
};

// What the launcher's own function says about the same bytes.
std::int64_t launcherFinds(const std::string& bytes, const std::string& marker) {
  CapturedLog log;
  StreamOf stream(bytes);
  const std::uint32_t end =
      scanToMarker(stream.get(), marker.data(), static_cast<int>(marker.size()), "Test");
  return end == kMarkerNotFound ? -1 : static_cast<std::int64_t>(end);
}

TEST_F(FindMarker, FindsAMarkerCutByTheBlockAtEveryPlace) {
  const std::string marker = paramsMarker();
  for (std::size_t before = kBlock - marker.size() - 1; before <= kBlock + 1; ++before) {
    const std::string bytes = std::string(before, '.') + marker + "next";
    ASSERT_EQ(find(bytes, marker), static_cast<std::int64_t>(before + marker.size()));
    ASSERT_TRUE(findings_.empty());
  }
}

TEST_F(FindMarker, MissesAMarkerBehindItsFirstByteAtEveryPlaceAndSaysSo) {
  const std::string marker = paramsMarker();
  for (std::size_t before = kBlock - marker.size() - 2; before <= kBlock + 1; ++before) {
    const std::string bytes = std::string(before, '.') + marker.substr(0, 1) + marker + "next";
    ASSERT_EQ(find(bytes, marker), -1) << before;
    ASSERT_EQ(launcherFinds(bytes, marker), -1);
    ASSERT_EQ(rulesOf(findings_), std::vector<std::string>{"marker-unseen"});
    ASSERT_THAT(findings_[0].what, HasSubstr("at byte " + std::to_string(before + 1) + ' '));
  }
}

TEST_F(FindMarker, AgreesWithTheLauncherForEveryBeginningBeforeAMarker) {
  const std::string marker = tailMarker();
  for (std::size_t length = 0; length < marker.size(); ++length) {
    for (const char* between : {"", ".", "\x1d"}) {
      const std::string bytes = "code" + marker.substr(0, length) + between + marker + "next";
      ASSERT_EQ(find(bytes, marker), launcherFinds(bytes, marker)) << length << between;
    }
  }
}

TEST_F(FindMarker, FindsTheNextMarkerBehindOneThatIsNotSeen) {
  const std::string marker = paramsMarker();
  const std::string bytes = marker.substr(0, 1) + marker + "." + marker + "next";
  EXPECT_EQ(find(bytes, marker), launcherFinds(bytes, marker));
  EXPECT_EQ(find(bytes, marker), static_cast<std::int64_t>(bytes.size() - 4));
  EXPECT_TRUE(findings_.empty());
}

TEST_F(FindMarker, SaysNothingWhereThereIsNone) {
  EXPECT_EQ(find(std::string(kBlock + 1, '\x59'), paramsMarker()), -1);
  EXPECT_TRUE(findings_.empty());
}

TEST_F(FindMarker, LetsNeitherTailNorParametersBeReadThatTheLauncherDoesNotRead) {
  writeFile(file_, "\x59" + paramsMarker() + pageExample("formats/parameters-file.md", 1));
  EXPECT_FALSE(readParams(file_, findings_));
  EXPECT_TRUE(hasRule(findings_, "marker-unseen"));
  EXPECT_EQ(fileKindOf(file_), FileKind::kParameters);

  findings_.clear();
  writeFile(file_, "\x1d" + tailMarker() + pageExample("formats/wrapper-tail.md"));
  EXPECT_FALSE(readTail(file_, true, findings_));
  EXPECT_TRUE(hasRule(findings_, "marker-unseen"));
  EXPECT_EQ(fileKindOf(file_), FileKind::kExecutable);
}

}  // namespace
}  // namespace quillory::pack
