// The "mixed" digest that archive signatures are made over: SHA-256 followed by Keccak-256 of the
// same bytes, 64 bytes in all, as a hash descriptor of LibTomCrypt.
#pragma once
#include "formats/tomcrypt.h"

namespace quillory {

/// A null `md` fails the library's argument check, which by default ends the process (SIGABRT).
int mixed_init(hash_state* md);

/// CRYPT_OK; or the error of the SHA-256 half, or else that of the Keccak half (-1 after the
/// digest).
int mixed_process(hash_state* md, const unsigned char* data, unsigned long length);

/// Writes 64 bytes, SHA-256 first. Always CRYPT_OK.
int mixed_done(hash_state* md, unsigned char* out);

extern const ltc_hash_descriptor mixed_descriptor;

}  // namespace quillory
