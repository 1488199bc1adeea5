#include "ui/picture_limits.h"

#include <array>
#include <cstdint>
#include <cstring>

namespace quillory::splash {
namespace {

// The signature, and the length and name of the chunk that always comes first; behind them stand
// width and height, four bytes each, the highest first.
constexpr std::array<std::uint8_t, 16> kStart = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n',
                                                 0,    0,   0,   13,  'I',  'H',  'D',  'R'};

std::uint64_t numberAt(const std::uint8_t* bytes) {
  return std::uint64_t{bytes[0]} << 24 | std::uint64_t{bytes[1]} << 16 |
         std::uint64_t{bytes[2]} << 8 | bytes[3];
}

}  // namespace

bool isPictureTooLarge(const void* content, std::size_t size) {
  const auto* bytes = static_cast<const std::uint8_t*>(content);
  if (size < kStart.size() + 8 || std::memcmp(bytes, kStart.data(), kStart.size()) != 0)
    return false;
  const std::uint64_t width = numberAt(bytes + kStart.size());
  const std::uint64_t height = numberAt(bytes + kStart.size() + 4);
  return height != 0 && width > kMaxPicturePixels / height;
}

}  // namespace quillory::splash
