// Binary values in text records: hexadecimal for keys and signatures, base64 for pictures; and a
// small string hash for diagnostics.
#pragma once
#include <cstddef>
#include <string>
#include <vector>

namespace quillory {

/// Writes 2 x `count` lower-case digits and a terminator; `out` holds 2 x `count` + 1 bytes. A
/// `count` below 1 writes nothing. Returns 2 x `count`.
int bytesToHex(char* out, const unsigned char* data, int count);

/// Decodes up to the first pair that is not hexadecimal and returns the number of bytes stored; a
/// zero byte follows them. An odd last digit is a byte of its own. `capacity` counts that zero
/// byte; nothing is ever written beyond it, and a text that needs more is cut, with an error in the
/// log.
int hexToBytes(unsigned char* out, int capacity, const char* hex);

/// The bytes of a text of any length, decoded likewise.
std::vector<unsigned char> bytesOfHex(const std::string& hex);

/// The decoded bytes in a new block (release with free()) and their number; null, logged, when the
/// length is no multiple of 4, a character is outside the alphabet, or memory is short.
char* base64_decode(const char* text, std::size_t length, std::size_t* outLength);
/// Makes the table that it decodes with, which the first call does by itself.
void build_decoding_table();

}  // namespace quillory
