// An online installer whose update URL does not serve what it should: status 1, a line that says
// why, nothing half-done under a final name, and a later start with a good server succeeds.
#pragma once
#include <gtest/gtest.h>

#include <memory>
#include <ostream>
#include <string>

#include "tests/e2e/online_machine.h"

namespace quillory::testing {

inline const std::string kVersionFailed = "[JREDownload] Failed to download JRE version file";
inline const std::string kArchiveFailed = "[JREDownload] Failed to download JRE";
inline const std::string kLzmaFailed = "[JREDownload] Failed to decompress JRE archive";
inline const std::string kNoVersion =
    "[JREDownload] Failed to detect or download a JRE (no jre version)";
inline const std::string kNoRuntime = "[JREDownload] The downloaded archive holds no usable JRE";

class OnlineFailure : public ::testing::Test {
 protected:
  OnlineFailure() { publishRuntime(server_, "17", packedScriptRuntime()); }

  ChildResult start() { return machine_.start(onlineTail(server_.url())); }

  std::unique_ptr<BackgroundChild> startInBackground() {
    return machine_.startInBackground(onlineTail(server_.url()), machine_.options());
  }

  void expectFailure(const ChildResult& result, const std::string& error) {
    EXPECT_EQ(result.exitStatus, 1) << result.out << result.err;
    const std::string stars(43, '*');
    linesInOrder(result, {stars, error, stars});
    machine_.expectNoRuntime();
  }

  void expectRecovery() {
    publishRuntime(server_, "17", packedScriptRuntime());
    machine_.expectGoodStart(onlineTail(server_.url()));
  }

  std::string versionFile() const {
    return machine_.master() + "/Quillory-Quillory-1-complete/Quillory-JRE-version.txt";
  }

  HttpServer server_;
  OnlineMachine machine_;
};

/// Cases are called by their names, in the names of the tests; each has a PrintTo() for reports.
struct NameOfCase {
  template <typename Case>
  std::string operator()(const ::testing::TestParamInfo<Case>& test) const {
    return test.param.name;
  }
};

}  // namespace quillory::testing
