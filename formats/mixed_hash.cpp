#include "formats/mixed_hash.h"

#include <algorithm>
#include <cstddef>

#include "formats/keccak.h"
#include "formats/sha256.h"

namespace quillory {
namespace {

constexpr unsigned long kSha256DigestBytes = 32;
// Both halves read a piece while it is in the first-level cache.
constexpr unsigned long kPieceBytes = 16 * 1024;

// The SHA-256 state stands at the start of the record, where the library looks for it; the Keccak
// state is a record of its own behind it.
constexpr std::size_t kKeccakOffset =
    (sizeof(sha256_state) + alignof(KeccakState) - 1) / alignof(KeccakState) * alignof(KeccakState);
static_assert(kKeccakOffset + sizeof(KeccakState) <= sizeof(hash_state));

hash_state* keccakHalf(hash_state* md) {
  return reinterpret_cast<hash_state*>(reinterpret_cast<unsigned char*>(md) + kKeccakOffset);
}

}  // namespace

int mixed_init(hash_state* md) {
  LTC_ARGCHK(md != NULL);  // NOLINT(modernize-use-nullptr): the library prints this text
  sha256_init(md);
  quillory::sha3_256_init(keccakHalf(md));
  return CRYPT_OK;
}

int mixed_process(hash_state* md, const unsigned char* data, unsigned long length) {
  // Asking the processor what it has is slow in a virtual machine.
  static const Sha256Blocks blocks = sha256BlocksOfProcessor();
  int sha256Result = CRYPT_OK;
  int keccakResult = CRYPT_OK;
  do {  // at least once: an empty input is checked by both halves too
    const unsigned long piece = std::min(length, kPieceBytes);
    const int sha256Piece = processSha256(md, data, piece, blocks);
    const int keccakPiece = quillory::sha3_256_process(keccakHalf(md), data, piece);
    if (sha256Result == CRYPT_OK) sha256Result = sha256Piece;
    if (keccakResult == CRYPT_OK) keccakResult = keccakPiece;
    data += piece;
    length -= piece;
  } while (length > 0);
  return sha256Result != CRYPT_OK ? sha256Result : keccakResult;
}

int mixed_done(hash_state* md, unsigned char* out) {
  // Keccak first: a library built to clean its states clears the whole record after SHA-256.
  quillory::sha3_256_done(keccakHalf(md), out + kSha256DigestBytes);
  sha256_done(md, out);
  return CRYPT_OK;
}

const ltc_hash_descriptor mixed_descriptor = {.name = "mixed",
                                              .ID = 20,
                                              .hashsize = kSha256DigestBytes + kKeccakDigestBytes,
                                              .blocksize = 64,
                                              .OID = {1, 3, 14, 3, 2, 52},
                                              .OIDlen = 6,
                                              .init = mixed_init,
                                              .process = mixed_process,
                                              .done = mixed_done,
                                              .test = nullptr,
                                              .hmac_block = nullptr};

}  // namespace quillory
