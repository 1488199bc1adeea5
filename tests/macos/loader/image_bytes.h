// The bytes of a Mach-O image, wherever they are: a thin file, the x86_64 slice of a universal one,
// or behind the end of the loader's own ELF file. The last is how a loader carries an image: tests
// that copy "the launcher" copy both, and what is appended to the copy stays behind the image.
#pragma once
#include <cstdint>
#include <string>
#include <vector>

namespace quillory::loader {

/// The image in the file at `path`. Throws LoadError when there is none.
std::vector<std::uint8_t> imageOf(const std::string& path);

/// The image behind the ELF file at `path`; empty when nothing follows it. Throws LoadError when
/// it is no ELF file, or something else than an image follows.
std::vector<std::uint8_t> carriedImage(const std::string& path);

/// Whether the file begins like a Mach-O image or a universal file.
bool isMachO(const std::string& path);

}  // namespace quillory::loader
