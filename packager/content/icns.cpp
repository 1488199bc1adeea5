#include "packager/content/icns.h"

#include <algorithm>
#include <array>
#include <cstdint>

#include "packager/bytes/byte_sinks.h"
#include "support/picture_limits.h"

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
constexpr char kDamagedPng[] = "is a PNG picture that is cut short or damaged";
constexpr std::string_view kSignature("\x89PNG\r\n\x1a\n", 8);
// Length and type of the first chunk.
constexpr std::string_view kIhdr("\0\0\0\x0dIHDR", 8);
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

bool isIcns(std::string_view bytes) { return bytes.starts_with("icns"); }

// Of a PNG picture; null when icons have no such size.
const IconKind* kindFor(std::string_view png) {
  const std::uint32_t width = bigEndian(png, kWidthInPng);
  const auto found = std::find_if(kKinds.begin(), kKinds.end(),
                                  [&](const IconKind& kind) { return kind.width == width; });
  return found == kKinds.end() || bigEndian(png, kHeightInPng) != width ? nullptr : &*found;
}

// Why these bytes are no PNG picture; "" when they are one.
std::string flawOfPng(std::string_view bytes) {
  if (!bytes.starts_with(kSignature)) {
    return "is no PNG picture";
  }
  if (bytes.size() < kHeightInPng + 4 || bytes.substr(kSignature.size(), kIhdr.size()) != kIhdr) {
    return kDamagedPng;
  }
  const bool isEmpty = bigEndian(bytes, kWidthInPng) == 0 || bigEndian(bytes, kHeightInPng) == 0;
  return isEmpty ? "is a PNG picture without a single pixel" : "";
}

// The same of an icon.
std::string flawOfIconBytes(std::string_view bytes) {
  if (isIcns(bytes)) {
    const bool isWhole = bytes.size() > kHeader && bigEndian(bytes, 4) > kHeader &&
                         bigEndian(bytes, 4) <= bytes.size();
    return isWhole ? "" : "is an icns file that is cut short or damaged";
  }
  const std::string flaw = flawOfPng(bytes);
  if (!flaw.empty()) {
    return bytes.starts_with(kSignature) ? flaw : "is neither an icns nor a PNG picture";
  }
  return kindFor(bytes) == nullptr
             ? "is a picture of " + std::to_string(bigEndian(bytes, kWidthInPng)) + " by " +
                   std::to_string(bigEndian(bytes, kHeightInPng)) +
                   " pixels: those of icons are square, of 64, 128, 256, 512 "
                   "or 1024"
             : "";
}

std::optional<Finding> findingOf(const Subject& subject, const std::string& flaw,
                                 const char* advice) {
  if (flaw.empty()) {
    return std::nullopt;
  }
  return Finding{Severity::kError, "picture", subject.name + ' ' + flaw, subject.place, advice};
}

}  // namespace

std::optional<Finding> flawOfPicture(const Subject& picture, std::string_view bytes) {
  const PictureFault fault = faultOfPicture(bytes);
  std::string flaw = bytes.starts_with(kSignature) ? flawOfPng(bytes) : "";
  if (flaw.empty() && fault == PictureFault::kOtherFormat) {
    flaw = bytes.starts_with(kSignature) ? kDamagedPng : "is neither a PNG nor a JPEG picture";
  } else if (flaw.empty() && fault == PictureFault::kTooLarge) {
    flaw = "is larger than what the launcher shows: 8192 by 4096 pixels, 16 MiB, 100 passes";
  }
  return findingOf(picture, flaw, "save it as a smaller PNG: the splash would stay empty");
}

std::optional<Finding> flawOfIcon(const Subject& icon, std::string_view bytes) {
  return findingOf(icon, flawOfIconBytes(bytes),
                   "save it as PNG, best of 1024 by 1024 pixels, or as icns");
}

std::string icnsFrom(const std::string& path) {
  std::string picture = readWholeFile(path);
  if (const auto flaw = flawOfIcon({"the icon", {path, 0}}, picture)) {
    throw PackError(flaw->what, flaw->advice, flaw->place);
  }
  return isIcns(picture) ? picture : chunk("icns", chunk(kindFor(picture)->type, picture));
}

}  // namespace quillory::pack
