// What is done for Java's toolkit on macOS, which is plain C++.
#include <gtest/gtest.h>

#include <cstdlib>

#include "java/cocoa_embedding.h"

namespace quillory {
namespace {

TEST(CocoaEmbedding, TellsTheToolkitToTakeOver) {
  unsetenv("AWT_OVERRIDE_NSDELEGATE");
  letToolkitTakeOver();
  EXPECT_STREQ(std::getenv("AWT_OVERRIDE_NSDELEGATE"), "1");
}

}  // namespace
}  // namespace quillory
