#include "lzma/lzma_pieces.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <random>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "tests/harness/unpacked_lzma.h"

namespace quillory {
namespace {

using testing::unpackedLzma;

// Words that come again, near and far, and bytes that do not.
std::string textOf(std::size_t size, unsigned seed) {
  std::mt19937 random(seed);
  std::vector<std::string> words;
  for (int i = 0; i < 400; ++i) {
    std::string word(1 + random() % 12, ' ');
    for (char& c : word) c = static_cast<char>(random() % 256);
    words.push_back(word);
  }
  std::string text;
  while (text.size() < size) {
    if (random() % 50 == 0) text.append(20 + random() % 400, static_cast<char>(random() % 3));
    if (random() % 30 == 0 && text.size() > 3000)
      text += text.substr(random() % (text.size() - 2000), random() % 700);
    text += words[random() % words.size()];
  }
  text.resize(size);
  return text;
}

constexpr auto kNoWatch = [](std::size_t) {};

// A piece as it was compressed.
struct Packed {
  LzmaPiece piece;
  std::string bytes{};
};

std::string compress(Packed& made, int level, const LzmaTuning& tuning, const LzmaWatch& watch) {
  return compressPiece(
      made.piece, level, tuning,
      [&](const unsigned char* data, std::size_t size) {
        made.bytes.append(reinterpret_cast<const char*>(data), size);
        return true;
      },
      watch);
}

// Its bytes, so many at a time.
LzmaSource sourceOf(const Packed& made, std::size_t atOnce) {
  return [&made, atOnce, at = std::size_t{0}]() mutable {
    const std::string_view next = std::string_view(made.bytes).substr(at, atOnce);
    at += next.size();
    return next;
  };
}

struct Spliced {
  std::string stream;
  bool isWhole = true;
};

Spliced splice(const std::string& text, const std::vector<std::size_t>& starts, std::size_t known,
               int level, LzmaTuning tuning) {
  tuning.dictionary = std::bit_ceil(std::max<std::size_t>(text.size(), 4096));
  Spliced result;
  LzmaSplicer splicer(tuning, [&](const unsigned char* data, std::size_t size) {
    result.stream.append(reinterpret_cast<const char*>(data), size);
    return true;
  });
  for (std::size_t i = 0; i < starts.size(); ++i) {
    const std::size_t end = i + 1 < starts.size() ? starts[i + 1] : text.size();
    Packed made;
    LzmaPiece& piece = made.piece;
    piece.known = std::min(known, starts[i]) / 16 * 16;
    piece.bytes = text.substr(starts[i] - piece.known, end - starts[i] + piece.known);
    std::size_t seen = 0;
    const auto see = [&](std::size_t more) { seen += more; };
    EXPECT_EQ(compress(made, level, tuning, see), "");
    EXPECT_EQ(seen, end - starts[i]);
    seen = 0;
    const std::size_t atOnce = i % 2 == 0 ? 7 : made.bytes.size();
    result.isWhole = splicer.add(piece, sourceOf(made, atOnce), see) && result.isWhole;
    EXPECT_EQ(seen, end - starts[i]);
  }
  result.isWhole = splicer.finish() && result.isWhole;
  return result;
}

TEST(LzmaPieces, OfOneAreTheStreamThatTheLibraryMakes) {
  const std::string text = textOf(std::size_t{1} << 20, 1);
  for (const int level : {0, 3, 6}) {
    LzmaTuning tuning{4, 0, 0};
    tuning.dictionary = std::size_t{1} << 20;
    std::string expected;
    LzmaCoder coder = LzmaCoder::encoder(
        level,
        [&](const unsigned char* data, std::size_t size) {
          expected.append(reinterpret_cast<const char*>(data), size);
          return true;
        },
        tuning);
    coder.write(text.data(), text.size());
    ASSERT_TRUE(coder.finish());
    const std::string spliced = splice(text, {0}, 0, level, tuning).stream;
    if (level < 4) {
      EXPECT_TRUE(spliced == expected) << level;
    } else {
      // The library sometimes writes a distance anew that is one of the last.
      EXPECT_LT(spliced.size(), expected.size() + expected.size() / 1000);
    }
    EXPECT_TRUE(unpackedLzma(spliced) == text);
  }
}

TEST(LzmaPieces, BecomeOneStreamWhereverTheyAreCut) {
  const std::string text = textOf(60'000, 2);
  const std::vector<std::size_t> cuts[] = {
      {0, 25'000}, {0, 1}, {0, 1, 2, 3, 17, 4'000}, {0, 59'999}, {0, 15'000, 30'000, 45'000}};
  const LzmaTuning tunings[] = {{3, 0, 2}, {4, 0, 0}, {0, 4, 4}, {1, 2, 3}};
  for (const auto& starts : cuts) {
    for (const LzmaTuning& tuning : tunings) {
      for (const std::size_t known : {0, 100, 20'000}) {
        const Spliced spliced = splice(text, starts, known, 6, tuning);
        EXPECT_TRUE(spliced.isWhole);
        EXPECT_TRUE(unpackedLzma(spliced.stream) == text)
            << starts.size() << ' ' << tuning.literalContextBits << ' ' << known;
      }
    }
  }
}

TEST(LzmaPieces, OfRunsAndOfNothing) {
  for (const std::string& text :
       {std::string(100'000, 'x'), std::string(), std::string("x"), std::string(40'000, '\0')}) {
    const Spliced spliced = splice(text, {0, text.size() / 2}, 16, 6, {3, 0, 2});
    EXPECT_TRUE(spliced.isWhole);
    EXPECT_TRUE(unpackedLzma(spliced.stream) == text) << text.size();
  }
}

TEST(LzmaPieces, CopyFromWhatTheyKnow) {
  const std::string half = textOf(60'000, 3);
  const std::string text = half + half;
  const std::size_t alone = splice(text, {0, half.size()}, 0, 6, {}).stream.size();
  const std::size_t knowing = splice(text, {0, half.size()}, half.size(), 6, {}).stream.size();
  EXPECT_LT(knowing, alone * 6 / 10);
}

TEST(LzmaPieces, ThatAreDamagedBreakTheStream) {
  const std::string text = textOf(50'000, 4);
  LzmaTuning tuning;
  tuning.dictionary = std::size_t{1} << 20;
  Packed piece{{text}};
  ASSERT_EQ(compress(piece, 6, tuning, kNoWatch), "");
  const auto isTaken = [&](const Packed& one) {
    LzmaSplicer splicer(tuning, [](const unsigned char*, std::size_t) { return true; });
    return splicer.add(one.piece, sourceOf(one, 1'000), kNoWatch) && splicer.finish();
  };
  EXPECT_TRUE(isTaken(piece));
  Packed cut = piece;
  cut.bytes.resize(cut.bytes.size() / 2);
  EXPECT_FALSE(isTaken(cut));
  Packed flipped = piece;
  flipped.bytes[1'000] = static_cast<char>(flipped.bytes[1'000] ^ 0x10);
  EXPECT_FALSE(isTaken(flipped));
  Packed other = piece;
  other.piece.bytes[20'000] = static_cast<char>(other.piece.bytes[20'000] ^ 1);
  EXPECT_FALSE(isTaken(other));
}

TEST(LzmaPieces, StopWithTheirSinkAndTheirWatch) {
  const std::string text = textOf(400'000, 5);
  LzmaTuning tuning;
  tuning.dictionary = std::size_t{1} << 20;
  Packed piece{{text}};
  ASSERT_EQ(compress(piece, 1, tuning, kNoWatch), "");
  LzmaSplicer full(tuning, [](const unsigned char*, std::size_t) { return false; });
  full.add(piece.piece, sourceOf(piece, 1'000), kNoWatch);
  EXPECT_FALSE(full.finish());
  const auto stop = [](std::size_t) { throw std::runtime_error("stop"); };
  LzmaSplicer stopped(tuning, [](const unsigned char*, std::size_t) { return true; });
  EXPECT_THROW(stopped.add(piece.piece, sourceOf(piece, 1'000), stop), std::runtime_error);
  Packed none{{text}};
  EXPECT_THROW(compress(none, 1, tuning, stop), std::runtime_error);
  EXPECT_NE(compress(none, 10, tuning, kNoWatch), "");
  EXPECT_NE(
      compressPiece(
          none.piece, 1, tuning, [](const unsigned char*, std::size_t) { return false; }, kNoWatch),
      "");
}

TEST(LzmaPieces, AreSearchedAsDeepAsTheyAreTunedTo) {
  const std::string text = textOf(300'000, 6);
  LzmaTuning shallow;
  shallow.searchDepth = 1;
  const std::size_t size = splice(text, {0}, 0, 6, {}).stream.size();
  const std::string less = splice(text, {0}, 0, 6, shallow).stream;
  EXPECT_GT(less.size(), size);
  EXPECT_TRUE(unpackedLzma(less) == text);
}

}  // namespace
}  // namespace quillory
