#include "packager/reading/program_image.h"

#include <algorithm>
#include <array>
#include <optional>
#include <utility>

#include "packager/reading/record_input.h"

namespace quillory::pack {
namespace {

// Mach-O: a thin image is little endian here, the header of a universal file always big endian.
constexpr std::string_view kThin64{"\xCF\xFA\xED\xFE", 4};
constexpr std::string_view kThin32{"\xCE\xFA\xED\xFE", 4};
constexpr std::string_view kUniversal{"\xCA\xFE\xBA\xBE", 4};
constexpr std::string_view kUniversal64{"\xCA\xFE\xBA\xBF", 4};
constexpr std::size_t kThin64Header = 32;
constexpr std::size_t kThin32Header = 28;
constexpr std::size_t kUniversalHeader = 8;
// Class files of Java begin with the same four bytes; behind them they have a version, from 45 on.
constexpr std::uint64_t kMostParts = 30;

struct Other {
  std::string_view magic;
  const char* system;
};
constexpr std::array<Other, 3> kOthers = {Other{{"\x7F\x45\x4C\x46", 4}, "Linux"},
                                          Other{"MZ", "Windows"}, Other{"#!", kScript}};

// `width` bytes at `at`, which are there.
std::uint64_t bigEndian(std::string_view bytes, std::size_t at, std::size_t width) {
  std::uint64_t value = 0;
  for (const char c : bytes.substr(at, width)) {
    value = value << 8 | static_cast<unsigned char>(c);
  }
  return value;
}

std::uint64_t littleEndian(std::string_view bytes, std::size_t at, std::size_t width) {
  std::string reversed(bytes.substr(at, width));
  std::reverse(reversed.begin(), reversed.end());
  return bigEndian(reversed, 0, width);
}

std::string architectureOf(std::uint64_t cpuType) {
  switch (cpuType) {
    case 0x01000007:
      return "x86_64";
    case 0x0100000C:
      return "arm64";
    case 7:
      return "i386";
    default:
      return "processor " + std::to_string(cpuType);
  }
}

// The parts of a universal file; none when one of them, or the list, is not all there.
std::vector<std::string> partsOf(std::string_view head, std::uint64_t size, bool wide) {
  const std::size_t entry = wide ? 32 : 20;
  const std::size_t width = wide ? 8 : 4;
  if (head.size() < kUniversalHeader) {
    return {};
  }
  const std::uint64_t count = bigEndian(head, 4, 4);
  const std::uint64_t end = kUniversalHeader + count * entry;
  if (count > kMostParts || head.size() < end) {
    return {};
  }
  std::vector<std::string> architectures;
  for (std::size_t at = kUniversalHeader; at < end; at += entry) {
    const std::uint64_t start = bigEndian(head, at + 8, width);
    const std::uint64_t length = bigEndian(head, at + 8 + width, width);
    if (start < end || start > size || length > size - start || length < kThin32Header) {
      return {};
    }
    architectures.push_back(architectureOf(bigEndian(head, at, 4)));
  }
  return architectures;
}

std::vector<std::string> machArchitectures(std::string_view head, std::uint64_t size) {
  if (head.starts_with(kUniversal) || head.starts_with(kUniversal64)) {
    return partsOf(head, size, head.starts_with(kUniversal64));
  }
  if ((head.starts_with(kThin64) && head.size() >= kThin64Header) ||
      (head.starts_with(kThin32) && head.size() >= kThin32Header)) {
    return {architectureOf(littleEndian(head, 4, 4))};
  }
  return {};
}

}  // namespace

bool ProgramImage::runsOn(const std::string& architecture) const {
  return std::find(architectures.begin(), architectures.end(), architecture) != architectures.end();
}

ProgramImage programImageOf(std::string_view head, std::uint64_t size) {
  ProgramImage image;
  image.architectures = machArchitectures(head, size);
  if (!image.architectures.empty()) {
    image.system = "macOS";
    return image;
  }
  for (const Other& other : kOthers) {
    if (head.starts_with(other.magic)) {
      image.system = other.system;
    }
  }
  return image;
}

ProgramImage programImageIn(const std::string& path) {
  Findings ignored;
  RecordInput input(path, ignored);
  return programImageOf(input.bytes(kImageHead), static_cast<std::uint64_t>(input.size()));
}

std::string asText(const ProgramImage& image) {
  std::string text = image.system.empty() ? "no known system" : image.system;
  for (const std::string& architecture : image.architectures) {
    text += (&architecture == &image.architectures.front() ? " (" : ", ") + architecture;
  }
  return image.architectures.empty() ? text : text + ')';
}

}  // namespace quillory::pack
