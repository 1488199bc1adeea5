// The block that closes what is signed, an archive or a release list. docs/formats/archive.md has
// the bytes.
#pragma once
#include <cstdint>

#include "packager/bytes/byte_sinks.h"
#include "packager/keys/signing_key.h"

namespace quillory::pack {

/// Writes the block for the `count` bytes in front of it, whose digest is `digest`.
void writeSignatureBlock(ByteSink& sink, std::uint64_t count, const Digest& digest,
                         const SigningKey& key, Salt salt);

}  // namespace quillory::pack
