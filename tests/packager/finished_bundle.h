// A bundle that the program has made, for what commands do with it.
#pragma once
#include <gtest/gtest.h>

#include <string>

#include "tests/packager/project_fixture.h"

namespace quillory::testing {

class FinishedBundle : public ::testing::Test {
 protected:
  FinishedBundle() : bundle_(bundleOf(project_, project_.config(kRuntime))) {}

  std::string params() const {
    return bundle_ + "/Contents/Resources/AppParams.excludefromsigning";
  }
  std::string tail() const { return bundle_ + "/Contents/Resources/Tail"; }
  std::string release(const std::string& name) const {
    return project_ / ("dist/release/Quillory-" + name + "-archive.p2.l2");
  }
  // Changes the first place where `from` stands in a file; both have the same length.
  static void patch(const std::string& file, const std::string& from, const std::string& to) {
    ASSERT_EQ(from.size(), to.size());
    std::string bytes = readFile(file);
    const std::size_t at = bytes.find(from);
    ASSERT_NE(at, std::string::npos);
    bytes.replace(at, from.size(), to);
    writeFile(file, bytes);
  }

  Project project_;
  std::string bundle_;
};

}  // namespace quillory::testing
