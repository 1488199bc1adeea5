#include "formats/patient_reader.h"

#include <cstdint>
#include <utility>

#include "support/clock.h"
#include "support/log.h"

namespace quillory {
namespace {

constexpr std::uint64_t kMicrosBetweenTries = 200'000;

}  // namespace

PatientReader::PatientReader(std::FILE* stream, std::string what)
    : stream_(stream), what_(std::move(what)) {}

std::size_t PatientReader::read(char* buffer, std::size_t size) {
  std::size_t count = std::fread(buffer, 1, size, stream_);
  while (count == 0 && size > 0) {
    waitForMore();
    count = std::fread(buffer, 1, size, stream_);
  }
  return count;
}

void PatientReader::waitForMore() {
  if (!told_) logMessage("[ExtractArchive] Waiting for the rest of %s\n", what_.c_str());
  told_ = true;
  timeCalls.sleepMicros(kMicrosBetweenTries);
  std::clearerr(stream_);  // A stream that has seen its end does not look again by itself.
}

}  // namespace quillory
