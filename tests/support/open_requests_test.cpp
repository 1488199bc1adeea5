#include "support/open_requests.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "tests/harness/temp_dir.h"

namespace quillory {
namespace {

namespace fs = std::filesystem;
using namespace std::string_literals;
using testing::readFile;
using testing::TempDir;
using testing::writeFile;

class OpenRequests : public ::testing::Test {
 protected:
  ~OpenRequests() override { passOpenRequestsTo(""); }

  TempDir dir_;
  const std::string file_ = dir_ / "QYOpenRequests-1-1";
};

TEST_F(OpenRequests, AreAddedToTheFileOfAnApplicationThatListens) {
  writeFile(file_, "");
  passOpenRequestsTo(file_);
  EXPECT_EQ(passOnOpenRequest("demo://a b"), OpenRequest::kHeard);
  EXPECT_EQ(passOnOpenRequest("demo://\xC3\xBC"), OpenRequest::kHeard);
  EXPECT_EQ(readFile(file_), "demo://a b\0demo://\xC3\xBC\0"s);
}

TEST_F(OpenRequests, OfOneThatDoesNotListenLeaveNothing) {
  EXPECT_EQ(passOnOpenRequest("demo://early"), OpenRequest::kTooEarly);
  passOpenRequestsTo(file_);
  EXPECT_EQ(passOnOpenRequest("demo://a"), OpenRequest::kUnheard);
  EXPECT_TRUE(fs::is_empty(dir_.str()));
}

TEST_F(OpenRequests, FollowNoLink) {
  writeFile(dir_ / "other", "mine");
  fs::create_symlink(dir_ / "other", file_);
  passOpenRequestsTo(file_);
  EXPECT_EQ(passOnOpenRequest("demo://a"), OpenRequest::kUnheard);
  EXPECT_EQ(readFile(dir_ / "other"), "mine");
}

}  // namespace
}  // namespace quillory
