// The "mixed" digest that archive signatures are made over: SHA-256 followed by Keccak-256 of the
// same bytes, 64 bytes in all, as a hash descriptor of LibTomCrypt.
#pragma once
#include <tomcrypt.h>

namespace quillory {

int mixed_init(hash_state* md);
int mixed_process(hash_state* md, const unsigned char* data, unsigned long length);
int mixed_done(hash_state* md, unsigned char* out);

extern const ltc_hash_descriptor mixed_descriptor;

}  // namespace quillory
