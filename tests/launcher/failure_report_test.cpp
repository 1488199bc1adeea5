#include "launcher/failure_report.h"

#include <gtest/gtest.h>

#include "support/start_end.h"
#include "tests/harness/temp_dir.h"

namespace quillory::testing {
namespace {

// What is noted is the process's: each test begins where a start does.
class ReportNow : public ::testing::Test {
 protected:
  ReportNow() {
    tellOfFailures();
    noteFailureFile("");
    noteStage(StartStage::kPreparing);
  }
  ~ReportNow() override {
    noteFailureFile("");
    noteStage(StartStage::kPreparing);
  }
};

TEST_F(ReportNow, OfAStartThatHasNotComeToJavaIsTheLogs) {
  const FailureReport report = reportNow("Demo", "[Extractor] why\n");
  EXPECT_EQ(report.sentence, "Demo could not be started.");
  EXPECT_EQ(report.cause, "[Extractor] why\n");
}

TEST_F(ReportNow, OfAJvmIsTheJvms) {
  noteStage(StartStage::kCreatingJvm);
  noteCause("Invalid maximum heap size\n");
  const FailureReport report = reportNow("Demo", "log\n");
  EXPECT_EQ(report.sentence, "Demo could not be started, because its Java runtime does not work.");
  EXPECT_EQ(report.cause, "Invalid maximum heap size\n");
  noteStage(StartStage::kFailed);
  EXPECT_EQ(reportNow("Demo", "log\n").sentence, "Demo ended with an error while it started.");
}

TEST_F(ReportNow, OfWhatEndsInOrderIsNothing) {
  noteStage(StartStage::kOver);
  EXPECT_EQ(reportNow("Demo", "log\n").sentence, "");
  noteStage(StartStage::kRunning);
  EXPECT_EQ(reportNow("Demo", "log\n").sentence, "");
}

TEST_F(ReportNow, OfTheUpdaterIsWhatItHasLeftOnce) {
  const TempDir dir;
  const std::string file = dir / "QYStartFailure-1-2";
  noteFailureFile(file);
  noteStage(StartStage::kRunning);
  EXPECT_EQ(reportNow("Demo", "log\n").sentence, "");
  writeFile(file, "No version of \"Demo\" is installed.\n");
  const FailureReport report = reportNow("Demo", "log\n");
  EXPECT_EQ(report.sentence, "Demo could not be started.");
  EXPECT_EQ(report.cause, "No version of \"Demo\" is installed.\n");
  EXPECT_EQ(reportNow("Demo", "log\n").sentence, "");
}

TEST(NotedCause, HasItsLimit) {
  tellOfFailures();
  for (int i = 0; i < 20; ++i) noteCause(std::string(1000, 'x'));
  EXPECT_EQ(causeOfFailure().size(), std::size_t{16 * 1024});
}

}  // namespace
}  // namespace quillory::testing
