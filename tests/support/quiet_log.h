// The log of a test: kept for it, and away from standard output.
#pragma once
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/harness/captured_log.h"

namespace quillory::testing {

class QuietLog {
 public:
  QuietLog() { ::testing::internal::CaptureStdout(); }
  ~QuietLog() { ::testing::internal::GetCapturedStdout(); }
  QuietLog(const QuietLog&) = delete;
  QuietLog& operator=(const QuietLog&) = delete;

  const std::vector<std::string>& messages() const { return log_.messages(); }
  std::string text() const { return log_.text(); }
  bool contains(const std::string& part) const { return log_.contains(part); }

 private:
  const CapturedLog log_;
};

}  // namespace quillory::testing
