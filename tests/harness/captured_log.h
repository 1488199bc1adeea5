// Everything that is logged while it lives, as the system log gets it: without time prefixes.
#pragma once
#include <string>
#include <vector>

#include "support/log.h"
#include "support/platform.h"
#include "tests/harness/scoped_replace.h"

namespace quillory::testing {

class CapturedLog {
 public:
  CapturedLog();
  ~CapturedLog();

  /// One entry a log call, line end included.
  const std::vector<std::string>& messages() const;
  /// All of them, one after another.
  std::string text() const;
  bool contains(const std::string& part) const;

 private:
  ScopedReplace<decltype(platformCalls.systemLog)> sink_;
};

}  // namespace quillory::testing
