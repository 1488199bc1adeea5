// The section __eh_frame: what one linker wrote of functions, in DWARF, with addresses relative to
// where they stand.
#pragma once
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace quillory::loader {

/// One function, with addresses in memory. The instructions are those that its frames have in
/// common with others, then its own.
struct DwarfFunction {
  std::uint64_t begin;
  std::uint64_t size;
  std::uint64_t personality = 0;  ///< 0 without one
  std::uint64_t lsda = 0;         ///< 0 without one
  std::span<const std::uint8_t> commonInstructions;
  std::span<const std::uint8_t> instructions;
};

/// All functions in the section, which stands in memory where it belongs. Throws LoadError for what
/// is cut or in an unknown form: code counts in bytes, data in -8, the return address is
/// register 16.
std::vector<DwarfFunction> dwarfFunctions(std::span<const std::uint8_t> section);

}  // namespace quillory::loader
