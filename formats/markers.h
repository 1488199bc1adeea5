// Markers: byte sequences behind which a record stream begins inside a larger file.
#pragma once
#include <cstdint>
#include <cstdio>
#include <string>

namespace quillory {

inline constexpr int kTailMarkerLength = 128;
inline constexpr int kParamsMarkerLength = 64;
inline constexpr std::uint32_t kMarkerNotFound = 0xFFFFFFFF;

/// The tail marker in a new block of kTailMarkerLength bytes; release it with free(). It is put
/// together at run time: the sequence must not occur in the executable, which is scanned for it.
char* allocAndInitMarker();

/// The marker of the parameters file, kParamsMarkerLength bytes, made in the same way.
char* allocAndInitParamsMarker();

/// The same two for C++.
std::string tailMarker();
std::string paramsMarker();

/// The number of bytes read up to and including the marker, leaving the stream just behind it; or
/// kMarkerNotFound, with a log line that has `name`. The search is that of marker_search.h, which
/// misses a marker right behind a beginning of itself. A length of 0 reads nothing and returns 0.
std::uint32_t scanToMarker(std::FILE* stream, const char* marker, int length, const char* name);

}  // namespace quillory
