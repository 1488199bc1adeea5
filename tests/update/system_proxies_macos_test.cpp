// The way of macOS, with a stand-in for its frameworks.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "update/system_proxies.h"

namespace quillory::update {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

TEST(ProxiesOfSystemMacos, AreThoseThatTheSystemHasForTheAddress) {
  EXPECT_THAT(proxiesOfSystem("https://app.example/"),
              ElementsAre("http://web.example:3128", "socks5h://socks.example:1080", "direct"));
  EXPECT_THAT(proxiesOfSystem("https://other.example/"), IsEmpty());
}

TEST(ProxiesOfSystemMacos, LeaveOutScripts) {
  EXPECT_THAT(proxiesOfSystem("http://script.example/"), ElementsAre("http://plain.example:80"));
}

TEST(ProxiesOfSystemMacos, AreNoneOfWhatIsNoAddress) {
  EXPECT_THAT(proxiesOfSystem("no address"), IsEmpty());
}

}  // namespace
}  // namespace quillory::update
