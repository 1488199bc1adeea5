#include "lzma/raw_lzma2.h"

#include <gtest/gtest.h>

#include <string>

namespace quillory {
namespace {

using namespace std::string_literals;

constexpr std::uint64_t kWindow = 1 << 20;
constexpr int kLevel = 2;

// Seven times "hello" as `xz --format=raw --lzma2=dict=4KiB` writes them.
const std::string kHellos = "hello hello hello hello hello hello hello\n";
const std::string kXzHellos =
    "\xe0\x00\x29\x00\x0d\x5d\x00\x34\x19\x49\xee\x8d\xe9\x57\xa3\x91\x09\x0c\x80\x00\x00"s;

LzmaSink into(std::string& text) {
  return [&text](const unsigned char* data, std::size_t size) {
    text.append(reinterpret_cast<const char*>(data), size);
    return true;
  };
}

std::string packed(const std::string& plain, const std::string& known, std::uint64_t window) {
  std::string bytes;
  RawLzma2Encoder coder(window, kLevel, known, into(bytes));
  EXPECT_TRUE(coder.write(plain.data(), plain.size())) << coder.error();
  EXPECT_TRUE(coder.finish()) << coder.error();
  return bytes;
}

// What comes out, or "<why nothing does>".
std::string unpacked(const std::string& bytes, const std::string& known, std::uint64_t window,
                     std::size_t piece = 1'000'000) {
  std::string plain;
  RawLzma2Decoder coder(window, into(plain));
  for (std::size_t at = 0; at < known.size(); at += piece)
    if (!coder.know(std::string_view(known).substr(at, piece))) return '<' + coder.error() + '>';
  for (std::size_t at = 0; at < bytes.size(); at += piece) {
    const std::string_view next = std::string_view(bytes).substr(at, piece);
    if (!coder.write(next.data(), next.size())) return '<' + coder.error() + '>';
  }
  return coder.finish() ? plain : '<' + coder.error() + '>';
}

// Text without repetitions that a coder would find in itself.
std::string noise(std::size_t length) {
  std::string bytes;
  unsigned state = 7;
  for (std::size_t i = 0; i < length; ++i) {
    state = state * 1664525 + 1013904223;
    bytes.push_back(static_cast<char>(state >> 24));
  }
  return bytes;
}

TEST(RawLzma2Decoder, UndoesWhatXzWrote) {
  EXPECT_EQ(unpacked(kXzHellos, "", kSmallestWindow), kHellos);
  EXPECT_EQ(unpacked(kXzHellos, "", kSmallestWindow, 1), kHellos);
}

// Chunks by hand: bytes as they are that do not forget what was before, and the end.
TEST(RawLzma2Decoder, TakesKnownBytesForWhatWasBefore) {
  const std::string bytes = "\x02\x00\x01hi\x00"s;
  EXPECT_EQ(unpacked(bytes, "known", kSmallestWindow), "hi");
  EXPECT_EQ(unpacked(bytes, "", kSmallestWindow), "<the LZMA stream is damaged>");
}

TEST(RawLzma2Encoder, IsUndone) {
  for (const std::size_t length : {0u, 1u, 65'535u, 65'536u, 65'537u, 300'000u}) {
    const std::string plain = noise(length);
    EXPECT_EQ(unpacked(packed(plain, "", kWindow), "", kWindow, 777), plain) << length;
    EXPECT_EQ(unpacked(packed(plain, "k", kWindow), "k", kWindow), plain) << length;
  }
}

TEST(RawLzma2Encoder, StoresNothingThatIsKnown) {
  const std::string known = noise(200'000);
  const std::string plain = known.substr(100'000) + "between" + known.substr(0, 100'000);
  const std::string bytes = packed(plain, known, kWindow);
  EXPECT_LT(bytes.size(), 300u);
  for (const std::size_t piece : {1000u, 65'536u, 100'000u, 1'000'000u})
    EXPECT_EQ(unpacked(bytes, known, kWindow, piece), plain) << piece;
}

TEST(RawLzma2Encoder, TakesTheEndOfWhatIsLongerThanTheWindow) {
  const std::string known = noise(300'000);
  const std::string plain = known.substr(299'000);
  const std::string bytes = packed(plain, known, 100'000);
  EXPECT_LT(bytes.size(), 100u);
  EXPECT_EQ(unpacked(bytes, known, 100'000), plain);
}

TEST(RawLzma2Decoder, GivesOtherBytesWithOtherKnownOnes) {
  std::string known = noise(10'000);
  const std::string bytes = packed(known, known, kWindow);
  known[5000] = static_cast<char>(known[5000] ^ 1);
  EXPECT_EQ(unpacked(bytes, known, kWindow), known);
}

TEST(RawLzma2Decoder, RefusesAStreamCutAnywhere) {
  const std::string known = noise(1000);
  const std::string bytes = packed(known + "and more of it", known, kWindow);
  ASSERT_EQ(unpacked(bytes, known, kWindow), known + "and more of it");
  for (std::size_t length = 0; length < bytes.size(); ++length)
    EXPECT_EQ(unpacked(bytes.substr(0, length), known, kWindow), "<the LZMA stream is cut short>")
        << length;
  EXPECT_EQ(unpacked(bytes + "x", known, kWindow),
            "<there are bytes behind the end of the LZMA stream>");
}

TEST(RawLzma2Decoder, RefusesToKnowMoreInTheMiddle) {
  std::string plain;
  RawLzma2Decoder coder(kWindow, into(plain));
  EXPECT_TRUE(coder.know("known"));
  EXPECT_TRUE(coder.write("\x02", 1));
  EXPECT_FALSE(coder.know("more"));
  EXPECT_FALSE(coder.finish());
  EXPECT_EQ(coder.error(), "bytes cannot become known in the middle of a stream");
}

TEST(RawLzma2Decoder, StopsWhenItsSinkDoes) {
  const std::string bytes = packed(kHellos, "", kWindow);
  RawLzma2Decoder coder(kWindow, [](const unsigned char*, std::size_t) { return false; });
  EXPECT_TRUE(coder.know("known"));
  EXPECT_FALSE(coder.write(bytes.data(), bytes.size()));
  EXPECT_EQ(coder.error(), "the output could not be written");
}

TEST(RawLzma2Coders, HaveWindowsBetweenTheirLimits) {
  std::string out;
  for (const std::uint64_t window : {std::uint64_t{0}, kSmallestWindow - 1, kLargestWindow + 1,
                                     std::uint64_t{1} << 32, ~std::uint64_t{0}}) {
    RawLzma2Decoder decoder(window, into(out));
    EXPECT_FALSE(decoder.know("x"));
    EXPECT_EQ(decoder.error(), "the window is beyond what LZMA has");
    RawLzma2Encoder encoder(window, kLevel, "", into(out));
    EXPECT_FALSE(encoder.write("x", 1));
    EXPECT_EQ(encoder.error(), "the window is beyond what LZMA has");
  }
  for (const int level : {-1, 10}) {
    RawLzma2Encoder encoder(kWindow, level, "", into(out));
    EXPECT_FALSE(encoder.finish());
    EXPECT_EQ(encoder.error(), "the compression level is not 0 to 9");
  }
}

}  // namespace
}  // namespace quillory
