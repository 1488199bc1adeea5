// RSA-PSS signatures of archives, over the "mixed" digest. Hashing and RSA are LibTomCrypt's, with
// LibTomMath's arithmetic. docs/formats/archive.md has the signature block.
#pragma once
#include <cstdio>

#include "formats/tomcrypt.h"

namespace quillory {

using Hash_state = hash_state;
using Rsa_key = rsa_key;

/// Registers "mixed", "sha256" and "sha3_256" and starts a mixed digest; false, with a warning on
/// standard output, when one cannot be registered.
bool initHash(Hash_state* state);
/// Adds `length` bytes; false when initHash() has registered nothing, or `length` is negative.
bool updateHash(Hash_state* state, const unsigned char* data, int length);
/// The 64-byte digest in a new block (release with free()), or null.
unsigned char* doFinal(Hash_state* state);

/// Fills `key` from its DER encoding; release what is in it with rsa_free(). False, with nothing in
/// it, when that is no RSA key.
bool importPublicKey(const unsigned char* der, int length, Rsa_key* key);

/// The key, or null with "ERROR - unable to import public key." on standard output. Release it with
/// freePublicKey().
Rsa_key* loadDEREncodedPublicKey(const unsigned char* der, int length);
void freePublicKey(Rsa_key* key);

enum class SignatureMatch {
  kMatches,
  kDiffers,    ///< of other bytes, or of another key; or there is no key
  kMalformed,  ///< nothing that the key could have made
};

/// How `signature` goes with `hash` (64 bytes) under `key`: PSS, mask and digest "mixed", salt of
/// 64 bytes.
SignatureMatch matchSignature(const unsigned char* signature, int signatureLength,
                              const unsigned char* hash, Rsa_key* key);

/// Whether it matches; with "ERROR - signature verification failed." on standard output when it is
/// malformed.
bool verifySignature(const unsigned char* signature, int signatureLength, const unsigned char* hash,
                     Rsa_key* key);

}  // namespace quillory
