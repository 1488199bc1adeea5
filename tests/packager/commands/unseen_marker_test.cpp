// Bundles whose marker stands where the launcher does not see it: the commands say so, and say what
// the launcher does.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "formats/markers.h"
#include "tests/packager/project_fixture.h"

namespace quillory::testing {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::Not;

constexpr char kUnseen[] = "[marker-unseen]";

class UnseenMarker : public ::testing::Test {
 protected:
  void hideParams() { writeFile(params_, '\x59' + readFile(params_)); }

  Project project_;
  std::string bundle_ = bundleOf(project_, project_.config(kRuntime));
  std::string params_ = bundle_ + "/Contents/Resources/AppParams.excludefromsigning";
  std::string executable_ = bundle_ + "/Contents/MacOS/Hello";
};

TEST_F(UnseenMarker, OfTheParametersKeepsABundleFromStarting) {
  EXPECT_EQ(pack({"doctor", bundle_}).status, 0);
  hideParams();
  const CommandResult result = pack({"doctor", bundle_});
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.err,
              AllOf(HasSubstr(params_ + ": warning: the marker at byte 1 stands right behind"),
                    HasSubstr(kUnseen), HasSubstr("ends with status 1 [no-marker]")));
  EXPECT_THAT(result.out, HasSubstr("It would not work"));
}

TEST_F(UnseenMarker, OfTheParametersIsWhatTheCommandsTellOf) {
  hideParams();
  const std::string before = readFile(params_);
  const std::string why = params_ + ": error: the marker at byte 1 stands right behind";
  for (const std::vector<std::string>& command : {std::vector<std::string>{"inspect", params_},
                                                  {"set", params_, "a=b"},
                                                  {"set", bundle_, "a=b"}}) {
    const CommandResult result = pack(command);
    EXPECT_EQ(result.status, 1) << command[0];
    EXPECT_THAT(result.err, HasSubstr(why)) << command[0];
  }
  EXPECT_EQ(readFile(params_), before);
  EXPECT_EQ(pack({"inspect", bundle_}).status, 1);
  EXPECT_EQ(pack({"verify", bundle_}).status, 1);
}

TEST_F(UnseenMarker, OfATailInTheExecutableLeavesTheOneInResources) {
  writeFile(executable_, readFile(executable_) + '\x1d' + tailMarker() + "not a tail");
  const CommandResult result = pack({"doctor", bundle_});
  EXPECT_EQ(result.status, 0) << "the launcher starts with the tail in Resources";
  EXPECT_THAT(result.err,
              AllOf(HasSubstr(executable_ + ": warning: the marker at byte "), HasSubstr(kUnseen)));
  for (const char* command : {"inspect", "verify"}) {
    EXPECT_THAT(pack({command, executable_}).err,
                HasSubstr(executable_ + ": error: the marker at byte "));
    EXPECT_EQ(pack({command, executable_}).status, 1);
  }

  std::filesystem::remove(bundle_ + "/Contents/Resources/Tail");
  EXPECT_THAT(pack({"doctor", bundle_}).err, HasSubstr("there is no tail, neither in"));
  EXPECT_EQ(pack({"doctor", bundle_}).status, 1);
}

}  // namespace
}  // namespace quillory::testing
