// What the first bytes of a program say of the system and the processors that it is for.
#pragma once
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace quillory::pack {

/// As many of a program's first bytes as programImageOf() ever looks at.
inline constexpr std::size_t kImageHead = 1024;

inline constexpr char kScript[] = "a shell";

struct ProgramImage {
  std::string system;                      ///< "macOS", "Linux", "Windows", kScript; "" for none
  std::vector<std::string> architectures;  ///< of a macOS program: "x86_64", "arm64", ...

  /// Whether `architecture` is one of `architectures`.
  bool runsOn(const std::string& architecture) const;
};

/// `head` is the first kImageHead bytes, or all of a shorter file; `size` is that of the whole
/// file. A Mach-O header that is cut, or that names parts behind the end, is no program.
ProgramImage programImageOf(std::string_view head, std::uint64_t size);

/// The same of a file. Throws PackError when it cannot be read.
ProgramImage programImageIn(const std::string& path);

/// "macOS (x86_64, arm64)", "Linux", or "no known system".
std::string asText(const ProgramImage& image);

}  // namespace quillory::pack
