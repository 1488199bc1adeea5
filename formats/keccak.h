// Keccak-256 with the padding of the reference submission (not FIPS 202: no domain bits), as a core
// that counts bits and as a hash descriptor of LibTomCrypt named "sha3_256". The library has a
// SHA-3 of its own; its digests differ, so it cannot stand in for this one.
#pragma once
#include <cstddef>
#include <cstdint>

#include "formats/tomcrypt.h"

namespace quillory {

inline constexpr int kKeccakRateBytes = 136;
inline constexpr int kKeccakDigestBytes = 32;

/// State of the sponge: 25 little-endian lanes, and the bits absorbed into the current block.
struct KeccakState {
  std::uint64_t lanes[25];
  std::int32_t bitsInQueue;  ///< -1 once the digest has been produced
};

/// The empty message. Always 0.
int Init(KeccakState* state);

/// Absorbs `bitLength` bits. 0; or 1, with the state unchanged, when no more input is accepted:
/// after a partial byte, or after the digest. Of a last partial byte the top bits count.
int Update(KeccakState* state, const unsigned char* data, std::uint64_t bitLength);

/// Pads, writes `byteLength` bytes of digest (any length) and closes the state. 0; or 1, with
/// nothing written, when the digest has been produced before.
int Final(KeccakState* state, unsigned char* out, int byteLength);

/// The hash as the library calls it, with the state inside `md`: CRYPT_OK, or -1 after the digest.
/// A null `md` fails the library's argument check, which by default ends the process (SIGABRT).
int sha3_256_init(hash_state* md);
int sha3_256_process(hash_state* md, const unsigned char* data, unsigned long length);
int sha3_256_done(hash_state* md, unsigned char* out);

extern const ltc_hash_descriptor sha3_256_descriptor;

}  // namespace quillory
