#include "support/opened_files.h"

#include <gmock/gmock.h>

#include "support/open_requests.h"
#include "tests/harness/captured_log.h"
#include "tests/harness/temp_dir.h"

namespace quillory {
namespace {

using namespace std::string_literals;
using testing::CapturedLog;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using testing::readFile;
using testing::TempDir;
using testing::writeFile;

class OpenedFiles : public ::testing::Test {
 protected:
  OpenedFiles() { forgetOpenedFiles(); }
  ~OpenedFiles() override {
    forgetOpenedFiles();
    passOpenRequestsTo("");
  }

  const CapturedLog log_;
  TempDir dir_;
};

TEST_F(OpenedFiles, AreKeptForTheLaunchInTheirOrder) {
  EXPECT_TRUE(openFile("/b %s"));
  EXPECT_TRUE(openFile("/a"));
  EXPECT_THAT(takeOpenedFiles(), ElementsAre("/b %s", "/a"));
  EXPECT_THAT(takeOpenedFiles(), IsEmpty());
  EXPECT_THAT(log_.messages(), ElementsAre("[Quillory] [URL] Request received to open file /b %s\n",
                                           "[Quillory] [URL] Request received to open file /a\n"));
}

TEST_F(OpenedFiles, ThatComeAfterItGoTheWayOfUrls) {
  takeOpenedFiles();
  writeFile(dir_ / "requests", "");
  passOpenRequestsTo(dir_ / "requests");
  EXPECT_TRUE(openFile("/two words"));
  EXPECT_EQ(readFile(dir_ / "requests"), "file:///two%20words\0"s);
  EXPECT_THAT(takeOpenedFiles(), IsEmpty());
}

TEST_F(OpenedFiles, ThatNobodyHearsOfAreToldApart) {
  takeOpenedFiles();
  passOpenRequestsTo(dir_ / "nobody listens");
  EXPECT_FALSE(openFile("/a"));
}

}  // namespace
}  // namespace quillory
