// What a test's own process prints.
#pragma once
#include <gtest/gtest.h>

#include <string>

namespace quillory::testing {

/// What is written to standard output while it lives.
class CapturedOutput {
 public:
  CapturedOutput() { ::testing::internal::CaptureStdout(); }
  ~CapturedOutput() {
    if (!taken_) take();
  }
  std::string take() {
    taken_ = true;
    return ::testing::internal::GetCapturedStdout();
  }

 private:
  bool taken_ = false;
};

}  // namespace quillory::testing
