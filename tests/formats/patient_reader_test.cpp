#include "formats/patient_reader.h"

#include <gtest/gtest.h>

#include <string>

#include "support/clock.h"
#include "support/owned.h"
#include "tests/harness/captured_log.h"
#include "tests/harness/scoped_replace.h"
#include "tests/harness/stream_of.h"
#include "tests/harness/temp_dir.h"

namespace quillory {
namespace {

using testing::CapturedLog;
using testing::ScopedReplace;
using testing::StreamOf;
using testing::TempDir;

int waits;
std::string growing;

// The third try finds two more bytes.
void appendAtThirdWait(std::uint64_t) {
  if (++waits % 3 == 0) testing::writeFile(growing, testing::readFile(growing) + "++");
}

TEST(PatientReader, ReadsWhatIsThereWithoutWaiting) {
  CapturedLog log;
  StreamOf stream("abcde");
  PatientReader reader(stream.get(), "a test");
  char buffer[4] = {};
  EXPECT_EQ(reader.read(buffer, 4), 4U);
  EXPECT_EQ(std::string(buffer, 4), "abcd");
  EXPECT_EQ(reader.read(buffer, 4), 1U) << "a short read is not an error";
  EXPECT_EQ(log.text(), "");
}

TEST(PatientReader, ReturnsAtOnceWhenNothingIsAskedFor) {
  StreamOf stream("");
  PatientReader reader(stream.get(), "a test");
  char buffer;
  EXPECT_EQ(reader.read(&buffer, 0), 0U);
}

TEST(PatientReader, SleepsBetweenItsTriesAndSaysSoOnce) {
  const TempDir dir;
  growing = dir / "growing";
  waits = 0;
  testing::writeFile(growing, "");
  const ScopedReplace bytesArrive(timeCalls.sleepMicros, &appendAtThirdWait);
  CapturedLog log;
  const OwnedFile stream(std::fopen(growing.c_str(), "rb"));
  PatientReader reader(stream.get(), "a test");
  char buffer[10] = {};
  EXPECT_EQ(reader.read(buffer, 10), 2U);
  EXPECT_EQ(waits, 3);
  EXPECT_EQ(reader.read(buffer, 10), 2U);
  EXPECT_EQ(waits, 6);
  EXPECT_EQ(log.text(), "[ExtractArchive] Waiting for the rest of a test\n");
}

}  // namespace
}  // namespace quillory
