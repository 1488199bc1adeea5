// A real web server on the loopback, with a folder of the test's.
#pragma once
#include <memory>
#include <string>
#include <vector>

#include "tests/harness/child_process.h"
#include "tests/harness/temp_dir.h"

namespace quillory::testing {

class Nginx {
 public:
  /// Whether this machine has one.
  static bool isThere();

  /// Serves `folder` until the end of the scope, with `settings` in the block of its server. Throws
  /// where it does not start.
  explicit Nginx(const std::string& folder, const std::string& settings = "");

  /// "http://127.0.0.1:<port>/"
  std::string url() const;
  /// What was asked for: "<status> <address> <bytes of the answer, head included>".
  std::vector<std::string> log() const;

 private:
  TempDir folder_;
  int port_;
  std::unique_ptr<BackgroundChild> server_;
};

}  // namespace quillory::testing
