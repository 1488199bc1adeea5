// URLs that a desktop sends while the launcher installs, over a session bus of each test's own.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/e2e/halted_start.h"
#include "tests/e2e/session_bus.h"

namespace quillory::testing {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

class DesktopUrl : public HaltedStart {
 protected:
  DesktopUrl() { busAddress_ = bus_.address(); }

  void open(const std::string& url) const {
    const ChildResult result = bus_.open(url, kHaltedIdentifier, "/io/quillory/tests/Halted");
    EXPECT_EQ(result.out, "()\n") << result.err;
  }

 private:
  SessionBus bus_;
};

TEST_F(DesktopUrl, TheSecondOfTwoArrivesInJava) {
  startAndHalt();
  open("demo://first?a=1");
  open("demo://second?b=%20c&d=\xc3\xa4");
  const ChildResult result = finish();
  EXPECT_EQ(result.exitStatus, 0);
  EXPECT_THAT(report(), HasSubstr("\nproperty qydyna_url_req=demo://second?b=%20c&d=\xc3\xa4\n"));
  EXPECT_THAT(report(), Not(HasSubstr("demo://first")));
  EXPECT_THAT(result.err, HasSubstr("[Quillory] [URL] Latest request is "
                                    "'demo://second?b=%20c&d=\xc3\xa4'"));
}

TEST_F(DesktopUrl, AFileIsAnArgument) {
  startAndHalt({}, {"own"});
  open("file:///tmp/a%20document");
  open("demo://x");
  const ChildResult result = finish();
  EXPECT_EQ(result.exitStatus, 0);
  EXPECT_THAT(report(), HasSubstr("=own\n"));
  EXPECT_THAT(report(), HasSubstr("=/tmp/a document\n"));
  EXPECT_THAT(report(), HasSubstr("\nproperty qydyna_url_req=demo://x\n"));
}

TEST_F(DesktopUrl, NoneIsNoProperty) {
  startAndHalt();
  const ChildResult result = finish();
  EXPECT_EQ(result.exitStatus, 0);
  EXPECT_THAT(report(), HasSubstr("\nproperty qystat_app_dir="));
  EXPECT_THAT(report(), Not(HasSubstr("url_req")));
  EXPECT_THAT(result.err, HasSubstr("[Quillory] [URL] Latest request is NULL"));
}

}  // namespace
}  // namespace quillory::testing
