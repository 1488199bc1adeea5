// RSA-PSS signatures of archives, over the "mixed" digest. Hashing and RSA are LibTomCrypt's, with
// LibTomMath's arithmetic. docs/formats/archive.md has the signature block.
#pragma once
#include <tomcrypt.h>

#include <cstdio>
#include <memory>
#include <string_view>

#include "formats/hash_ahead.h"

namespace quillory {

/// Paths that begin so are kept for blocks that are no files. The signature is the only one so far.
inline constexpr std::string_view kSpecialBlockPrefix = "qyArcSpBlock_";
inline constexpr std::string_view kSignatureBlockPath = "qyArcSpBlock_DigitalSignature1";
/// What an extraction reads of the "Signature Hex", and what the check after it reads: that is how
/// long the text of a signature may be.
inline constexpr int kSignatureHexCapacity = 8192;
inline constexpr int kCheckedHexCapacity = 4096;

using Hash_state = hash_state;
using Rsa_key = rsa_key;

/// Registers "mixed", "sha256" and "sha3_256" and starts a mixed digest; false, with a warning on
/// standard output, when one cannot be registered.
bool initHash(Hash_state* state);
bool updateHash(Hash_state* state, const unsigned char* data, int length);
/// The 64-byte digest in a new block (release with free()), or null.
unsigned char* doFinal(Hash_state* state);

/// The key, or null with "ERROR - unable to import public key." on standard output. Release it with
/// freePublicKey().
Rsa_key* loadDEREncodedPublicKey(const unsigned char* der, int length);
void freePublicKey(Rsa_key* key);

/// Whether `signature` is one of `hash` (64 bytes) under `key`: PSS, mask and digest "mixed", salt
/// of 64 bytes. A null key never verifies.
bool verifySignature(const unsigned char* signature, int signatureLength, const unsigned char* hash,
                     Rsa_key* key);

/// Checks the archive at `archivePath` against the signature block at `signatureOffset`, whose text
/// was `signatureHex` when the entries were read. Logs its way; when the signature does not hold,
/// deletes what is in `destDir`. Ends the process with status 1 when the archive cannot be opened.
/// `begun` is what of the archive has been hashed already.
bool verifyArchive(const char* archivePath, const char* destDir, long signatureOffset,
                   const char* signatureHex, Rsa_key* key, const HashedPart* begun = nullptr);

}  // namespace quillory
