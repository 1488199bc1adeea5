// The splash on a platform that only writes down what it is asked for.
#pragma once
#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "support/platform.h"
#include "tests/harness/captured_log.h"
#include "tests/harness/scoped_replace.h"

namespace quillory::splash {

/// What was asked of the platform, in words.
extern std::vector<std::string> asked;
extern Frame windowNow;
extern PictureSize pictureNow;
extern int threadsMade;

/// Every test is a process of its own under CTest, but not under a plain run of the program: the
/// splash is one a process, so each test leaves it without a bar, a thread and a margin.
class Splash : public ::testing::Test {
 protected:
  Splash();
  ~Splash() override;

  testing::ScopedReplace<WindowCalls> calls_;
  std::optional<testing::CapturedLog> log_;
};

}  // namespace quillory::splash
