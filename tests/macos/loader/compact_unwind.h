// The section __unwind_info: for each range of code one number, which says where the caller's
// registers are.
#pragma once
#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace quillory::loader {

/// A range of code whose frames all look the same. Offsets are from the image's header.
struct UnwindRange {
  std::uint32_t begin;
  std::uint32_t end;
  std::uint32_t encoding;
  std::uint32_t lsda = 0;                ///< 0 without one
  std::uint32_t personalityPointer = 0;  ///< of the pointer to it; 0 without one
};

/// All ranges, in the order of their addresses, with those that say nothing. Throws LoadError for a
/// section that contradicts itself.
std::vector<UnwindRange> unwindRanges(std::span<const std::uint8_t> section);

enum class FrameKind { kNone, kBasePointer, kStackSize, kStackSizeInCode, kDwarf };
FrameKind frameKindOf(std::uint32_t encoding);

/// Registers by the numbers of DWARF on x86_64.
enum Register : std::uint8_t { kRbx = 3, kRbp = 6, kRsp = 7, kR12 = 12, kR13, kR14, kR15, kReturn };

struct SavedRegister {
  Register which;
  std::int32_t below;  ///< bytes below the address of the frame (CFA)
};

struct Frame {
  std::uint32_t size;  ///< from the stack or base pointer to the address of the frame
  std::vector<SavedRegister> saved;
};

Frame basePointerFrame(std::uint32_t encoding);
/// `sizeInCode` is the number that the instruction at frameSizeOffset() subtracts.
Frame stackFrame(std::uint32_t encoding, std::optional<std::uint32_t> sizeInCode);
/// Where that number is, from the function's begin.
std::uint32_t frameSizeOffset(std::uint32_t encoding);

}  // namespace quillory::loader
