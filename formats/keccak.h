// Keccak-256 with the padding of the reference submission (not FIPS 202: no domain bits), as a core
// that counts bits and as a hash descriptor of LibTomCrypt named "sha3_256".
#pragma once
#include <tomcrypt.h>

#include <cstddef>
#include <cstdint>

namespace quillory {

/// State of the sponge: 25 little-endian lanes, and the bits absorbed into the current block.
struct KeccakState {
  std::uint64_t lanes[25];
  std::int32_t bitsInQueue;  ///< -1 once the digest has been produced
};

/// 0, or 1 when no more input is accepted (after a partial byte, or after the digest).
int Init(KeccakState* state);
int Update(KeccakState* state, const unsigned char* data, std::uint64_t bitLength);
int Final(KeccakState* state, unsigned char* out, int byteLength);

/// XORs `laneCount` little-endian lanes of `input` into the state and permutes it.
void KeccakF(KeccakState* state, const unsigned char* input, int laneCount);

/// One-shot digest of 32 bytes.
int crypto_hash(unsigned char* out, const unsigned char* data, std::uint64_t length);

int sha3_256_init(hash_state* md);
int sha3_256_process(hash_state* md, const unsigned char* data, unsigned long length);
int sha3_256_done(hash_state* md, unsigned char* out);

extern const ltc_hash_descriptor sha3_256_descriptor;

}  // namespace quillory
