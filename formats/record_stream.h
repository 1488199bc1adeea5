// Values of a record stream: texts, each ended by one zero byte, read in an order that the caller
// knows in advance. docs/formats/record-stream.md has the bytes. Streams are borrowed: nothing
// here opens, closes or rewinds one.
#pragma once
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>

namespace quillory {

inline constexpr int kDefaultCapacity = 1024;
inline constexpr int kNumberCapacity = 40;

/// Characters that a value read with `capacity` may have: one fewer than fit, because a value that
/// fills the reader's block is cut there with a warning, even if nothing is lost.
constexpr std::size_t longestValue(int capacity) { return static_cast<std::size_t>(capacity) - 2; }

/// The next value, in a zero-filled block of `capacity` bytes; release it with free().
///
/// A value that fills the block (`capacity` - 1 bytes) is cut there with a warning on standard
/// output, and the stream stays inside it: the next read starts there. At end of file the
/// result is what was read so far, possibly "". `name` is for the reader of the calling code.
char* readString(std::FILE* stream, const char* name, int capacity);
char* readString(std::FILE* stream, const char* name);

/// The same as a std::string.
std::string readText(std::FILE* stream, const char* name, int capacity = kDefaultCapacity);

/// The next value as a decimal number, by the rules of atol(): "12abc" is 12, "true" is 0.
int readInt(std::FILE* stream, const char* name);
/// The same for counts and lengths that need 64 bits.
long readLong(std::FILE* stream, const char* name);

/// True exactly when the next value is the number 1.
bool readBoolean(std::FILE* stream, const char* name);

/// Whether nothing follows. Loops over a counted group ask this before each group, because a count
/// is only what the file claims.
bool isAtEnd(std::FILE* stream);

}  // namespace quillory
