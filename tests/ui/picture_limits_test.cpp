#include "ui/picture_limits.h"

#include <gtest/gtest.h>

#include <string>

namespace quillory::splash {
namespace {

using namespace std::string_literals;

bool isTooLarge(const std::string& content) {
  return isPictureTooLarge(content.data(), content.size());
}

const std::string kStart = "\x89PNG\r\n\x1a\n\0\0\0\rIHDR"s;

TEST(IsPictureTooLarge, IsFalseForWhatAScreenShows) {
  EXPECT_FALSE(isTooLarge(kStart + "\0\0\x01\xe0\0\0\x01\x0e"s));  // 480 x 270
  EXPECT_FALSE(isTooLarge(kStart + "\0\0\x20\x00\0\0\x10\x00"s));  // 8192 x 4096
  EXPECT_FALSE(isTooLarge(kStart + "\0\0\0\0\xff\xff\xff\xff"s));  // nothing wide
  EXPECT_FALSE(isTooLarge(kStart + "\xff\xff\xff\xff\0\0\0\0"s));
}

TEST(IsPictureTooLarge, IsTrueForMorePixelsThanThat) {
  EXPECT_TRUE(isTooLarge(kStart + "\0\0\x20\x01\0\0\x10\x00"s));  // 8193 x 4096
  EXPECT_TRUE(isTooLarge(kStart + "\0\0\xea\x60\0\0\xea\x60"s));  // 60000 x 60000
  EXPECT_TRUE(isTooLarge(kStart + "\xff\xff\xff\xff\xff\xff\xff\xff"s));
}

TEST(IsPictureTooLarge, IsFalseForWhatIsNoPng) {
  EXPECT_FALSE(isTooLarge(""));
  EXPECT_FALSE(
      isTooLarge("GIF89a\xff\xff\xff\xff\xff\xff\xff\xff\xff\xff\xff\xff\xff\xff\xff\xff\xff\xff"));
  const std::string whole = kStart + "\xff\xff\xff\xff\xff\xff\xff\xff"s;
  for (std::size_t length = 0; length < whole.size(); ++length)
    EXPECT_FALSE(isTooLarge(whole.substr(0, length))) << "cut at " << length;
}

}  // namespace
}  // namespace quillory::splash
