// A look at a splash picture before it is decoded: a small file can ask for any amount of memory.
#pragma once
#include <cstddef>

namespace quillory::splash {

/// More pixels than any screen shows; decoded they take 128 megabytes.
inline constexpr unsigned long kMaxPicturePixels = 1UL << 25;

/// Whether the file is a PNG whose header claims more pixels than that. Of other formats nothing is
/// known, and false is returned.
bool isPictureTooLarge(const void* content, std::size_t size);

}  // namespace quillory::splash
