#include "support/url_request.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/platform.h"
#include "tests/harness/captured_log.h"
#include "tests/harness/scoped_replace.h"

namespace quillory {
namespace {

using testing::CapturedLog;
using testing::ScopedReplace;

TEST(GetRequestedURL, IsNullWhenNobodyListens) {
  const CapturedLog log;
  EXPECT_EQ(getRequestedURL(), nullptr);
  EXPECT_EQ(log.text(), "[Quillory] [URL] Latest request is NULL\n");
}

TEST(GetRequestedURL, IsNullWhenNoUrlCame) {
  const CapturedLog log;
  const ScopedReplace source(
      platformCalls.requestedUrl, +[]() -> const char* { return nullptr; });
  EXPECT_EQ(getRequestedURL(), nullptr);
  EXPECT_EQ(log.text(), "[Quillory] [URL] Latest request is NULL\n");
}

TEST(GetRequestedURL, IsTheLatestUrlBorrowed) {
  const CapturedLog log;
  static const char kUrl[] = "hello://x?y=%20%s&z=\xc3\xa4";
  const ScopedReplace source(
      platformCalls.requestedUrl, +[]() -> const char* { return kUrl; });
  EXPECT_EQ(getRequestedURL(), kUrl);
  EXPECT_EQ(log.text(), std::string("[Quillory] [URL] Latest request is '") + kUrl + "'\n");
}

}  // namespace
}  // namespace quillory
