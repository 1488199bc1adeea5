// LZMA as its symbols: which bits a literal, a match or a repeated match is made of, and the
// probabilities that these bits have learnt. One text for both directions: the range coder beneath
// either takes the bits that it is given, or ignores them and tells those that it reads.
//
//   int bit(Probability& probability, int value);   a bit with what is known of it
//   int plainBit(int value);                        one without
//
// Not for other folders.
#pragma once
#include <array>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "lzma/lzma_alone.h"

namespace quillory {

using Probability = std::uint16_t;
inline constexpr int kProbabilityBits = 11;
inline constexpr Probability kEven = 1 << (kProbabilityBits - 1);
inline constexpr int kLearningShift = 5;

/// A literal has a length of 0. A distance of 0 is the byte before.
struct LzmaSymbol {
  std::uint32_t length = 0;
  std::uint32_t distance = 0;
  unsigned char literal = 0;
};

inline constexpr std::uint32_t kShortestMatch = 2;
inline constexpr std::uint32_t kEndDistance = 0xFFFFFFFF;

class LzmaModel {
 public:
  explicit LzmaModel(const LzmaTuning& tuning)
      : literalContextBits_(tuning.literalContextBits),
        literalPositionMask_((1u << tuning.literalPositionBits) - 1),
        positionMask_((1u << tuning.positionBits) - 1),
        literals_(std::size_t{0x300} << (tuning.literalContextBits + tuning.literalPositionBits),
                  kEven) {
    fill(isMatch_, isRepeated_, isRepeated0_, isRepeated1_, isRepeated2_, isLong_, slots_, near_,
         align_, matchLengths_, repeatedLengths_);
  }

  /// The distance that the next literal is compared with; the caller finds the byte there.
  std::uint32_t lastDistance() const { return repeated_[0]; }
  /// Whether it is.
  bool isComparing() const { return state_ >= kStatesBehindLiterals; }

  /// The next symbol, which stands at `position` behind the byte `before`; `compared` is the byte
  /// at the last distance. Writing, `symbol` is what is meant: a match of one byte has to be one at
  /// the last distance. Reading, it is ignored. Returns what it was.
  template <typename Coder>
  LzmaSymbol code(Coder& coder, std::uint64_t position, unsigned char before,
                  unsigned char compared, LzmaSymbol symbol) {
    const auto at = static_cast<std::uint32_t>(position) & positionMask_;
    if (coder.bit(isMatch_[state_][at], symbol.length != 0) == 0) {
      symbol = {0, 0, codeLiteral(coder, position, before, compared, symbol.literal)};
      state_ = state_ < 4 ? 0 : state_ < 10 ? state_ - 3 : state_ - 6;
      return symbol;
    }
    int which = 0;
    while (which < 4 && repeated_[static_cast<std::size_t>(which)] != symbol.distance) ++which;
    if (coder.bit(isRepeated_[state_], which < 4) == 0) {
      symbol.length = codeLength(coder, matchLengths_, at, symbol.length);
      state_ = state_ < kStatesBehindLiterals ? 7 : 10;
      symbol.distance = codeDistance(coder, symbol.length, symbol.distance);
      repeated_ = {symbol.distance, repeated_[0], repeated_[1], repeated_[2]};
      return symbol;
    }
    return codeRepeated(coder, at, which, symbol.length);
  }

 private:
  static constexpr std::size_t kStates = 12;
  static constexpr std::size_t kStatesBehindLiterals = 7;
  static constexpr std::size_t kPositions = 16;
  static constexpr std::uint32_t kNearSlots = 14;
  static constexpr int kAlignBits = 4;

  template <std::size_t kSize>
  using Table = std::array<Probability, kSize>;

  struct Lengths {
    Table<2> isLonger;
    std::array<Table<8>, kPositions> low;
    std::array<Table<8>, kPositions> middle;
    Table<256> high;
  };

  static void even(Probability& probability) { probability = kEven; }
  template <typename Element, std::size_t kSize>
  static void even(std::array<Element, kSize>& table) {
    for (Element& element : table) even(element);
  }
  static void even(Lengths& lengths) {
    fill(lengths.isLonger, lengths.low, lengths.middle, lengths.high);
  }
  template <typename... Tables>
  static void fill(Tables&... tables) {
    (even(tables), ...);
  }

  template <typename Coder, typename Tree>
  static std::uint32_t codeTree(Coder& coder, Tree& tree, int bits, std::uint32_t value) {
    std::uint32_t node = 1;
    for (int i = bits - 1; i >= 0; --i)
      node = node << 1 |
             static_cast<std::uint32_t>(coder.bit(tree[node], static_cast<int>(value >> i & 1)));
    return node - (1u << bits);
  }

  // The lowest bit first.
  template <typename Coder>
  static std::uint32_t codeReversed(Coder& coder, Probability* tree, int bits,
                                    std::uint32_t value) {
    std::uint32_t node = 1;
    std::uint32_t result = 0;
    for (int i = 0; i < bits; ++i) {
      const auto bit =
          static_cast<std::uint32_t>(coder.bit(tree[node], static_cast<int>(value >> i & 1)));
      node = node << 1 | bit;
      result |= bit << i;
    }
    return result;
  }

  template <typename Coder>
  unsigned char codeLiteral(Coder& coder, std::uint64_t position, unsigned char before,
                            unsigned char compared, unsigned char literal) {
    const std::size_t context =
        ((static_cast<std::uint32_t>(position) & literalPositionMask_) << literalContextBits_) +
        (before >> (8 - literalContextBits_));
    Probability* tree = &literals_[context * 0x300];
    std::uint32_t node = 1;
    // As long as it is the same as the byte that it is compared with, in a tree for that.
    bool isSame = isComparing();
    for (int i = 7; i >= 0; --i) {
      const auto other = static_cast<std::uint32_t>(compared >> i & 1);
      const std::size_t place = isSame ? ((1 + other) << 8) + node : node;
      const auto bit = static_cast<std::uint32_t>(coder.bit(tree[place], literal >> i & 1));
      node = node << 1 | bit;
      isSame = isSame && bit == other;
    }
    return static_cast<unsigned char>(node);
  }

  template <typename Coder>
  std::uint32_t codeLength(Coder& coder, Lengths& lengths, std::uint32_t at, std::uint32_t length) {
    const std::uint32_t value = length - kShortestMatch;
    if (coder.bit(lengths.isLonger[0], value >= 8) == 0)
      return kShortestMatch + codeTree(coder, lengths.low[at], 3, value);
    if (coder.bit(lengths.isLonger[1], value >= 16) == 0)
      return kShortestMatch + 8 + codeTree(coder, lengths.middle[at], 3, value - 8);
    return kShortestMatch + 16 + codeTree(coder, lengths.high, 8, value - 16);
  }

  static std::uint32_t slotOf(std::uint32_t distance) {
    if (distance < 4) return distance;
    const auto bits = static_cast<std::uint32_t>(31 - __builtin_clz(distance));
    return bits * 2 + (distance >> (bits - 1) & 1);
  }

  template <typename Coder>
  std::uint32_t codeDistance(Coder& coder, std::uint32_t length, std::uint32_t distance) {
    const std::uint32_t kind = length < kShortestMatch + 4 ? length - kShortestMatch : 3;
    const std::uint32_t slot = codeTree(coder, slots_[kind], 6, slotOf(distance));
    if (slot < 4) return slot;
    const int bits = static_cast<int>(slot / 2 - 1);
    const std::uint32_t base = (2 | (slot & 1)) << bits;
    const std::uint32_t rest = distance - base;
    if (slot < kNearSlots)
      return base + codeReversed(coder, near_.data() + base - slot, bits, rest);
    std::uint32_t result = 0;
    for (int i = bits - 1; i >= kAlignBits; --i)
      result |= static_cast<std::uint32_t>(coder.plainBit(static_cast<int>(rest >> i & 1))) << i;
    return base + (result | codeReversed(coder, align_.data(), kAlignBits, rest));
  }

  template <typename Coder>
  LzmaSymbol codeRepeated(Coder& coder, std::uint32_t at, int which, std::uint32_t length) {
    if (coder.bit(isRepeated0_[state_], which > 0) == 0) {
      if (coder.bit(isLong_[state_][at], length != 1) == 0) {
        state_ = state_ < kStatesBehindLiterals ? 9 : 11;
        return {1, repeated_[0], 0};
      }
      which = 0;
    } else if (coder.bit(isRepeated1_[state_], which > 1) == 0) {
      which = 1;
    } else {
      which = 2 + coder.bit(isRepeated2_[state_], which > 2);
    }
    const std::uint32_t distance = repeated_[static_cast<std::size_t>(which)];
    for (auto i = static_cast<std::size_t>(which); i > 0; --i) repeated_[i] = repeated_[i - 1];
    repeated_[0] = distance;
    const std::uint32_t taken = codeLength(coder, repeatedLengths_, at, length);
    state_ = state_ < kStatesBehindLiterals ? 8 : 11;
    return {taken, distance, 0};
  }

  int literalContextBits_;
  std::uint32_t literalPositionMask_;
  std::uint32_t positionMask_;
  std::size_t state_ = 0;
  std::array<std::uint32_t, 4> repeated_{};
  std::array<Table<kPositions>, kStates> isMatch_;
  Table<kStates> isRepeated_;
  Table<kStates> isRepeated0_;
  Table<kStates> isRepeated1_;
  Table<kStates> isRepeated2_;
  std::array<Table<kPositions>, kStates> isLong_;
  std::array<Table<64>, 4> slots_;
  Table<115> near_;  // those of each slot behind one another
  Table<1 << kAlignBits> align_;
  Lengths matchLengths_;
  Lengths repeatedLengths_;
  std::vector<Probability> literals_;
};

}  // namespace quillory
