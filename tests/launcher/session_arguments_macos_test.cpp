// What the entry does on macOS, which is plain C++.
#include <gtest/gtest.h>

#include <string>

#include "launcher/session_arguments.h"

namespace quillory {
namespace {

TEST(TheEntryOnMacOs, DropsWhatNamesTheSession) {
  std::string name = "launcher";
  std::string session = "-psn_0_12345";
  std::string argument = "document";
  char* arguments[] = {name.data(), session.data(), argument.data(), nullptr};
  EXPECT_EQ(withoutArgumentsOfTheSystem(3, arguments), 2);
  EXPECT_STREQ(arguments[1], "document");
  EXPECT_EQ(arguments[2], nullptr);
}

TEST(TheEntryOnMacOs, GivesTheRunThreadTheStackOfAMainThread) {
  EXPECT_EQ(runThreadStackBytes(), 8U * 1024 * 1024);
}

}  // namespace
}  // namespace quillory
