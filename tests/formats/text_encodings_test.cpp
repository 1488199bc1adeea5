#include "formats/text_encodings.h"

#include <gtest/gtest.h>

#include <array>
#include <optional>
#include <string>
#include <vector>

#include "support/owned.h"
#include "tests/harness/captured_log.h"
#include "tests/harness/page_example.h"

namespace quillory {
namespace {

using testing::CapturedLog;
using testing::pageExample;
using namespace std::string_literals;

std::string toHex(const std::string& bytes) {
  std::string out(2 * bytes.size() + 1, '?');
  const int length = bytesToHex(out.data(), reinterpret_cast<const unsigned char*>(bytes.data()),
                                static_cast<int>(bytes.size()));
  EXPECT_EQ(out.back(), '\0');
  return out.substr(0, static_cast<std::size_t>(length));
}

// The bytes and the zero byte behind them, as decoded into a buffer of the usual size.
std::string decodedHex(const std::string& hex) {
  std::string out(hex.size() / 2 + 2, '?');
  const int count = hexToBytes(reinterpret_cast<unsigned char*>(out.data()),
                               static_cast<int>(out.size()), hex.c_str());
  return out.substr(0, static_cast<std::size_t>(count) + 1);
}

std::optional<std::string> fromBase64(const std::string& text) {
  std::size_t length = 12345;
  const OwnedText block(base64_decode(text.data(), text.size(), &length));
  if (!block) {
    EXPECT_EQ(length, 0U);
    return std::nullopt;
  }
  return std::string(block.get(), length);
}

TEST(BytesToHex, WritesTwoLowerCaseDigitsAByte) {
  EXPECT_EQ(toHex("\x00\xAB"s), "00ab");
  EXPECT_EQ(toHex("\x01\x23\x45\x67\x89\xCD\xEF\xFF"s), "0123456789cdefff");
}

TEST(BytesToHex, WritesNothingForACountBelowOne) {
  char out = '?';
  EXPECT_EQ(bytesToHex(&out, nullptr, 0), 0);
  EXPECT_EQ(bytesToHex(&out, nullptr, -3), -6);
  EXPECT_EQ(out, '?');
}

TEST(HexToBytes, ReadsEitherCaseAndEndsWithAZeroByte) {
  EXPECT_EQ(decodedHex("DEADbeef"), "\xDE\xAD\xBE\xEF\0"s);
}

TEST(HexToBytes, TakesAnOddLastDigitAsAByte) { EXPECT_EQ(decodedHex("ABC"), "\xAB\x0C\0"s); }

TEST(HexToBytes, WritesOnlyTheZeroByteForNoText) { EXPECT_EQ(decodedHex(""), "\0"s); }

TEST(HexToBytes, StopsAtThePairThatIsNotHexadecimal) {
  EXPECT_EQ(decodedHex("01zz02"), "\x01\0"s);
  EXPECT_EQ(decodedHex("g1"), "\0"s);
  EXPECT_EQ(decodedHex("01\n"), "\x01\0"s);
}

// What scanf's "%2x" makes of text that no writer produces.
TEST(HexToBytes, ConvertsOddTextAsScanfDoes) {
  EXPECT_EQ(decodedHex("1z02"), "\x01\x02\0"s) << "one digit of a pair is a byte";
  EXPECT_EQ(decodedHex(" 12"), "\x12\x02\0"s)
      << "a blank is skipped, and two characters are passed";
  EXPECT_EQ(decodedHex("-1"), "\xFF\0"s);
}

TEST(BytesOfHex, HasRoomForEveryText) {
  using Bytes = std::vector<unsigned char>;
  CapturedLog log;
  EXPECT_EQ(bytesOfHex(""), Bytes());
  EXPECT_EQ(bytesOfHex("00ff"), (Bytes{0x00, 0xFF}));
  EXPECT_EQ(bytesOfHex("ABC"), (Bytes{0xAB, 0x0C}));
  EXPECT_EQ(bytesOfHex("01zz02"), Bytes{0x01});
  EXPECT_EQ(bytesOfHex("zz"), Bytes());
  EXPECT_EQ(bytesOfHex(std::string(20000, 'a')), Bytes(10000, 0xAA));
  EXPECT_EQ(log.text(), "");
}

TEST(HexToBytes, NeverWritesBeyondTheCapacityAndSaysSo) {
  CapturedLog log;
  std::array<unsigned char, 6> out;
  out.fill('?');
  EXPECT_EQ(hexToBytes(out.data(), 3, "01020304"), 2);
  EXPECT_EQ(out, (std::array<unsigned char, 6>{1, 2, 0, '?', '?', '?'}));
  EXPECT_EQ(log.text(), "[Utils] ERROR - HexToBytes is writing too far! 4 3\n");
}

TEST(HexToBytes, SaysSoWhenOnlyTheZeroByteHasNoRoom) {
  CapturedLog log;
  std::array<unsigned char, 2> out;
  EXPECT_EQ(hexToBytes(out.data(), 2, "0102"), 1);
  EXPECT_EQ(log.text(), "[Utils] ERROR - HexToBytes is writing too far! 2 2\n");
}

TEST(HexToBytes, WritesNothingWithoutCapacity) {
  CapturedLog log;
  unsigned char out = '?';
  EXPECT_EQ(hexToBytes(&out, 0, "01"), 0);
  EXPECT_EQ(hexToBytes(&out, -1, "01"), 0);
  EXPECT_EQ(out, '?');
}

TEST(HexToBytes, LogsNothingWhenAllHasRoom) {
  CapturedLog log;
  decodedHex("0102");
  EXPECT_EQ(log.text(), "");
}

TEST(Base64Decode, DecodesTheVectorsOfItsStandard) {
  EXPECT_EQ(fromBase64(""), "");
  EXPECT_EQ(fromBase64("Zg=="), "f");
  EXPECT_EQ(fromBase64("Zm8="), "fo");
  EXPECT_EQ(fromBase64("Zm9v"), "foo");
  EXPECT_EQ(fromBase64("Zm9vYg=="), "foob");
  EXPECT_EQ(fromBase64("Zm9vYmE="), "fooba");
  EXPECT_EQ(fromBase64("Zm9vYmFy"), "foobar");
  EXPECT_EQ(fromBase64("TWE="), "Ma");
  EXPECT_EQ(fromBase64("TWFu"), "Man");
}

TEST(Base64Decode, KnowsTheWholeAlphabet) {
  const std::string expected = decodedHex(
      "00108310518720928b30d38f41149351559761969b71d79f8218a39259a7a29aabb2dbafc31cb3d35d"
      "b7e39ebbf3dfbf");
  EXPECT_EQ(fromBase64("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/"),
            expected.substr(0, 48));
}

TEST(Base64Decode, RefusesALengthThatIsNoMultipleOfFour) {
  for (const char* text : {"T", "TW", "TWF", "TWFuT"}) {
    SCOPED_TRACE(text);
    CapturedLog log;
    EXPECT_EQ(fromBase64(text), std::nullopt);
    EXPECT_EQ(log.text(), "[Extractor] Base64 deconding failed as input_length is not aligned\n");
  }
}

TEST(Base64Decode, RefusesEveryCharacterOutsideTheAlphabet) {
  const std::string alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/=";
  for (int byte = 0; byte < 256; ++byte) {
    CapturedLog log;
    const char character = static_cast<char>(byte);
    const bool isKnown = alphabet.find(character) != std::string::npos;
    EXPECT_EQ(fromBase64("TWF"s + character).has_value(), isKnown) << byte;
    EXPECT_EQ(log.text(), isKnown ? ""
                                  : "[Extractor] Base64 deconding failed as the character at 3 is "
                                    "not base64\n");
  }
}

TEST(Base64Decode, CountsPaddingAsZeroWhereverItStands) {
  EXPECT_EQ(fromBase64("T=Fu"), "\x4C\x01\x6E");
  EXPECT_EQ(fromBase64("TW=u"), "\x4D\x60") << "the last but one shortens the result by itself";
  EXPECT_EQ(fromBase64("===="), "\0"s);
}

TEST(TextEncodingsPage, ShowsHexadecimalAndItsBytes) {
  const std::string text = pageExample("formats/text-encodings.md", 1);
  EXPECT_EQ(decodedHex(text.c_str()), pageExample("formats/text-encodings.md", 2) + '\0');
}

TEST(TextEncodingsPage, ShowsBase64AndItsBytes) {
  EXPECT_EQ(fromBase64(pageExample("formats/text-encodings.md", 3)),
            pageExample("formats/text-encodings.md", 4));
}

}  // namespace
}  // namespace quillory
