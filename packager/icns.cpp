#include "packager/icns.h"

#include <array>
#include <cstdint>
#include <string_view>

#include "packager/byte_sinks.h"
#include "packager/findings.h"

namespace quillory::pack {
namespace {

struct IconKind {
  std::uint32_t width;
  const char* type;
};
// The types that hold a PNG of that many pixels.
constexpr std::array<IconKind, 5> kKinds = {
    {{64, "icp6"}, {128, "ic07"}, {256, "ic08"}, {512, "ic09"}, {1024, "ic10"}}};
constexpr std::size_t kHeader = 8;
constexpr std::size_t kWidthInPng = 16;
constexpr std::size_t kHeightInPng = 20;

std::uint32_t bigEndian(std::string_view bytes, std::size_t at) {
  std::uint32_t value = 0;
  for (std::size_t i = 0; i < 4; ++i) {
    value = value << 8 | static_cast<unsigned char>(bytes[at + i]);
  }
  return value;
}

std::string chunk(const std::string& type, const std::string& content) {
  const auto size = static_cast<std::uint32_t>(content.size() + kHeader);
  std::string bytes = type;
  for (const int shift : {24, 16, 8, 0}) {
    bytes += static_cast<char>(size >> shift & 0xFF);
  }
  return bytes + content;
}

}  // namespace

std::string icnsFrom(const std::string& path) {
  std::string picture = readWholeFile(path);
  if (picture.starts_with("icns")) {
    return picture;
  }
  if (picture.size() < kHeightInPng + 4) {
    throw PackError("is no PNG picture", "", {path, 0});
  }
  const std::uint32_t width = bigEndian(picture, kWidthInPng);
  for (const IconKind& kind : kKinds) {
    if (kind.width == width && bigEndian(picture, kHeightInPng) == width) {
      return chunk("icns", chunk(kind.type, picture));
    }
  }
  throw PackError("an icon picture is square, of 64, 128, 256, 512 or 1024 pixels",
                  "give it one of these sizes, best 1024", {path, 0});
}

}  // namespace quillory::pack
