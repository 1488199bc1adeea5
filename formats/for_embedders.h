// Functions for programs outside of this tree, which know them by these names and signatures.
// Nothing in the launcher calls them.
#pragma once
#include <cstdint>

#include "formats/keccak.h"

namespace quillory {

/// XORs `laneCount` little-endian lanes of `input` into the state and permutes it by
/// Keccak-f[1600]. Without input (0 lanes, `input` may be null) it only permutes.
void KeccakF(KeccakState* state, const unsigned char* input, int laneCount);

/// One-shot digest of 32 bytes over `length` bytes. Always 0.
int crypto_hash(unsigned char* out, const unsigned char* data, std::uint64_t length);

/// 32-bit FNV-1a. Logs every step: for short keys and diagnostics.
std::uint32_t fnvHash(const char* data, long length);

/// Releases the table of base64_decode(), which makes it again when it needs it.
void base64_cleanup();

}  // namespace quillory
